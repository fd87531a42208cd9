#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <system_error>

#include "velamo/model/design.h"

namespace velamo {

/// What came of an import: the design as it was left, and the error where it failed (code 0: it did not).
struct ReadDesign {
    VLMDesign design;
    VLMError error;
};

/// Takes bytes in order; the system's reason where they cannot be taken.
using PieceSink = std::function<std::error_code(std::span<const std::byte> bytes)>;

/// Gives bytes from an offset on; the system's reason where they cannot be had.
struct ByteSource {
    std::function<std::error_code(std::span<std::byte> bytes, std::uint64_t offset)> read;
    std::uint64_t size = 0;
};

/// Writes what was read for another process of this same program: every field as it is, but the design's location,
/// which that process knows. Threads that are equal are written once. The sink's error, if there was one.
[[nodiscard]] std::error_code writeDesignBytes(const VLMDesign& design, const VLMError& error, const PieceSink& sink);

/// What writeDesignBytes wrote, or false where the bytes are anything else; whatever they are, nothing but them is
/// read, each of them once, and no more memory is taken than they account for. May throw std::bad_alloc.
[[nodiscard]] bool parseDesignBytes(const ByteSource& source, ReadDesign& read);

}  // namespace velamo
