#pragma once

#include <array>
#include <streambuf>
#include <system_error>

#include "velamo/platform/system/terminal.h"
#include "velamo/private_api.h"

namespace velamo {

/// What a stream writes into that goes to standard output or error, and that knows why it could not: the library's own
/// only tells that something failed. After the first failure nothing more is written.
class VELAMO_PRIVATE_API OutputBuffer final : public std::streambuf {
public:
    explicit OutputBuffer(StandardStream stream) noexcept;
    /// Gathered text that nobody flushed is not written: nobody could be told of a failure any more.
    ~OutputBuffer() override = default;
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;

    /// The system's reason, or none. Lives as long as the buffer.
    [[nodiscard]] const std::error_code& failure() const noexcept { return failure_; }

protected:
    int_type overflow(int_type character) override;
    int sync() override;

private:
    [[nodiscard]] bool writeOut() noexcept;

    const int descriptor_;
    std::error_code failure_;
    std::array<char, 65536> gathered_{};
};

}  // namespace velamo
