#include "velamo/platform/system/text_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "velamo/platform/system/descriptor.h"
#include "velamo/platform/system/system_call.h"

namespace velamo {
namespace {

std::string readToEnd(int descriptor, std::error_code& error) {
    std::string text;
    std::array<char, 65536> part{};
    while (true) {
        const ssize_t count = uninterrupted([&] { return ::read(descriptor, part.data(), part.size()); });
        if (count == 0) return text;
        if (count > 0) text.append(part.data(), static_cast<std::size_t>(count));
        if (count > 0 && text.size() <= mostBytesOfText) continue;
        error.assign(count < 0 ? errno : EFBIG, std::generic_category());
        return {};
    }
}

}  // namespace

std::string textOfFile(const std::filesystem::path& file, std::error_code& error) {
    error.clear();
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
    if (descriptor.isOpen()) return readToEnd(descriptor.number(), error);
    error = lastSystemError();
    return {};
}

std::string textOfStandardInput(std::error_code& error) {
    error.clear();
    return readToEnd(STDIN_FILENO, error);
}

}  // namespace velamo
