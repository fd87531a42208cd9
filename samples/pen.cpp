#include "samples/pen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "platform/text.h"

namespace velamo {
namespace {

constexpr double longestMove = 121;  // what a DST record holds, in tenths of a millimetre
constexpr double satinSpacing = 0.4;

VLMThread threadOf(const std::string& key) {
    return VLMThread::initWithKeyofPalette(key, "Brother");
}

VLMPoint between(VLMPoint from, VLMPoint to, double part) {
    return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
}

/// Rounded up.
int wholeNumber(double number) {
    return static_cast<int>(std::ceil(number));
}

double distance(VLMPoint from, VLMPoint to) {
    return std::hypot(to.x - from.x, to.y - from.y);
}

/// The bit of each weight of a record: plus or minus the weight, for x and for y.
struct Weight {
    int value;
    std::size_t byte;
    int plusX, minusX, plusY, minusY;
};
constexpr std::array<Weight, 5> weights{{
    {81, 2, 0x04, 0x08, 0x20, 0x10},
    {27, 1, 0x04, 0x08, 0x20, 0x10},
    {9, 0, 0x04, 0x08, 0x20, 0x10},
    {3, 1, 0x01, 0x02, 0x80, 0x40},
    {1, 0, 0x01, 0x02, 0x80, 0x40},
}};

/// Takes the weight's share of a move: it is needed when the smaller weights together do not reach as far.
int takeShare(int& move, int weight, int plus, int minus) {
    if (2 * std::abs(move) <= weight) return 0;
    const bool isPositive = move > 0;
    move -= isPositive ? weight : -weight;
    return isPositive ? plus : minus;
}

std::array<std::uint8_t, 3> recordOf(const VLMStitch& stitch) {
    int x = static_cast<int>(stitch.deltaX());
    int y = static_cast<int>(stitch.deltaY());
    std::array<int, 3> record{0, 0, stitch.isColorChange() ? 0xC3 : stitch.isJumpStitch() ? 0x83 : 0x03};
    for (const Weight& weight : weights) {
        record[weight.byte] |= takeShare(x, weight.value, weight.plusX, weight.minusX);
        record[weight.byte] |= takeShare(y, weight.value, weight.plusY, weight.minusY);
    }
    return {static_cast<std::uint8_t>(record[0]), static_cast<std::uint8_t>(record[1]),
            static_cast<std::uint8_t>(record[2])};
}

struct Extent {
    std::int64_t smallest = 0;
    std::int64_t largest = 0;
    std::int64_t last = 0;
    void add(float delta) {
        last += static_cast<std::int64_t>(delta);
        smallest = std::min(smallest, last);
        largest = std::max(largest, last);
    }
};

std::string headerOf(const VLMDesign& design, const std::string& label) {
    Extent x;
    Extent y;
    for (const VLMStitch& stitch : design.stitches()) {
        x.add(stitch.deltaX());
        y.add(stitch.deltaY());
    }
    std::string name = label;
    name.resize(16, ' ');
    std::string header =
        fillPattern("LA:%@\rST:%7i\rCO:%3i\r+X:%5i\r-X:%5i\r+Y:%5i\r-Y:%5i\rAX:%@%5i\rAY:%@%5i\r",
                    {Text(name), static_cast<std::int64_t>(design.stitches().size()),
                     std::int64_t{design.numberOfThreads() - 1}, x.largest, -x.smallest, y.largest, -y.smallest,
                     Text(x.last < 0 ? "-" : "+"), std::abs(x.last), Text(y.last < 0 ? "-" : "+"), std::abs(y.last)});
    header += "MX:+    0\rMY:+    0\rPD:******\r\x1A";
    header.resize(512, ' ');
    return header;
}

}  // namespace

Pen::Pen(const std::string& threadKey) {
    design_.threads().push_back(threadOf(threadKey));
}

void Pen::jumpTo(VLMPoint target) {
    moveTo(target, true);
}

void Pen::sewTo(VLMPoint target, double stitchLength) {
    const VLMPoint start{position_.x / 10, position_.y / 10};
    const int count = std::max(1, wholeNumber(distance(start, target) / stitchLength));
    for (int stitch = 1; stitch <= count; ++stitch)
        moveTo(between(start, target, static_cast<double>(stitch) / count), false);
}

void Pen::sewPath(const std::vector<VLMPoint>& points, double stitchLength) {
    jumpTo(points.front());
    for (const VLMPoint& point : points) sewTo(point, stitchLength);
}

void Pen::satin(VLMPoint from, VLMPoint to, double width) {
    const double length = distance(from, to);
    const VLMPoint across{-(to.y - from.y) / length * width / 2, (to.x - from.x) / length * width / 2};
    jumpTo(from);
    sewTo(to);  // the underlay, which keeps the column from sinking in
    const int count = wholeNumber(length / satinSpacing);
    for (int row = 0; row <= count; ++row) {
        const VLMPoint middle = between(to, from, static_cast<double>(row) / count);
        const double side = row % 2 == 0 ? 1 : -1;
        moveTo({middle.x + across.x * side, middle.y + across.y * side}, false);
    }
}

void Pen::changeThread(const std::string& threadKey) {
    design_.threads().push_back(threadOf(threadKey));
    design_.stitches().push_back({0, 0, false, true});
}

void Pen::moveTo(VLMPoint target, bool isJump) {
    const VLMPoint end{std::round(target.x * 10), std::round(target.y * 10)};
    const VLMPoint start = position_;
    const int count = wholeNumber(std::max(std::abs(end.x - start.x), std::abs(end.y - start.y)) / longestMove);
    for (int move = 1; move <= count; ++move) {
        const VLMPoint next = between(start, end, static_cast<double>(move) / count);
        const VLMPoint rounded{std::round(next.x), std::round(next.y)};
        design_.stitches().push_back(
            {static_cast<float>(rounded.x - position_.x), static_cast<float>(rounded.y - position_.y), isJump, false});
        position_ = rounded;
    }
}

std::vector<std::uint8_t> dstBytes(const VLMDesign& design, const std::string& label) {
    const std::string header = headerOf(design, label);
    std::vector<std::uint8_t> bytes(header.begin(), header.end());
    for (const VLMStitch& stitch : design.stitches()) {
        const auto record = recordOf(stitch);
        bytes.insert(bytes.end(), record.begin(), record.end());
    }
    bytes.insert(bytes.end(), {0x00, 0x00, 0xF3});
    return bytes;
}

}  // namespace velamo
