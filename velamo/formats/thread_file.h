#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// The thread side file keeps the threads that a person chose beside a design whose format cannot hold them:
/// "rose.threads" for "rose.dst" (and for "rose.pes": designs that differ in extension only share one). It is a
/// property list, an array with a dictionary for each thread:
///   threadfileversion  integer  2
///   name, key, palette, paletteName  text
///   red, green, blue   real     0.0 to 1.0, single precision
/// Before version 2 the colour stood under "color" as data, an archived colour object of the platform of that day.
/// Length and tension are not kept.

/// Replaces the design's threads by those of the side file beside `url` and says so by true, when there is a side file
/// with as many readable entries as the design has threads. Otherwise false, with the threads as they were. Colours are
/// not compared with the design's own: the user's choice wins.
[[nodiscard]] VELAMO_API bool importThreadsForDesign(VLMDesign& design, const std::filesystem::path& url) noexcept;

/// The same, but throws std::system_error where the system could not read the side file this time, so that nobody can
/// say whether it has such threads. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API bool takeThreadsOfSideFile(VLMDesign& design, const std::filesystem::path& url);

/// The same with the bytes of a side file. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API bool takeThreadsOf(VLMDesign& design, std::span<const std::uint8_t> sideFile);

/// Writes the side file beside `url`, atomically. Always true: a design is saved even where its side file cannot be.
VELAMO_API bool exportThreadsForDesign(const VLMDesign& design, const std::filesystem::path& url) noexcept;

/// The bytes of a side file with the threads. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API std::vector<std::uint8_t> threadFileWith(const std::vector<VLMThread>& threads);

/// Removes the side file beside `url`. True when there was none or it could be removed.
VELAMO_API bool deleteThreadsFromDesign(const VLMDesign& design, const std::filesystem::path& url) noexcept;

/// Where the side file of the design at `url` is.
[[nodiscard]] VELAMO_API std::filesystem::path threadFileOf(std::filesystem::path url);

}  // namespace velamo
