#include "cli/render.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <iomanip>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "cli/archive_target.h"
#include "cli/commands.h"
#include "cli/edit_script.h"
#include "velamo/formats/format.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/text/plain_number.h"

namespace velamo {
namespace {

/// A request that cannot be meant so.
class RenderUsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

double scaleOf(const RenderRequest& request, const VLMDesign& design) {
    return request.size ? scaleForLongerSide(design, *request.size) : request.scale;
}

DesignLook lookOf(const RenderRequest& request) {
    DesignLook look = request.look;
    look.showThread = request.thread.value_or(-1);
    return look;
}

bool writePng(const RenderRequest& request, const VLMDesign& design, const ByteSink& sink) {
    const auto bitmap = bitmapOf(design, scaleOf(request, design), lookOf(request));
    const auto png = bitmap ? bitmap->png() : std::nullopt;
    return png && sink(*png);
}

bool writeSvg(const RenderRequest& request, const VLMDesign& design, const ByteSink& sink) {
    return writeSvgOf(design, lookOf(request), sink);
}

bool writePdf(const RenderRequest& request, const VLMDesign& design, const ByteSink& sink) {
    return writePdfOf(design, lookOf(request), sink);
}

/// A kind of picture; of no more pixels than a bitmap can have, where it has some.
struct PictureKind {
    std::string_view extension;
    bool (*write)(const RenderRequest& request, const VLMDesign& design, const ByteSink& sink);
    bool hasPixels;
};
constexpr std::array<PictureKind, 3> pictureKinds{{
    {"png", writePng, true},
    {"svg", writeSvg, false},
    {"pdf", writePdf, false},
}};

const PictureKind& kindOf(const std::filesystem::path& picture) {
    const std::string extension = extensionOf(picture);
    const auto found = std::find_if(pictureKinds.begin(), pictureKinds.end(),
                                    [&](const PictureKind& kind) { return kind.extension == extension; });
    if (found == pictureKinds.end())
        throw RenderUsageError("a picture is a .png, .svg or .pdf file, not '" + picture.native() + "'");
    return *found;
}

/// Sides, in millimetres, up to which a picture in true size is good: pages of PDF files have 200 inches at most, and
/// programs that show SVG files tell hundredths of a millimetre apart in single precision.
struct TrueSizeLimit {
    std::string_view extension;
    double mostMillimetres;
};
constexpr std::array<TrueSizeLimit, 2> trueSizeLimits{{{"pdf", 5080}, {"svg", 100000}}};

/// Whether the picture is larger than such a file can be, which is reported then.
bool isBeyondLimit(const RenderRequest& request, const PictureKind& kind, const VLMDesign& design,
                   const Console& console) {
    constexpr double tenthsOfMillimetre = 10;
    const DesignRect rect = pictureRectOf(design);
    const bool isBeyond = std::any_of(trueSizeLimits.begin(), trueSizeLimits.end(), [&](const TrueSizeLimit& limit) {
        return limit.extension == kind.extension &&
               std::max(rect.width, rect.height) > limit.mostMillimetres * tenthsOfMillimetre;
    });
    if (!isBeyond) return false;
    std::ostringstream message;
    message << std::setprecision(0) << std::fixed << "A picture of " << rect.width / tenthsOfMillimetre << " by "
            << rect.height / tenthsOfMillimetre << " mm cannot be drawn.";
    reportProblem(console, request.picture.native(), message.str(), EFBIG);
    return true;
}

void checkThread(const RenderRequest& request, const VLMDesign& design) {
    const std::int32_t count = design.numberOfThreads();
    if (!request.thread || (*request.thread >= -1 && *request.thread < count)) return;
    const std::string there = count == 0 ? "no threads" : "the threads 0 to " + std::to_string(count - 1);
    throw RenderUsageError("--thread " + std::to_string(*request.thread) + ": the design has " + there);
}

/// What is too large is said with its size; else it was memory that did not suffice.
void reportUndrawn(const RenderRequest& request, const PictureKind& kind, const VLMDesign& design,
                   const Console& console) {
    const DesignRect rect = pictureRectOf(design);
    if (!(rect.width > 0 && rect.height > 0))
        return reportProblem(console, request.picture.native(), "The design has no size.", EINVAL);
    const auto [width, height] = pictureSizeOf(design, scaleOf(request, design));
    const bool isSide = std::min(width, height) >= 1 && std::max(width, height) <= Bitmap::mostPixelsOfSide;
    if (kind.hasPixels && !(isSide && width * height <= Bitmap::mostPixels)) {
        std::ostringstream message;
        message << std::setprecision(0) << std::fixed << "A picture of " << width << " by " << height
                << " pixels cannot be drawn.";
        return reportProblem(console, request.picture.native(), message.str(), EFBIG);
    }
    VLMError error;
    failWithSystemError(ENOMEM, &error);
    reportProblem(console, request.picture, error);
}

ExitStatus writePicture(const RenderRequest& request, const PictureKind& kind, const VLMDesign& design,
                        const Console& console) {
    VLMError refusal;
    if (isInArchive(request.picture, &refusal)) {
        reportProblem(console, request.picture, refusal);
        return ExitStatus::failure;
    }
    const std::error_code failure =
        replaceFileBy(request.picture, [&](const ByteSink& sink) { return kind.write(request, design, sink); });
    if (!failure) return ExitStatus::success;
    if (failure == std::errc::operation_canceled) {
        reportUndrawn(request, kind, design, console);
        return ExitStatus::failure;
    }
    VLMError error;
    failWithSystemError(failure.value(), &error);
    reportProblem(console, request.picture, error);
    return ExitStatus::failure;
}

ExitStatus renderDesign(const RenderRequest& request, ConfinedReader& reader, const Console& console) {
    const PictureKind& kind = kindOf(request.picture);
    const auto commands = parseEditLines(request.commands);
    const DesignSource source = sourceOf(reader);
    VLMDesign design;
    VLMError error;
    if (!source(design, request.file, &error)) {
        reportProblem(console, request.file, error);
        return ExitStatus::failure;
    }
    for (const EditCommand& command : commands) command(design, source);
    checkThread(request, design);
    if (isBeyondLimit(request, kind, design, console)) return ExitStatus::failure;
    return writePicture(request, kind, design, console);
}

std::string refuseScale(const std::string& text) {
    const auto scale = plainNumber<double>(text);
    return scale && std::isfinite(*scale) && *scale > 0 ? "" : "'" + text + "' is no positive number";
}

}  // namespace

ExitStatus render(const RenderRequest& request, const Console& console) {
    try {
        return withReader(request.reading, console,
                          [&](ConfinedReader& reader) { return renderDesign(request, reader, console); });
    } catch (const RenderUsageError& error) {
        reportWrongUsage(console, error.what());
    } catch (const EditSyntaxError& error) {
        reportWrongUsage(console, error.what());
    } catch (const EditRefusal& refusal) {
        reportProblem(console, request.file, refusal.error());
        return ExitStatus::failure;
    }
    return ExitStatus::wrongUsage;
}

void describeRender(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("render", "Draw a picture of a design");
    const auto request = std::make_shared<RenderRequest>();
    command->add_option("IN", request->file, "The design")->required();
    command->add_option("OUT", request->picture, "The picture: a .png, .svg or .pdf file; the latter in true size")
        ->required();
    auto* scale =
        command->add_option("--scale", request->scale, "Pixels of a PNG picture for each tenth of a millimetre (1)")
            ->check(refuseScale);
    command->add_option("--size", request->size, "Pixels of the longer side of a PNG picture, in place of --scale")
        ->check(CLI::Range(1, static_cast<int>(Bitmap::mostPixelsOfSide)))
        ->excludes(scale);
    command->add_flag("--3d", request->look.show3D, "Make threads look round");
    command->add_flag("--jumps", request->look.showJumps, "Dash jumps");
    command->add_flag("--structure", request->look.showStructure,
                      "Draw thin lines, and a dot where the needle goes in");
    command->add_option("--thread", request->thread, "Draw one thread alone; the first one is 0, and -1 draws all");
    command->add_option("-e", request->commands, "Carry out an edit command before; may be given several times")
        ->allow_extra_args(false);
    addReadingOptions(*command, request->reading);
    command->footer("'velamo edit --help' tells the edit commands.");
    command->callback(
        [&chosen, request] { chosen = [request](const Console& console) { return render(*request, console); }; });
}

}  // namespace velamo
