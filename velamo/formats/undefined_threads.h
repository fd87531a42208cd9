#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "velamo/formats/saving.h"
#include "velamo/model/design.h"
#include "velamo/private_api.h"

namespace velamo {

/// Appends the thread of the next colour block to a design whose file carries no colours: the keys "1" to "20", over
/// and over, of the palette "Undefined", which has no colours of its own.
void appendUndefinedThread(VLMDesign& design);

/// Whether the thread is one of those: what it looks like says nothing of the design.
[[nodiscard]] VELAMO_PRIVATE_API bool hasNoColor(const VLMThread& thread);

/// Puts the finished file of such a format at `url`. Then the design has type and version (10) of the format, no hoop,
/// and, unless useThreadFile is set, the threads that reading the file gives. Returns false, with the system's error,
/// and leaves the design unchanged when the file cannot be written.
[[nodiscard]] bool saveWithoutColors(VLMDesign& design, const std::filesystem::path& url,
                                     std::span<const std::uint8_t> file, const char* type, const ExportOptions& options,
                                     VLMError* error);

}  // namespace velamo
