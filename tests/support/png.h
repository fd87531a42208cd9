#pragma once

#include <cairo.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

namespace velamo::test {

/// Pixels of red, green, blue and alpha, premultiplied, rows from the top down.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;
};

/// What a PNG file shows.
inline Picture readPng(const std::filesystem::path& file) {
    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create_from_png(file.c_str()), cairo_surface_destroy);
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_image_surface_get_format(surface.get()) != CAIRO_FORMAT_ARGB32)
        throw std::runtime_error(file.native() + " is no PNG file with transparency");
    Picture picture{cairo_image_surface_get_width(surface.get()), cairo_image_surface_get_height(surface.get()), {}};
    const unsigned char* const rows = cairo_image_surface_get_data(surface.get());
    const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface.get());
    for (int row = 0; row < picture.height; ++row) {
        const auto* const pixels = reinterpret_cast<const std::uint32_t*>(rows + row * stride);
        for (int column = 0; column < picture.width; ++column)
            for (const unsigned shift : {16U, 8U, 0U, 24U})
                picture.rgba.push_back(static_cast<std::uint8_t>(pixels[column] >> shift));
    }
    return picture;
}

}  // namespace velamo::test
