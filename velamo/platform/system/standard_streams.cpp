#include "velamo/platform/system/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace velamo {

void openStandardStreams() noexcept {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
        // The least free number is taken, which is this one. Opened the wrong way round, so that its use is an error.
        const int way = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (::open("/dev/null", way | O_NOCTTY) != stream) ::_exit(1);
    }
}

}  // namespace velamo
