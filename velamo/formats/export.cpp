#include "velamo/formats/export.h"

#include <array>

#include "velamo/editing/optimize.h"
#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/log.h"
#include "velamo/platform/text/text.h"
#include "velamo/platform/text/url_text.h"

namespace velamo {
namespace {

enum Failure : int { noThreads = 13, noStitches = 14, unsupportedFormat = 50, movesTooLarge = 52 };
constexpr std::array<ErrorText, 4> errorTexts{{
    {noThreads, "Unable to export embroidery file (no threads found)."},
    {noStitches, "Unable to export embroidery file (no stitches found)."},
    {unsupportedFormat, "Unsupported file format (UTI) for export."},
    {movesTooLarge, "Unable to export embroidery file (moves too large)."},
}};

Text describe(const VLMError& error) {
    return fillPattern("Error Domain=%@ Code=%i \"%@\"",
                       {Text(error.domain), std::int64_t{error.code}, Text(error.message())});
}

bool refuseFormat(const std::filesystem::path& url, const std::string& extension, VLMError* error) {
    fail(errorTexts, unsupportedFormat, error);
    logToSystem(fillPattern("VLMDesign:exportDesignToURL:%@\n    Error: %@, fileExtension: %@",
                            {Text(locationText(url)), error == nullptr ? Text() : describe(*error), Text(extension)}));
    return false;
}

/// A design whose moves could not be fitted is written all the same, for what that does to the design; but a file of
/// it would be of another design, and replaces none.
ExportOptions withoutSaving(ExportOptions options) {
    options.save = [](const std::filesystem::path&, std::span<const std::uint8_t>, VLMError*) { return true; };
    return options;
}

/// The side file belongs to the file that the design was read from, wherever it is written to.
void updateSideFile(const VLMDesign& design) {
    const auto& location = design.designLocation();
    if (!location) return;
    if (design.useThreadFile())
        exportThreadsForDesign(design, *location);
    else
        deleteThreadsFromDesign(design, *location);
}

bool canBeExported(const VLMDesign& design, VLMError* error) {
    if (design.threads().empty()) return fail(errorTexts, noThreads, error);
    return !design.stitches().empty() || fail(errorTexts, noStitches, error);
}

/// Fits the design to the format and lets its writer make the file.
bool write(VLMDesign& design, const Format& format, const std::filesystem::path& url, const ExportOptions& options,
           VLMError* error) {
    const bool isFitted = optimizeJumpsFor(design, format.type);
    // Nothing but jumps: a file of that would be read by nobody.
    if (design.stitches().empty()) return fail(errorTexts, noStitches, error);
    VLMError writerError;
    if (!format.writer(design, url, &writerError, isFitted ? options : withoutSaving(options))) {
        if (error != nullptr) *error = std::move(writerError);
        return false;
    }
    return isFitted || fail(errorTexts, movesTooLarge, error);
}

}  // namespace

bool exportDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                            const ExportOptions& options) noexcept {
    return operation(error, [&] {
        if (!canBeExported(design, error)) return false;
        const auto name = fileNameOf(url);
        design.setDesignName(name.native());
        const std::string extension = extensionOf(name);
        const Format* format = formatWithExtension(extension);
        if (format == nullptr || format->writer == nullptr) return refuseFormat(url, extension, error);
        if (!write(design, *format, url, options, error)) return false;
        updateSideFile(design);
        return true;
    });
}

bool exportDesignToBytes(VLMDesign& design, std::string_view extension, std::vector<std::uint8_t>& bytes,
                         VLMError* error, const ExportOptions& options) noexcept {
    return operation(error, [&] {
        if (!canBeExported(design, error)) return false;
        const Format* format = formatWithExtension(extension);
        if (format == nullptr || format->writer == nullptr) return fail(errorTexts, unsupportedFormat, error);
        ExportOptions kept = options;
        kept.save = [&bytes](const std::filesystem::path&, std::span<const std::uint8_t> file, VLMError*) {
            bytes.assign(file.begin(), file.end());
            return true;
        };
        return write(design, *format, "design." + std::string(format->extension), kept, error);
    });
}

}  // namespace velamo
