#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "velamo/formats/loading.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// Brother PES and PEC files wrap a PEC section (see pec.h):
///   offset  PES                                     PEC
///   0       mark "#PES"                             mark "#PEC"
///   4       version, four digits                    version, "0001"
///   8       the digitizing program's own data       the PEC section, which begins with "LA:", to the end
///           and somewhere a PEC section
/// The header of a PES file points to its PEC section, but the section's mark is the surer sign, so that is looked for.
/// We write version 1 of PES files, little-endian:
///   offset  bytes  meaning
///   0       8      "#PES0001"
///   8       4      offset of the PEC section
///   12      10     0, 1, 1, 0xFFFF, 0
///   22      9      7 and "CEmbOne", an object: the embroidery as a whole
///   31      16     xMin + 1000, yMin + 1000, 1000 - xMin, 1000 - yMin, and again
///   47      24     a matrix: 1, 0, 0, 1, 1000, 1000 in single precision
///   71      10     1, xMin, -yMin, width, height; then 10 zero bytes
///   91      13     0xFFFF, 0, 7 and "CSewSeg", an object: its stitches
///   104            blocks, with 0x03 0x08 between them: kind (0 sewn, 1 jump), thread index, number of points, and of
///                  each point x, -y from where sewing starts (all of two bytes)
///                  number of threads, three zero bytes, and for each thread its index, 0, three times its number from
///                  1 on (0 for the last), 0; then two zero bytes
///                  the PEC section, and thumbnails of the design and of each thread

/// Fills `design` from the PES file at `url`. Sets type "PES" before the file is read, then the version (version 1 as
/// 10, the others, 20 to 90, as they stand), stitches, threads and bounds. Returns false on failure, with 30 (no
/// header, or unreadable), 31 (version), 32 (no PEC section), 33 (several; its text is the failure reason) or an error
/// of the section in `error`, when that is not null.
[[nodiscard]] bool importPesDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same for the PEC file at `url`: type "PEC", version 1 alone, and the section must follow the header at once.
[[nodiscard]] bool importPecDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; the type is left alone. May throw std::bad_alloc.
[[nodiscard]] bool readPes(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);
[[nodiscard]] bool readPec(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

/// Writes the design, whose moves were fitted to PEC sections, to the PES file at `url`. Threads become those of the
/// palette "Brother" (see exportPecSegmentToData). After success type is "PES", version 10, and there is no hoop.
/// Returns false on failure, with 200 (larger than 130 by 180 mm), 201 (outside of that field round the origin), 202
/// (more than 64 threads), 203 (more than 30000 stitches; nothing is changed so far) or the system's own error (the
/// threads are those of the file) in `error`, when that is not null.
[[nodiscard]] bool exportPesDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                             const ExportOptions& options = {}) noexcept;

/// The same for the PEC file at `url`: type "PEC", and size and stitches are not checked. Returns false, with EFBIG of
/// the system's errors, when there are more than 463 threads, the stitches take more than 16 MB or no thumbnail can be
/// made of so large a design: nobody could read such a file.
[[nodiscard]] bool exportPecDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                             const ExportOptions& options = {}) noexcept;

/// The bytes of those files, or nullopt on failure. They change the design's threads. May throw std::bad_alloc.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> writePes(VLMDesign& design, VLMError* error,
                                                                const ExportOptions& options = {});
[[nodiscard]] std::optional<std::vector<std::uint8_t>> writePec(VLMDesign& design, VLMError* error,
                                                                const ExportOptions& options = {});

}  // namespace velamo
