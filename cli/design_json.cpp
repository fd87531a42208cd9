#include "cli/design_json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <ostream>
#include <string_view>

namespace velamo {
namespace {

Json pointJson(const DesignPoint& point) {
    return Json::array({jsonNumber(point.x), jsonNumber(point.y)});
}

Json colorJson(const VLMColor& color) {
    return Json::array({jsonNumber(color.red()), jsonNumber(color.green()), jsonNumber(color.blue())});
}

Json threadJson(const VLMThread& thread) {
    return {{"color", colorJson(thread.color())},
            {"name", jsonText(thread.name())},
            {"key", jsonText(thread.key())},
            {"palette", jsonText(thread.palette())},
            {"paletteName", jsonText(thread.paletteName())},
            {"length", jsonNumber(thread.length())},
            {"tension", thread.tension()},
            {"isShown", thread.isShown()}};
}

Json recordJson(const VLMDesign& design, const VLMError* error) {
    const StitchRange range = design.displayRange();
    return {{"ok", error == nullptr},
            {"error", error == nullptr ? Json() : errorJson(*error)},
            {"designName", jsonText(design.designName())},
            {"designType", jsonText(design.designType())},
            {"designVersion", design.designVersion()},
            {"useThreadFile", design.useThreadFile()},
            {"selectionActive", design.selectionActive()},
            {"displayRange", Json::array({range.location, range.length})},
            {"bounds", Json::array({jsonNumber(design.xMin()), jsonNumber(design.yMin()), jsonNumber(design.xMax()),
                                    jsonNumber(design.yMax())})},
            {"hoop", hoopJson(design.designHoop())}};
}

void appendNumber(std::string& text, float number) {
    if (!std::isfinite(number) || (number == 0.0F && std::signbit(number))) {
        text += textOf(jsonNumber(number));  // as a text, and as "-0.0", which keeps its sign where "-0" would not
        return;
    }
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), written.ptr);
}

int flagsOf(const VLMStitch& stitch) noexcept {
    return (stitch.isJumpStitch() ? 1 : 0) + (stitch.isColorChange() ? 2 : 0) + (stitch.isSelected() ? 4 : 0);
}

void writeThreads(std::ostream& out, const ThreadList& threads) {
    const char* separator = "";
    out << '[';
    for (const VLMThread& thread : threads) {
        out << separator << textOf(threadJson(thread));
        separator = ",";
    }
    out << ']';
}

void writeStitches(std::ostream& out, const StitchList& stitches) {
    out << '[';
    std::string text;
    for (const VLMStitch& stitch : stitches) {
        text.append("[");
        appendNumber(text, stitch.deltaX());
        text.append(",");
        appendNumber(text, stitch.deltaY());
        text.append(",").append(std::to_string(flagsOf(stitch))).append("]");
        out << text;
        text = ",";
    }
    out << ']';
}

Json figuresJson(const VLMDesign& design) {
    return {{"designWidth", design.designWidth()},
            {"designHeight", design.designHeight()},
            {"centerOfDesign", pointJson(design.centerOfDesign())},
            {"numberOfThreads", design.numberOfThreads()},
            {"numberOfJumps", design.numberOfJumps()},
            {"numberOfDifferentColors", design.numberOfDifferentColors()},
            {"numberOfStitches", design.numberOfStitches()},
            {"firstStitch", pointJson(design.firstStitch())},
            {"lastStitch", pointJson(design.lastStitch())},
            {"designPalette", design.designPalette()},
            {"designPaletteName", design.designPaletteName()},
            {"isWritable", design.isWritable()},
            {"isShownOfAllThreads", design.isShownOfAllThreads()},
            {"indexOfShownThread", design.indexOfShownThread()}};
}

/// As a JSON text, a piece at a time.
void writeDescription(std::ostream& out, const VLMDesign& design) {
    out << '"';
    design.describe([&out](const std::string& piece) {
        const std::string quoted = textOf(piece);
        out << std::string_view(quoted).substr(1, quoted.size() - 2);
    });
    out << '"';
}

}  // namespace

void putAttributes(Json& json, const DesignAttributes& attributes) {
    json["width"] = jsonNumber(attributes.widthInMillimetres);
    json["height"] = jsonNumber(attributes.heightInMillimetres);
    json["stitches"] = jsonCount(attributes.stitches);
    json["colors"] = jsonCount(attributes.colors);
}

Json hoopJson(const HoopHandle& hoop) {
    if (!hoop) return {};
    return {{"name", jsonText(hoop->name())}, {"vendor", jsonText(hoop->vendor())},
            {"code", hoop->code()},           {"width", hoop->width()},
            {"height", hoop->height()},       {"isMultiHoop", hoop->isMultiHoop()},
            {"isRounded", hoop->isRounded()}, {"isWritable", hoop->isWritable()}};
}

Json errorJson(const VLMError& error) {
    return {{"domain", std::string(error.domain)}, {"code", error.code}, {"message", error.message()}};
}

void writeStatistics(std::ostream& out, const VLMDesign& design) {
    std::string figures = textOf(figuresJson(design));
    figures.pop_back();  // what closes the object
    out << figures << ",\"description\":";
    writeDescription(out, design);
    out << '}';
}

void writeDesignJson(std::ostream& out, const VLMDesign& design, const VLMError* error) {
    out << "{\n";
    const Json record = recordJson(design, error);
    for (const auto& [name, value] : record.items()) out << "  \"" << name << "\": " << textOf(value) << ",\n";
    out << "  \"threads\": ";
    writeThreads(out, design.threads());
    out << ",\n  \"stitches\": ";
    writeStitches(out, design.stitches());
    out << ",\n  \"statistics\": ";
    writeStatistics(out, design);
    out << "\n}\n";
}

}  // namespace velamo
