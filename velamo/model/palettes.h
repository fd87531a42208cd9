#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/thread.h"

namespace velamo {

/// The names of the thread makers' palettes that the resources hold, as code tables and VLMThread::palette name them,
/// in order. Empty where the resources are not found or memory runs out. They are looked for on each call.
[[nodiscard]] VELAMO_API std::vector<std::string> paletteNames() noexcept;

/// The threads of a palette, each with its colour, its name in the user's language and its key, in the maker's order.
/// Empty where there is no such palette or memory runs out. Palettes are read once per process; any number of threads
/// may ask.
[[nodiscard]] VELAMO_API std::vector<VLMThread> threadsOfPalette(std::string_view name) noexcept;

}  // namespace velamo
