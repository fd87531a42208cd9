#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "model/design.h"

namespace velamo {

/// Brother PES and PEC files wrap a PEC section (see pec.h):
///   offset  PES                                     PEC
///   0       mark "#PES"                             mark "#PEC"
///   4       version, four digits                    version, "0001"
///   8       the digitizing program's own data       the PEC section, which begins with "LA:", to the end
///           and somewhere a PEC section
/// The header of a PES file points to its PEC section, but the section's mark is the surer sign, so that is looked for.

/// Fills `design` from the PES file at `url`. Sets type "PES" before the file is read, then the version (version 1 as
/// 10, the others, 20 to 90, as they stand), stitches, threads and bounds. False on failure, with 30 (no header, or
/// unreadable), 31 (version), 32 (no PEC section), 33 (several; its text is the failure reason) or an error of the
/// section in `error`, when that is not null.
[[nodiscard]] bool importPesDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url,
                                               VLMError* error) noexcept;

/// The same for the PEC file at `url`: type "PEC", version 1 alone, and the section must follow the header at once.
[[nodiscard]] bool importPecDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url,
                                               VLMError* error) noexcept;

/// The same from bytes in memory; the type is left alone. May throw std::bad_alloc.
[[nodiscard]] bool readPes(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);
[[nodiscard]] bool readPec(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

}  // namespace velamo
