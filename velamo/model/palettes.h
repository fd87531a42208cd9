#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/thread.h"

namespace velamo {

/// Returns the names of the thread makers' palettes in the resources, in alphabetical order: the names that
/// VLMThread::palette and the tables of colour codes use. The resources are searched by each call. Returns an empty
/// list when they are not found or memory runs out.
[[nodiscard]] VELAMO_API std::vector<std::string> paletteNames() noexcept;

/// Returns the threads of a palette in the maker's order, each with its colour, its key and its name in the user's
/// language. Returns an empty list when there is no such palette, when it cannot be read or when memory runs out. A
/// palette is read once per process. Any number of threads may call it at the same time.
[[nodiscard]] VELAMO_API std::vector<VLMThread> threadsOfPalette(std::string_view name) noexcept;

}  // namespace velamo
