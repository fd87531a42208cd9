#include "platform/worker_process.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>

#include "platform/confinement.h"

namespace velamo {
namespace {

constexpr std::size_t longestMessage = 65536;
constexpr int socketOfGuardian = 3;  // the first behind the standard streams

enum class Kind : char { request, answer, death };

/// What passes the socket: a header, and a text behind it. Numbers tell to which request an answer belongs: the death
/// of a worker that had answered already belongs to none that is still waited for.
struct Header {
    std::uint64_t number = 0;
    Kind kind = Kind::request;
    int signal = 0;
};

struct Message {
    Header header;
    std::string text;
};

[[noreturn]] void throwLastError(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// One message, whole; false, with errno, when it is too long or the other side is gone.
bool send(int socket, const Message& message) {
    if (message.text.size() > longestMessage - sizeof(Header)) {
        errno = EMSGSIZE;
        return false;
    }
    std::string bytes(reinterpret_cast<const char*>(&message.header), sizeof(Header));
    bytes += message.text;
    ssize_t sent = 0;
    do {
        sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(bytes.size());
}

/// Nothing when the other side is gone.
std::optional<Message> receive(int socket) {
    std::array<char, longestMessage> bytes;  // filled by the system
    ssize_t count = 0;
    do {
        count = ::recv(socket, bytes.data(), bytes.size(), 0);
    } while (count < 0 && errno == EINTR);
    if (count < static_cast<ssize_t>(sizeof(Header))) return std::nullopt;
    Message message;
    std::memcpy(&message.header, bytes.data(), sizeof(Header));
    message.text.assign(bytes.data() + sizeof(Header), static_cast<std::size_t>(count) - sizeof(Header));
    return message;
}

/// The number of the request that the worker has taken last, where its guardian can see it, too.
using SharedNumber = std::atomic<std::uint64_t>;
static_assert(SharedNumber::is_always_lock_free);

SharedNumber* makeSharedNumber() {
    void* const memory =
        ::mmap(nullptr, sizeof(SharedNumber), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) SharedNumber(0);
}

void setTimer(std::chrono::milliseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const itimerval timer{
        .it_interval = {},
        .it_value = {.tv_sec = seconds.count(), .tv_usec = std::chrono::microseconds(time - seconds).count()}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

/// The worker: serves until its owner is gone. The alarm's signal, which nobody catches, ends it.
[[noreturn]] void serve(const WorkerProcess::Service& service, const WorkerLimits& limits,
                        SharedNumber& current) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    confineToReading(limits.memory);
    while (auto request = receive(socketOfGuardian)) {
        current = request->header.number;
        setTimer(limits.time);
        Message answer{.header = {.number = request->header.number, .kind = Kind::answer},
                       .text = service(request->text)};
        setTimer(std::chrono::milliseconds(0));
        if (!send(socketOfGuardian, answer)) break;
    }
    ::_exit(0);
}

/// Keeps the socket of the guardian and the standard streams, and nothing else of what the owner has open: neither its
/// files nor the sockets of other guardians, whose owner's end would never close.
void keepOnlySocket(int socket) {
    if (socket != socketOfGuardian) ::dup2(socket, socketOfGuardian);
    ::close_range(socketOfGuardian + 1, ~0U, 0);
}

/// The guardian: one worker after the other, until one ends because the owner is gone. One that dies before it took
/// another request would go on dying.
[[noreturn]] void guard(int socket, const WorkerProcess::Service& service, const WorkerLimits& limits) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    keepOnlySocket(socket);
    SharedNumber* const current = makeSharedNumber();
    std::uint64_t buried = 0;
    while (current != nullptr) {
        const pid_t worker = ::fork();
        if (worker == 0) serve(service, limits, *current);
        int status = 0;
        while (worker > 0 && ::waitpid(worker, &status, 0) < 0 && errno == EINTR) continue;
        if (worker < 0 || status == 0 || *current == buried) break;
        buried = *current;
        const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        send(socketOfGuardian, {.header = {.number = buried, .kind = Kind::death, .signal = signal}, .text = {}});
    }
    ::_exit(0);
}

}  // namespace

bool WorkerDeath::isTimeout() const noexcept {
    return signal == SIGALRM;
}

std::string WorkerDeath::description() const {
    const char* const words = signal == 0 ? nullptr : ::sigdescr_np(signal);
    return words == nullptr ? "ended" : words;
}

WorkerProcess::WorkerProcess(const Service& service, const WorkerLimits& limits) {
    std::array<int, 2> sockets{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) throwLastError("socketpair");
    guardian_ = ::fork();
    if (guardian_ == 0) guard(sockets[1], service, limits);
    const int failure = errno;
    ::close(sockets[1]);
    socket_ = sockets[0];
    if (guardian_ > 0) return;
    ::close(socket_);
    errno = failure;
    throwLastError("fork");
}

WorkerProcess::~WorkerProcess() {
    ::close(socket_);
    while (::waitpid(guardian_, nullptr, 0) < 0 && errno == EINTR) continue;
}

void WorkerProcess::sendRequest(const std::string& request) {
    if (!send(socket_, {.header = {.number = ++number_}, .text = request})) throwLastError("worker");
}

WorkerProcess::Reply WorkerProcess::receiveReply(std::uint64_t number) {
    for (;;) {
        auto message = receive(socket_);
        if (!message) {
            errno = ECONNRESET;
            throwLastError("worker");
        }
        if (message->header.number != number) continue;
        if (message->header.kind == Kind::death) return WorkerDeath{message->header.signal};
        return std::move(message->text);
    }
}

std::vector<WorkerProcess::Reply> WorkerProcess::ask(std::span<const std::string> requests) {
    constexpr std::size_t mostAhead = 16;
    std::vector<Reply> replies;
    replies.reserve(requests.size());
    const std::uint64_t before = number_;
    std::size_t sizeAhead = 0;
    while (replies.size() < requests.size()) {
        // No more than the socket holds: else both sides might wait for each other.
        for (std::size_t sent = number_ - before; sent < requests.size() && sent - replies.size() < mostAhead; ++sent) {
            if (sizeAhead > 0 && sizeAhead + requests[sent].size() > longestMessage) break;
            sendRequest(requests[sent]);
            sizeAhead += requests[sent].size();
        }
        sizeAhead -= requests[replies.size()].size();
        replies.push_back(receiveReply(before + replies.size() + 1));
    }
    return replies;
}

}  // namespace velamo
