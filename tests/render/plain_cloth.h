#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

#include "velamo/model/color.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/bitmap.h"

namespace velamo::test {

/// Cloth as it would be written without a thought of time: every stitch visits each pixel of its rows that may lie
/// under it.
class PlainCloth {
public:
    PlainCloth(int pictureWidth, int pictureHeight, int grain, double relief)
        : grain_(grain),
          width_(pictureWidth * grain),
          height_(pictureHeight * grain),
          relief_(relief),
          pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)) {
        for (std::size_t i = 0; i < directions; ++i) profiles_[i] = profileOf(i);
    }

    void takeThread(const VLMColor& color) {
        color_ = {byteOf(color.red()), byteOf(color.green()), byteOf(color.blue())};
    }

    void sewBelow(DesignPoint start, DesignPoint end, double threadWidth) {
        const double x = (end.x - start.x) * grain_;
        const double y = (end.y - start.y) * grain_;
        const double length = std::sqrt(x * x + y * y);
        if (!(length > 0 && std::isfinite(length))) return;
        const DesignPoint from{start.x * grain_, start.y * grain_};
        const double radius = threadWidth / 2 * grain_;
        const auto [first, last] =
            between(from.y + std::min(y, 0.0) - radius, from.y + std::max(y, 0.0) + radius, height_);
        for (int row = first; row < last; ++row) drawRow(row, from, {x / length, y / length}, length, radius);
    }

    void show(Bitmap& bitmap) const {
        std::uint32_t* pixel = bitmap.pixels().data();
        for (int row = 0; row < bitmap.height(); ++row)
            for (int column = 0; column < bitmap.width(); ++column) *pixel++ = meanAt(column, row);
    }

private:
    static constexpr int placesAcross = 32;
    static constexpr std::size_t directions = 64;
    static constexpr int depths = 8;

    struct Shade {
        int light = 0;
        int gloss = 0;
    };
    struct Vector {
        double x = 0;
        double y = 0;
        double z = 0;
    };
    struct Color {
        int red = 0;
        int green = 0;
        int blue = 0;
    };
    struct Range {
        int first = 0;
        int end = 0;
    };
    using Profile = std::array<Shade, placesAcross>;

    static int byteOf(double component) {
        return component > 0 ? static_cast<int>(std::lround(std::min(component, 1.0) * 255)) : 0;
    }
    static double inverseOf(double slope) { return 1 / (std::abs(slope) < 1e-9 ? 1e-9 : slope); }
    static Range between(double low, double high, int count) {
        const auto borderAt = [count](double place) {
            return place > 0 ? static_cast<int>(std::min<double>(place + 0.5, count)) : 0;
        };
        return {borderAt(low), borderAt(high)};
    }
    static int stepAt(float place, int count) {
        return static_cast<int>(std::max(0.0F, std::min(static_cast<float>(count - 1), place)));
    }
    static double product(const Vector& one, const Vector& other) {
        return one.x * other.x + one.y * other.y + one.z * other.z;
    }

    static Shade shadeOf(const Vector& normal, const Vector& along) {
        const Vector toLight{-0.45, -0.62, 0.643};
        const Vector toShine{-0.248, -0.342, 0.906};
        const double alongShine = product(along, toShine);
        const double across = 1 - alongShine * alongShine;
        const double light = 0.5 + 0.8 * std::max(0.0, product(normal, toLight));
        const double shine = std::pow(std::max(0.0, product(normal, toShine)), 10.0) * std::pow(across, 3);
        return {static_cast<int>(light * (0.66 + 0.4 * across) * 256), static_cast<int>(60 * shine)};
    }

    [[nodiscard]] Profile profileOf(std::size_t direction) const {
        const double angle = static_cast<double>(direction) * 2 * std::numbers::pi / directions;
        const Vector along{std::cos(angle), std::sin(angle), 0};
        Profile profile;
        Shade sum;
        for (std::size_t i = 0; i < profile.size(); ++i) {
            const double place = static_cast<double>(2 * i + 1) / placesAcross - 1;
            profile[i] = shadeOf({-along.y * place, along.x * place, std::sqrt(1 - place * place)}, along);
            sum.light += profile[i].light;
            sum.gloss += profile[i].gloss;
        }
        const auto flattened = [this](int value, int sumOfValues) {
            const double mean = static_cast<double>(sumOfValues) / placesAcross;
            return static_cast<int>(mean + relief_ * (value - mean));
        };
        for (Shade& shade : profile) shade = {flattened(shade.light, sum.light), flattened(shade.gloss, sum.gloss)};
        return profile;
    }

    [[nodiscard]] std::uint32_t inkAt(DesignPoint along, int place, int depth) const {
        const float turns = std::atan2(static_cast<float>(along.y), static_cast<float>(along.x)) /
                            static_cast<float>(2 * std::numbers::pi);
        const Shade shade = profiles_.at(static_cast<std::size_t>(std::lround((turns + 1) * directions)) % directions)
                                .at(static_cast<std::size_t>(place));
        const double lost = relief_ * 0.32 * static_cast<double>(depths - 1 - depth) / (depths - 1);
        const int light = static_cast<int>(shade.light * (1 - lost));
        const int gloss = static_cast<int>(shade.gloss * (1 - lost));
        const auto lit = [=](int component) {
            return static_cast<std::uint32_t>(std::min(255, component * light / 256 + gloss));
        };
        return 0xFF000000U | lit(color_.red) << 16U | lit(color_.green) << 8U | lit(color_.blue);
    }

    void drawRow(int row, DesignPoint start, DesignPoint along, double length, double radius) {
        const double y = row + 0.5 - start.y;
        double low = -start.x;
        double high = width_ - start.x;
        const auto narrow = [&](double inverse, double offset, double least, double most) {
            const double one = (least - offset) * inverse;
            const double other = (most - offset) * inverse;
            low = std::max(low, std::min(one, other));
            high = std::min(high, std::max(one, other));
        };
        narrow(inverseOf(along.x), y * along.y, -radius, length + radius);
        narrow(inverseOf(-along.y), y * along.x, -radius, radius);
        const auto [first, end] = between(start.x + low, start.x + high, width_);
        for (int column = first; column < end; ++column) {
            std::uint32_t& pixel = pixels_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) +
                                           static_cast<std::size_t>(column)];
            if (pixel != 0) continue;
            const double x = column + 0.5 - start.x;
            const double behindStart = x * along.x + y * along.y;
            const double across = y * along.x - x * along.y;
            const double inside = std::min(behindStart, length - behindStart);
            if (inside < 0 && inside * inside + across * across > radius * radius) continue;
            const auto placesOfPixel = static_cast<float>(placesAcross / (2 * radius));
            const auto depthsOfPixel = static_cast<float>(depths / std::min(length / 2, 2 * radius));
            pixel = inkAt(along, stepAt(static_cast<float>(across + radius) * placesOfPixel, placesAcross),
                          stepAt(static_cast<float>(inside) * depthsOfPixel, depths));
        }
    }

    [[nodiscard]] std::uint32_t meanAt(int column, int row) const {
        std::uint32_t mean = 0;
        const auto count = static_cast<std::uint32_t>(grain_ * grain_);
        for (unsigned shift = 0; shift < 32; shift += 8) {
            std::uint32_t sum = 0;
            for (int y = row * grain_; y < (row + 1) * grain_; ++y)
                for (int x = column * grain_; x < (column + 1) * grain_; ++x)
                    sum += pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                                   static_cast<std::size_t>(x)] >>
                               shift &
                           0xFFU;
            mean |= (sum + count / 2) / count << shift;
        }
        return mean;
    }

    int grain_;
    int width_;
    int height_;
    double relief_;
    std::vector<std::uint32_t> pixels_;
    std::array<Profile, directions> profiles_{};
    Color color_;
};

}  // namespace velamo::test
