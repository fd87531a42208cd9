#include "cli/terminal_picture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace velamo {
namespace {

constexpr int pixelsOfPicture = 256;  // where a terminal shows pixels
constexpr int mostPixelsOfBlocks = 72;

struct Rgb {
    int red = 0;
    int green = 0;
    int blue = 0;
};
using Pixel = std::optional<Rgb>;  // nothing: transparent

/// A picture whose pixels are there or not. Fine lines cover little of a pixel and are to be seen all the same.
class Pixels {
public:
    explicit Pixels(const Bitmap& bitmap) : width_(bitmap.width()), height_(bitmap.height()), rgba_(bitmap.rgba()) {}
    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }
    /// Rows count from the top; outside there is nothing.
    [[nodiscard]] Pixel at(int column, int row) const noexcept {
        constexpr int leastAlpha = 40;
        if (row >= height_) return std::nullopt;
        const auto* const pixel = rgba_.data() + static_cast<std::ptrdiff_t>(row * width_ + column) * 4;
        const int alpha = pixel[3];
        if (alpha < leastAlpha) return std::nullopt;
        return Rgb{pixel[0] * 255 / alpha, pixel[1] * 255 / alpha, pixel[2] * 255 / alpha};
    }

private:
    int width_;
    int height_;
    std::vector<std::uint8_t> rgba_;
};

// ---- half blocks

constexpr std::string_view escape = "\x1b[";
constexpr std::string_view plain = "\x1b[0m";

/// The nearest of the six levels that a component has in the cube of 216 colours.
int levelOf(int component) noexcept {
    constexpr int levelsAbove = 5;
    return (component * levelsAbove + 127) / 255;
}

std::string colorCode(const Rgb& color, TerminalPictures pictures, bool isGround) {
    const std::string kind = isGround ? "48;" : "38;";
    if (pictures == TerminalPictures::blocksOfAllColors)
        return kind + "2;" + std::to_string(color.red) + ';' + std::to_string(color.green) + ';' +
               std::to_string(color.blue);
    constexpr int cube = 16;  // where it begins among the 256 colours
    return kind + "5;" +
           std::to_string(cube + 36 * levelOf(color.red) + 6 * levelOf(color.green) + levelOf(color.blue));
}

/// One character: upper and lower half in their colours.
std::string blockOf(const Pixel& upper, const Pixel& lower, TerminalPictures pictures) {
    if (!upper && !lower) return " ";
    std::string block(escape);
    block += colorCode(upper ? *upper : *lower, pictures, false);
    if (upper && lower) block += ';' + colorCode(*lower, pictures, true);
    block += upper ? "m\u2580" : "m\u2584";
    return block.append(plain);
}

std::string blocksOf(const Pixels& pixels, TerminalPictures pictures) {
    std::string text;
    for (int row = 0; row < pixels.height(); row += 2) {
        std::string line;
        std::size_t end = 0;  // behind the last character that marks something
        for (int column = 0; column < pixels.width(); ++column) {
            line += blockOf(pixels.at(column, row), pixels.at(column, row + 1), pictures);
            if (line.back() != ' ') end = line.size();
        }
        text.append(line, 0, end) += '\n';
    }
    return text;
}

// ---- kitty

std::string base64(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) group = group << 8U | (k < count ? bytes[i + k] : 0U);
        for (std::size_t k = 0; k < 4; ++k) text += k <= count ? digits[group >> (18 - 6 * k) & 63U] : '=';
    }
    return text;
}

/// A PNG file in pieces of which each but the last announces another one.
std::string kittyOf(const Bitmap& bitmap) {
    constexpr std::size_t longestPiece = 4096;
    const auto png = bitmap.png();
    if (!png) return "";
    const std::string data = base64(*png);
    std::string text;
    for (std::size_t start = 0; start < data.size(); start += longestPiece) {
        text += start == 0 ? "\x1b_Gf=100,a=T,q=2,m=" : "\x1b_Gm=";
        text += start + longestPiece < data.size() ? "1;" : "0;";
        text.append(data, start, longestPiece) += "\x1b\\";
    }
    return text + '\n';
}

// ---- sixel

constexpr int levels = 6;
constexpr int noColor = -1;

int registerOf(const Pixel& pixel) noexcept {
    return pixel ? (levelOf(pixel->red) * levels + levelOf(pixel->green)) * levels + levelOf(pixel->blue) : noColor;
}

/// "#5;2;0;20;100": the register's colour in hundredths.
std::string registerText(int index) {
    constexpr int hundredthsOfLevel = 100 / (levels - 1);
    const auto hundredths = [](int level) { return ';' + std::to_string(level * hundredthsOfLevel); };
    return '#' + std::to_string(index) + ";2" + hundredths(index / levels / levels) +
           hundredths(index / levels % levels) + hundredths(index % levels);
}

/// Columns of six pixels each, in one colour: a character holds a column, "!9~" repeats it.
std::string bandOf(const std::vector<unsigned>& columns) {
    constexpr char noPixels = '?';
    constexpr std::size_t shortestRun = 4;
    std::string text;
    for (std::size_t start = 0; start < columns.size();) {
        std::size_t end = start;
        while (end < columns.size() && columns[end] == columns[start]) ++end;
        const char character = static_cast<char>(noPixels + static_cast<char>(columns[start]));
        if (end - start < shortestRun)
            text.append(end - start, character);
        else
            text += '!' + std::to_string(end - start) + character;
        start = end;
    }
    return text;
}

constexpr int rowsOfBand = 6;
constexpr std::size_t registers = std::size_t{levels} * levels * levels;

void appendBand(const Pixels& pixels, int firstRow, std::string& text) {
    std::array<std::vector<unsigned>, registers> bands;
    const auto width = static_cast<std::size_t>(pixels.width());
    for (int row = 0; row < rowsOfBand; ++row)
        for (int column = 0; column < pixels.width(); ++column) {
            const int index = registerOf(pixels.at(column, firstRow + row));
            if (index == noColor) continue;
            auto& band = bands[static_cast<std::size_t>(index)];
            band.resize(width);
            band[static_cast<std::size_t>(column)] |= 1U << static_cast<unsigned>(row);
        }
    for (std::size_t index = 0; index < registers; ++index)
        if (!bands[index].empty()) text += '#' + std::to_string(index) + bandOf(bands[index]) + '$';
    text += '-';
}

/// What is not drawn stays as it is on the terminal.
std::string sixelOf(const Pixels& pixels) {
    std::string text = "\x1bP0;1;0q\"1;1;" + std::to_string(pixels.width()) + ';' + std::to_string(pixels.height());
    for (std::size_t index = 0; index < registers; ++index) text += registerText(static_cast<int>(index));
    for (int row = 0; row < pixels.height(); row += rowsOfBand) appendBand(pixels, row, text);
    return text + "\x1b\\\n";
}

}  // namespace

int pixelsOnTerminal(TerminalPictures pictures, TerminalSize size) noexcept {
    if (pictures == TerminalPictures::sixel || pictures == TerminalPictures::kitty) return pixelsOfPicture;
    constexpr int linesForWords = 4;
    const int pixelsOfHeight = (size.lines - linesForWords) * 2;
    return std::clamp(std::min(size.columns, pixelsOfHeight), 8, mostPixelsOfBlocks);
}

std::string terminalPicture(const Bitmap& bitmap, TerminalPictures pictures) {
    switch (pictures) {
        case TerminalPictures::none:
            return "";
        case TerminalPictures::kitty:
            return kittyOf(bitmap);
        case TerminalPictures::sixel:
            return sixelOf(Pixels(bitmap));
        default:
            return blocksOf(Pixels(bitmap), pictures);
    }
}

}  // namespace velamo
