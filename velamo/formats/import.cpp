#include "velamo/formats/import.h"

#include <array>

#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"

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
bool askSideFile(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    design.setUseThreadFile(false);
    return operation(error, [&] {
        design.setUseThreadFile(takeThreadsOfSideFile(design, url));
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

}  // namespace

bool importDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                              const ImportOptions& options) noexcept {
    return operation(error, [&] {
        const auto name = fileNameOf(url);
        design.setDesignName(name.native());
        design.setDesignLocation(url);
        design.threads().clear();
        design.stitches().clear();

        const Format* format = formatWithExtension(extensionOf(name));
        if (format == nullptr) return fail(errorTexts, unknownFormat, error);
        VLMError readerError;
        const bool isRead = format->reader(design, url, &readerError, options);
        VLMError sideFileError;
        const bool isAsked = askSideFile(design, url, &sideFileError);
        if (!isRead || (!isAsked && options.givesSystemReason)) {
            if (error != nullptr) *error = std::move(isRead ? sideFileError : readerError);
            return false;
        }
        return finish(design, error);
    });
}

bool importDesignFromMemory(VLMDesign& design, const std::filesystem::path& url, std::span<const std::uint8_t> file,
                            VLMError* error) noexcept {
    return operation(error, [&] {
        design.threads().clear();
        design.stitches().clear();
        const Format* format = formatWithExtension(extensionOf(fileNameOf(url)));
        if (format == nullptr) return fail(errorTexts, unknownFormat, error);
        design.setDesignType(std::string(format->type));
        return format->bytesReader(design, file, error) && finish(design, error);
    });
}

}  // namespace velamo
