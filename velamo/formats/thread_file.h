#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// The thread side file keeps the threads that a person chose for a design whose format cannot hold them:
/// "rose.threads" beside "rose.dst". (Designs that differ only in their extension share it: "rose.pes" has the same
/// one.) It is a property list, an array with a dictionary for each thread:
///   threadfileversion  integer  2
///   name, key, palette, paletteName  text
///   red, green, blue   real     0.0 to 1.0, single precision
/// Before version 2 the colour was stored as data under "color", an archived colour object of the platform of that
/// time. Length and tension are not kept.

/// Replaces the design's threads by those of the side file beside `url` and returns true, if there is a side file with
/// exactly as many readable entries as the design has threads. Otherwise returns false and leaves the threads as they
/// were. Colours are not compared with the design's own: the user's choice wins.
[[nodiscard]] VELAMO_API bool importThreadsForDesign(VLMDesign& design, const std::filesystem::path& url) noexcept;

/// The same, but throws std::system_error when the system fails to read an existing side file, since it is then unknown
/// whether that has better threads. (One that the user may not read counts as missing.) May throw std::bad_alloc.
[[nodiscard]] VELAMO_API bool takeThreadsOfSideFile(VLMDesign& design, const std::filesystem::path& url);

/// The same from the bytes of a side file. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API bool takeThreadsOf(VLMDesign& design, std::span<const std::uint8_t> sideFile);

/// Replaces the side file beside `url` in one step by one with the design's threads. Always returns true: a design
/// counts as saved even when its side file cannot be written.
VELAMO_API bool exportThreadsForDesign(const VLMDesign& design, const std::filesystem::path& url) noexcept;

/// Returns the bytes of a side file with the threads. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API std::vector<std::uint8_t> threadFileWith(const std::vector<VLMThread>& threads);

/// Removes the side file beside `url`; `design` is not used. Returns whether there is none now.
VELAMO_API bool deleteThreadsFromDesign(const VLMDesign& design, const std::filesystem::path& url) noexcept;

/// Returns the path of the side file of the design at `url`.
[[nodiscard]] VELAMO_API std::filesystem::path threadFileOf(std::filesystem::path url);

}  // namespace velamo
