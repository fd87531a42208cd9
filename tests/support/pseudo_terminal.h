#pragma once

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace velamo::test {

/// What a program that was run on a terminal of its own did.
struct TerminalOutcome {
    int status = -1;  // -1: it did not end by itself
    std::string shown;
};

/// A terminal without a person: what a program writes to it can be read at its other side, byte for byte.
class PseudoTerminal {
public:
    explicit PseudoTerminal(int columns) : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0)
            throw std::runtime_error("no pseudo terminal");
        std::array<char, 128> name{};
        if (::ptsname_r(master_, name.data(), name.size()) != 0) throw std::runtime_error("no name of a terminal");
        slave_ = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings{};
        if (slave_ < 0 || ::tcgetattr(slave_, &settings) != 0) throw std::runtime_error("no terminal");
        settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);  // line ends stay as they are written
        ::tcsetattr(slave_, TCSANOW, &settings);
        const winsize size{24, static_cast<unsigned short>(columns), 0, 0};
        ::ioctl(slave_, TIOCSWINSZ, &size);
    }
    ~PseudoTerminal() {
        ::close(master_);
        if (slave_ >= 0) ::close(slave_);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// Runs a program with its standard streams on this terminal, once.
    [[nodiscard]] TerminalOutcome run(std::vector<std::string> words) {
        std::vector<char*> pointers(words.size() + 1);  // the last one stays null
        std::transform(words.begin(), words.end(), pointers.begin(), [](std::string& word) { return word.data(); });
        const pid_t child = ::fork();
        if (child == 0) {
            for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(slave_, stream);
            ::execv(pointers.front(), pointers.data());
            ::_exit(127);
        }
        ::close(slave_);
        slave_ = -1;
        TerminalOutcome outcome;
        std::array<char, 4096> bytes{};
        // The end of the last one that writes is an error to the one that reads.
        for (ssize_t count = 0; (count = ::read(master_, bytes.data(), bytes.size())) > 0 || errno == EINTR;)
            if (count > 0) outcome.shown.append(bytes.data(), static_cast<std::size_t>(count));
        int status = 0;
        if (::waitpid(child, &status, 0) == child && WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
        return outcome;
    }

private:
    int master_;
    int slave_ = -1;
};

}  // namespace velamo::test
