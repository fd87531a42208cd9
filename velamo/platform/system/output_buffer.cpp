#include "velamo/platform/system/output_buffer.h"

#include <unistd.h>

#include <cerrno>

namespace velamo {

OutputBuffer::OutputBuffer(StandardStream stream) noexcept
    : descriptor_(stream == StandardStream::output ? STDOUT_FILENO : STDERR_FILENO) {
    setp(gathered_.data(), gathered_.data() + gathered_.size());
}

OutputBuffer::int_type OutputBuffer::overflow(int_type character) {
    if (!writeOut()) return traits_type::eof();
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    *pptr() = traits_type::to_char_type(character);
    pbump(1);
    return character;
}

int OutputBuffer::sync() {
    return writeOut() ? 0 : -1;
}

bool OutputBuffer::writeOut() noexcept {
    const char* next = pbase();
    while (!failure_ && next != pptr()) {
        const ssize_t count = ::write(descriptor_, next, static_cast<std::size_t>(pptr() - next));
        if (count >= 0)
            next += count;
        else if (errno != EINTR)
            failure_.assign(errno, std::generic_category());
    }
    setp(gathered_.data(), gathered_.data() + gathered_.size());
    return !failure_;
}

}  // namespace velamo
