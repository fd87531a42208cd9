#include "velamo/platform/system/descriptor.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace velamo {

bool Descriptor::close() noexcept {
    const int number = std::exchange(number_, -1);
    return number < 0 || ::close(number) == 0 || errno == EINTR;
}

}  // namespace velamo
