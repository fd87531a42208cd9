#include "velamo/formats/import.h"

#include <array>

#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

enum Failure : int { unknownFormat = 10, noStitches = 11, noThreads = 12 };
constexpr std::array<ErrorText, 3> errorTexts{{
    {unknownFormat, "Unknown file format (UTI)."},
    {noStitches, "File holds no stitches."},
    {noThreads, "File holds no threads."},
}};

/// Takes better threads from the side file, where it has some. False, with the system's error, where that could not be
/// read this time: the design would seem to have no such threads.
template <class Take>
bool askSideFile(VLMDesign& design, const Take& take, VLMError* error) noexcept {
    design.setUseThreadFile(false);
    return operation(error, [&] {
        design.setUseThreadFile(take());
        return true;
    });
}

/// What the design of a file must have, whatever its format.
bool finish(VLMDesign& design, VLMError* error) {
    if (design.stitches().empty()) return fail(errorTexts, noStitches, error);
    if (design.threads().empty()) return fail(errorTexts, noThreads, error);
    design.setDisplayRange({0, design.stitches().size()});
    return true;
}

/// Reads a file of the format and its side file, which `takeSideFile` asks.
template <class Take>
bool read(VLMDesign& design, const Format& format, const std::filesystem::path& url, const ImportOptions& options,
          const Take& takeSideFile, VLMError* error) {
    VLMError readerError;
    const bool isRead = format.reader(design, url, &readerError, options);
    VLMError sideFileError;
    const bool isAsked = askSideFile(design, takeSideFile, &sideFileError);
    if (!isRead || (!isAsked && options.givesSystemReason)) {
        if (error != nullptr) *error = std::move(isRead ? sideFileError : readerError);
        return false;
    }
    return finish(design, error);
}

void empty(VLMDesign& design) {
    design.threads().clear();
    design.stitches().clear();
}

}  // namespace

bool importDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                              const ImportOptions& options) noexcept {
    return operation(error, [&] {
        const auto name = fileNameOf(url);
        design.setDesignName(name.native());
        design.setDesignLocation(url);
        empty(design);
        const Format* format = formatWithExtension(extensionOf(name));
        if (format == nullptr) return fail(errorTexts, unknownFormat, error);
        return read(
            design, *format, url, options, [&] { return takeThreadsOfSideFile(design, url); }, error);
    });
}

bool importDesignFromBytes(VLMDesign& design, std::span<const std::uint8_t> file, std::string_view extension,
                           VLMError* error, std::span<const std::uint8_t> sideFile) noexcept {
    return operation(error, [&] {
        const Format* format = formatWithExtension(extension);
        if (format != nullptr) return importDesignFromBytes(design, file, *format, error, sideFile);
        empty(design);
        return fail(errorTexts, unknownFormat, error);
    });
}

bool importDesignFromBytes(VLMDesign& design, std::span<const std::uint8_t> file, const Format& format, VLMError* error,
                           std::span<const std::uint8_t> sideFile) noexcept {
    return operation(error, [&] {
        empty(design);
        const std::filesystem::path url = "design." + std::string(format.extension);
        return read(
            design, format, url, {.givesSystemReason = true, .bytes = file},
            [&] { return takeThreadsOf(design, sideFile); }, error);
    });
}

}  // namespace velamo
