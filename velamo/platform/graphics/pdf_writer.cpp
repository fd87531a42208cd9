#include "velamo/platform/graphics/pdf_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numbers>

#include "velamo/platform/graphics/picture_text.h"

namespace velamo {
namespace {

using Step = ShapePath::Step;

constexpr double pointsOfMillimetre = 72 / 25.4;
constexpr std::size_t pieceSize = 1 << 16;
constexpr int decimalsOfPoint = 6;
constexpr int decimalsOfScale = 12;
constexpr int decimalsOfInk = 3;
constexpr int decimalsOfDirection = 6;

std::string colorText(const GraphicsColor& color) {
    return roundedText(color.red, decimalsOfInk) + " " + roundedText(color.green, decimalsOfInk) + " " +
           roundedText(color.blue, decimalsOfInk);
}

struct StepText {
    std::size_t numbers;
    std::string_view command;
};
/// In the order of Step.
constexpr std::array<StepText, 4> stepTexts{{{2, "m "}, {2, "l "}, {6, "c "}, {0, "h "}}};

bool isRectangle(std::span<const Step> steps, std::span<const std::int32_t> numbers) noexcept {
    constexpr std::array<Step, 5> sides{Step::move, Step::line, Step::line, Step::line, Step::close};
    return std::equal(steps.begin(), steps.end(), sides.begin(), sides.end()) && numbers[0] == numbers[6] &&
           numbers[1] == numbers[3] && numbers[2] == numbers[4] && numbers[5] == numbers[7];
}

void appendNumber(std::string& text, std::int32_t number, int decimals) {
    appendDecimal(text, number, decimals);
    text += ' ';
}

/// Small rectangles are drawn more evenly where they are said to be such.
void appendRectangle(std::string& text, std::span<const std::int32_t> corners, int decimals) {
    for (const std::int32_t number : {corners[0], corners[1], corners[4] - corners[0], corners[5] - corners[1]})
        appendNumber(text, number, decimals);
    text += "re ";
}

void appendPath(std::string& text, std::span<const Step> steps, std::span<const std::int32_t> numbers, int decimals) {
    if (isRectangle(steps, numbers)) return appendRectangle(text, numbers, decimals);
    for (const Step step : steps) {
        const auto& [count, command] = stepTexts[static_cast<std::size_t>(step)];
        for (std::size_t i = 0; i < count; ++i) appendNumber(text, numbers[i], decimals);
        numbers = numbers.subspan(count);
        text += command;
    }
}

}  // namespace

PdfWriter::PdfWriter(double widthInMillimetres, double heightInMillimetres, const ShapeGrid& grid, const InkTable& inks,
                     const ByteSink& sink)
    : grid_(grid),
      inks_(inks),
      sink_(sink),
      compressedSink_([this](std::span<const std::uint8_t> bytes) {
          put({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
          return isSound_;
      }),
      deflater_(compressedSink_) {
    const std::string size = roundedText(widthInMillimetres * pointsOfMillimetre, decimalsOfPoint) + " " +
                             roundedText(heightInMillimetres * pointsOfMillimetre, decimalsOfPoint);
    put("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n");  // bytes that show programs which move files that this one is no text
    writeObject(catalog, "<< /Type /Catalog /Pages 2 0 R >>");
    writeObject(pages, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    writeObject(page,
                "<< /Type /Page /Parent 2 0 R /MediaBox [ 0 0 " + size + " ] /Contents 4 0 R /Resources 6 0 R >>");
    beginObject(content);
    put("<< /Length 5 0 R /Filter /FlateDecode >>\nstream\n");
    const std::string scale = roundedText(grid_.step * pointsOfMillimetre, decimalsOfScale);
    text_ = scale + " 0 0 " + scale + " 0 0 cm 10 M\n";
    stateOutside_ = state_;
}

void PdfWriter::put(std::string_view text) {
    bytesPut_ += text.size();
    if (isSound_) isSound_ = sink_({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void PdfWriter::beginObject(Object object) {
    places_[object] = bytesPut_;
    put(std::to_string(object + 1) + " 0 obj\n");
}

void PdfWriter::writeObject(Object object, std::string_view body) {
    beginObject(object);
    put(body);
    put("\nendobj\n");
}

std::string PdfWriter::number(double value) const {
    return roundedText(value / grid_.step, decimalsOfInk);
}

void PdfWriter::passContent() {
    if (isSound_)
        isSound_ = deflater_.take({reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size()}) && isSound_;
    text_.clear();
}

void PdfWriter::takeColor(std::optional<GraphicsColor>& current, const GraphicsColor& color, std::string_view command) {
    const GraphicsColor opaque{color.red, color.green, color.blue, 1};
    if (current == opaque) return;
    current = opaque;
    text_.append(colorText(opaque)).append(command);
}

void PdfWriter::takeAlpha(double alpha) {
    if (state_.alpha == alpha) return;
    state_.alpha = alpha;
    const std::size_t number = alphas_.try_emplace(alpha, alphas_.size()).first->second;
    text_.append("/a").append(std::to_string(number)).append(" gs ");
}

void PdfWriter::takeStroke(const ShapeInk& ink, double dashPhase) {
    takeColor(state_.strokeColor, ink.color, " RG ");
    if (state_.width != ink.width / grid_.step) text_.append(number(ink.width)).append(" w ");
    state_.width = ink.width / grid_.step;
    if (state_.hasRoundCaps != ink.hasRoundCaps) text_ += ink.hasRoundCaps ? "1 J " : "0 J ";
    state_.hasRoundCaps = ink.hasRoundCaps;
    if (state_.dashOn == ink.dashOn && state_.dashOff == ink.dashOff && state_.dashPhase == dashPhase) return;
    state_.dashOn = ink.dashOn;
    state_.dashOff = ink.dashOff;
    state_.dashPhase = dashPhase;
    if (ink.isDashed()) {
        text_.append("[").append(number(ink.dashOn)).append(" ").append(number(ink.dashOff)).append("] ");
        text_.append(roundedText(dashPhase, decimalsOfInk)).append(" d ");
    } else {
        text_ += "[] 0 d ";
    }
}

void PdfWriter::write(const GridShape& shape) {
    if (shape.clip != clip_) changeClip(shape.clip);
    const ShapeInk& ink = inks_[shape.ink];
    if (ink.kind == ShapeInk::Kind::gradient) {
        writeGradient(shape);
    } else {
        takeAlpha(ink.color.alpha);
        const bool isStroke = ink.kind == ShapeInk::Kind::stroke;
        isStroke ? takeStroke(ink, shape.dashPhase) : takeColor(state_.fillColor, ink.color, " rg ");
        appendPath(text_, shape.steps, shape.numbers, 0);
        text_ += isStroke ? "S\n" : "f\n";
    }
    if (text_.size() >= pieceSize) passContent();
}

/// In the gradient's own coordinates, so that all stitches of a thread share one shading.
void PdfWriter::writeGradient(const GridShape& shape) {
    const ShapeInk& ink = inks_[shape.ink];
    if (ink.stops.empty()) return;
    const int decimals = grid_.decimalsOfGradients();
    const double angle = shape.angle / std::pow(10, ShapeGrid::decimalsOfAngle) * std::numbers::pi / 180;
    const std::string cosine = roundedText(std::cos(angle), decimalsOfDirection);
    const std::string sine = roundedText(std::sin(angle), decimalsOfDirection);
    takeAlpha(ink.stops.front().color.alpha);
    text_ += "q " + cosine + " " + sine + " " + roundedText(-std::sin(angle), decimalsOfDirection) + " " + cosine + " ";
    appendDecimal(text_, shape.originX, decimals);
    text_ += ' ';
    appendDecimal(text_, shape.originY, decimals);
    text_ += " cm ";
    appendPath(text_, shape.steps, shape.numbers, decimals);
    text_ += "W n /s" + std::to_string(shape.ink) + " sh Q\n";
}

void PdfWriter::openClips(const ShapeClip* clip) {
    if (clip == nullptr) return;
    openClips(clip->outer.get());
    std::vector<std::int32_t> numbers;
    grid_.put(clip->path, numbers);
    text_ += "q ";
    appendPath(text_, clip->path.steps, numbers, 0);
    text_ += "W n\n";
    ++clipsOpen_;
}

void PdfWriter::changeClip(const std::shared_ptr<const ShapeClip>& clip) {
    if (clipsOpen_ == 0) stateOutside_ = state_;
    for (; clipsOpen_ > 0; --clipsOpen_) text_ += "Q\n";
    state_ = stateOutside_;
    openClips(clip.get());
    clip_ = clip;
}

/// Pieces between neighbouring stops, each a function of its own.
void PdfWriter::writeShading(const ShapeInk& ink) {
    std::vector<GradientStop> stops = ink.stops;
    if (stops.front().location > 0) stops.insert(stops.begin(), {0, stops.front().color});
    if (stops.back().location < 1) stops.push_back({1, stops.back().color});
    std::string functions;
    std::string bounds;
    std::string encode;
    for (std::size_t i = 1; i < stops.size(); ++i) {
        if (stops[i].location <= stops[i - 1].location) continue;
        if (!functions.empty()) bounds.append(roundedText(stops[i - 1].location, decimalsOfInk)).append(" ");
        functions += "<< /FunctionType 2 /Domain [0 1] /N 1 /C0 [" + colorText(stops[i - 1].color) + "] /C1 [" +
                     colorText(stops[i].color) + "] >> ";
        encode += "0 1 ";
    }
    put("<< /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 " + number(ink.gradientLength) +
        " 0] /Function << /FunctionType 3 /Domain [0 1] /Functions [" + functions + "] /Bounds [" + bounds +
        "] /Encode [" + encode + "] >> >>\n");
}

void PdfWriter::writeResources() {
    beginObject(resources);
    put("<< /ExtGState <<\n");
    for (const auto& [alpha, number] : alphas_) {
        const std::string text = roundedText(alpha, decimalsOfInk);
        put("/a" + std::to_string(number));
        for (const char* key : {" << /CA ", " /ca "}) put(key + text);
        put(" >>\n");
    }
    put(">> /Shading <<\n");
    for (std::uint32_t i = 0; i < inks_.size(); ++i) {
        if (inks_[i].kind != ShapeInk::Kind::gradient || inks_[i].stops.empty()) continue;
        put("/s" + std::to_string(i) + " ");
        writeShading(inks_[i]);
    }
    put(">> >>\nendobj\n");
}

bool PdfWriter::finish() {
    changeClip(nullptr);
    passContent();
    isSound_ = isSound_ && deflater_.finish();
    put("\nendstream\nendobj\n");
    writeObject(contentLength, std::to_string(deflater_.bytesMade()));
    writeResources();
    const std::size_t start = bytesPut_;
    put("xref\n0 " + std::to_string(objectCount + 1) + "\n0000000000 65535 f \n");
    for (const std::size_t place : places_) {
        std::array<char, 24> line{};
        std::snprintf(line.data(), line.size(), "%010zu 00000 n \n", place);
        put(line.data());
    }
    put("trailer\n<< /Size " + std::to_string(objectCount + 1) + " /Root 1 0 R >>\nstartxref\n" +
        std::to_string(start) + "\n%%EOF\n");
    return isSound_;
}

}  // namespace velamo
