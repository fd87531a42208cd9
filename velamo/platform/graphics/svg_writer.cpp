#include "velamo/platform/graphics/svg_writer.h"

#include <array>
#include <cstdio>
#include <span>

#include "velamo/platform/graphics/picture_text.h"

namespace velamo {
namespace {

using Step = ShapePath::Step;

constexpr std::size_t pieceSize = 1 << 16;
constexpr int decimalsOfLength = 6;  // nanometres
constexpr int decimalsOfInk = 3;

/// "a" to "Z", "aa" and so on.
std::string nameOf(std::size_t number) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string name;
    for (++number; number > 0; number = (number - 1) / letters.size())
        name.insert(name.begin(), letters[(number - 1) % letters.size()]);
    return name;
}

std::string hexOf(const GraphicsColor& color) {
    const auto byteOf = [](double component) { return static_cast<unsigned>(std::lround(component * 255)); };
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", byteOf(color.red), byteOf(color.green),
                  byteOf(color.blue));
    return text.data();
}

/// Writes the steps of a path relative to each other.
class PathText {
public:
    PathText(std::string& text, std::span<const std::int32_t> numbers, int decimals) noexcept
        : text_(text), numbers_(numbers), decimals_(decimals) {}

    void write(Step step) {
        if (step == Step::close) return close();
        if (step == Step::curve) return curve();
        const std::int32_t x = numbers_[0];
        const std::int32_t y = numbers_[1];
        step == Step::move ? moveBy(x - x_, y - y_) : lineBy(x - x_, y - y_);
        arriveAt(x, y);
        if (step == Step::move) start_ = {x, y};
        numbers_ = numbers_.subspan(2);
    }

private:
    void command(char letter) {
        text_ += letter;
        command_ = letter;
        isBehindNumber_ = false;
    }
    void number(std::int32_t value) {
        if (isBehindNumber_ && value >= 0) text_ += ' ';
        appendDecimal(text_, value, decimals_);
        isBehindNumber_ = true;
    }
    void moveBy(std::int32_t deltaX, std::int32_t deltaY) {
        command('m');
        number(deltaX);
        number(deltaY);
    }
    void lineBy(std::int32_t deltaX, std::int32_t deltaY) {
        if (deltaX == 0 || deltaY == 0) {
            command(deltaY == 0 ? 'h' : 'v');
            return number(deltaY == 0 ? deltaX : deltaY);
        }
        if (command_ != 'm' && command_ != 'l') command('l');  // a line follows a move or line without a letter
        number(deltaX);
        number(deltaY);
    }
    void curve() {
        if (command_ != 'c') command('c');
        for (std::size_t i = 0; i < 6; i += 2) {
            number(numbers_[i] - x_);
            number(numbers_[i + 1] - y_);
        }
        arriveAt(numbers_[4], numbers_[5]);
        numbers_ = numbers_.subspan(6);
    }
    void close() {
        command('z');
        arriveAt(start_[0], start_[1]);
    }
    void arriveAt(std::int32_t x, std::int32_t y) noexcept {
        x_ = x;
        y_ = y;
    }

    std::string& text_;
    std::span<const std::int32_t> numbers_;
    int decimals_;
    char command_ = ' ';
    bool isBehindNumber_ = false;
    std::int32_t x_ = 0;
    std::int32_t y_ = 0;
    std::array<std::int32_t, 2> start_{};
};

void appendPath(std::string& text, std::span<const Step> steps, std::span<const std::int32_t> numbers, int decimals) {
    PathText path(text, numbers, decimals);
    for (const Step step : steps) path.write(step);
}

}  // namespace

SvgWriter::SvgWriter(double widthInMillimetres, double heightInMillimetres, const ShapeGrid& grid, const InkTable& inks,
                     const ByteSink& sink)
    : grid_(grid), inks_(inks), sink_(sink) {
    for (std::size_t i = 0; i < inks.size(); ++i) names_.push_back(nameOf(i));
    writeStart(widthInMillimetres, heightInMillimetres);
}

void SvgWriter::pass() {
    if (isSound_) isSound_ = sink_({reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size()});
    text_.clear();
}

void SvgWriter::writeStart(double widthInMillimetres, double heightInMillimetres) {
    const std::string size[] = {roundedText(widthInMillimetres, decimalsOfLength),
                                roundedText(heightInMillimetres, decimalsOfLength),
                                roundedText(widthInMillimetres / grid_.step, decimalsOfLength),
                                roundedText(heightInMillimetres / grid_.step, decimalsOfLength)};
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size[0] +
            "mm\" height=\"" + size[1] + "mm\" viewBox=\"0 0 " + size[2] + " " + size[3] +
            "\" stroke-miterlimit=\"10\">\n<style>\n";
    for (std::uint32_t i = 0; i < inks_.size(); ++i) writeRule(inks_[i], names_[i]);
    text_ += "</style>\n";
    for (std::uint32_t i = 0; i < inks_.size(); ++i)
        if (inks_[i].kind == ShapeInk::Kind::gradient) writeGradient(inks_[i], names_[i]);
}

/// A rule says all that another one says: elements of a class lie in groups of other ones.
void SvgWriter::writeRule(const ShapeInk& ink, const std::string& name) {
    text_ += "." + name + "{";
    if (ink.kind == ShapeInk::Kind::gradient) {
        text_ += "fill:url(#" + name + ");fill-opacity:1;stroke:none";
    } else if (ink.kind == ShapeInk::Kind::fill) {
        text_ += "fill:" + hexOf(ink.color) + ";fill-opacity:" + roundedText(ink.color.alpha, decimalsOfInk) +
                 ";stroke:none";
    } else {
        text_ += "fill:none;stroke:" + hexOf(ink.color) +
                 ";stroke-opacity:" + roundedText(ink.color.alpha, decimalsOfInk) +
                 ";stroke-width:" + roundedText(ink.width / grid_.step, decimalsOfInk) +
                 ";stroke-linecap:" + (ink.hasRoundCaps ? "round" : "butt") + ";stroke-dasharray:";
        text_ += ink.isDashed() ? roundedText(ink.dashOn / grid_.step, decimalsOfInk) + " " +
                                      roundedText(ink.dashOff / grid_.step, decimalsOfInk)
                                : "none";
    }
    text_ += "}\n";
    if (text_.size() >= pieceSize) pass();
}

/// Beyond both ends nothing is drawn, so the colours end in transparency there.
void SvgWriter::writeGradient(const ShapeInk& ink, const std::string& name) {
    const auto stop = [this](const GradientStop& at, double offset, double alpha) {
        text_ += "<stop offset=\"" + roundedText(offset, decimalsOfInk) + "\" stop-color=\"" + hexOf(at.color) +
                 "\" stop-opacity=\"" + roundedText(alpha, decimalsOfInk) + "\"/>";
    };
    text_ += "<linearGradient id=\"" + name + R"(" gradientUnits="userSpaceOnUse" x1="0" y1="0" x2=")" +
             roundedText(ink.gradientLength / grid_.step, decimalsOfInk) + "\" y2=\"0\">";
    if (!ink.stops.empty()) {
        stop(ink.stops.front(), 0, 0);
        for (const GradientStop& each : ink.stops) stop(each, each.location, each.color.alpha);
        stop(ink.stops.back(), 1, ink.stops.back().color.alpha);
        stop(ink.stops.back(), 1, 0);
    }
    text_ += "</linearGradient>\n";
    if (text_.size() >= pieceSize) pass();
}

void SvgWriter::write(const GridShape& shape) {
    if (isHeld_) writeHeld(shape.ink);
    held_ = shape;
    isHeld_ = true;
}

/// Elements of a group's own ink need no class. Stitches are drawn in two or three inks by turns: the group is that of
/// the second one, and goes on until the turns are others.
void SvgWriter::writeHeld(std::uint32_t nextInk) {
    constexpr int mostInks = 3;
    if (held_.clip != clip_) changeClip(held_.clip);
    if (!isGroupOpen_ || classesInGroup_ > mostInks) openGroup(nextInk);
    classesInGroup_ = held_.ink == groupInk_ ? 0 : classesInGroup_ + 1;
    writeElement(held_);
    if (text_.size() >= pieceSize) pass();
}

void SvgWriter::writeElement(const GridShape& shape) {
    const bool isGradient = inks_[shape.ink].kind == ShapeInk::Kind::gradient;
    const int decimals = isGradient ? grid_.decimalsOfGradients() : 0;
    text_ += "<path";
    if (shape.ink != groupInk_) text_ += " class=\"" + names_[shape.ink] + "\"";
    if (shape.dashPhase != 0) text_ += " stroke-dashoffset=\"" + roundedText(shape.dashPhase, decimalsOfInk) + "\"";
    if (isGradient) {
        text_ += " transform=\"translate(";
        appendDecimal(text_, shape.originX, decimals);
        text_ += ' ';
        appendDecimal(text_, shape.originY, decimals);
        text_ += ")rotate(";
        appendDecimal(text_, shape.angle, ShapeGrid::decimalsOfAngle);
        text_ += ")\"";
    }
    text_ += " d=\"";
    appendPath(text_, shape.steps, shape.numbers, decimals);
    text_ += "\"/>";
}

void SvgWriter::openGroup(std::uint32_t ink) {
    closeGroup();
    text_ += "<g class=\"" + names_[ink] + "\">";
    groupInk_ = ink;
    isGroupOpen_ = true;
    classesInGroup_ = 0;
}

void SvgWriter::closeGroup() {
    if (isGroupOpen_) text_ += "</g>\n";
    isGroupOpen_ = false;
}

void SvgWriter::openClips(const ShapeClip* clip) {
    if (clip == nullptr) return;
    openClips(clip->outer.get());
    const std::string name = "clip" + std::to_string(clipCount_++);
    std::vector<std::int32_t> numbers;
    grid_.put(clip->path, numbers);
    text_ += "<clipPath id=\"" + name + "\"><path d=\"";
    appendPath(text_, clip->path.steps, numbers, 0);
    text_ += "\"/></clipPath><g clip-path=\"url(#" + name + ")\">\n";
    ++clipsOpen_;
}

void SvgWriter::changeClip(const std::shared_ptr<const ShapeClip>& clip) {
    closeGroup();
    for (; clipsOpen_ > 0; --clipsOpen_) text_ += "</g>\n";
    openClips(clip.get());
    clip_ = clip;
}

bool SvgWriter::finish() {
    if (isHeld_) writeHeld(held_.ink);
    isHeld_ = false;
    changeClip(nullptr);
    text_ += "</svg>\n";
    pass();
    return isSound_;
}

}  // namespace velamo
