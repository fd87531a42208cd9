#include "formats/import.h"

#include <array>

#include "formats/format.h"
#include "formats/thread_file.h"

namespace velamo {
namespace {

enum Failure : int { unknownFormat = 10, noStitches = 11, noThreads = 12 };
constexpr std::array<ErrorText, 3> errorTexts{{
    {unknownFormat, "Unknown file format (UTI)."},
    {noStitches, "File holds no stitches."},
    {noThreads, "File holds no threads."},
}};

}  // namespace

bool importDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] {
        const auto name = fileNameOf(url);
        design.setDesignName(name.native());
        design.setDesignLocation(url);
        design.threads().clear();
        design.stitches().clear();

        const Format* format = formatWithExtension(extensionOf(name));
        if (format == nullptr) return fail(errorTexts, unknownFormat, error);
        VLMError readerError;
        const bool isRead = format->reader(design, url, &readerError);
        design.setUseThreadFile(importThreadsForDesign(design, url));
        if (!isRead) {
            if (error != nullptr) *error = std::move(readerError);
            return false;
        }
        if (design.stitches().empty()) return fail(errorTexts, noStitches, error);
        if (design.threads().empty()) return fail(errorTexts, noThreads, error);
        design.setDisplayRange({0, design.stitches().size()});
        return true;
    });
}

}  // namespace velamo
