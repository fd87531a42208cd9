// library_user IN OUT: takes a design from memory, tells of it, turns it, draws it and writes it for another machine.
#include <velamo/velamo.h>

#include <fstream>
#include <iostream>
#include <iterator>

#include "model/design.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) return 2;
    std::ifstream in(arguments[1], std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};

    velamo::VLMDesign design;
    velamo::VLMError error;
    if (!velamo::importDesignFromBytes(design, bytes, velamo::extensionOf(arguments[1]), &error)) {
        std::cout << error.code << ' ' << error.message() << '\n';
        return 1;
    }
    const auto attributes = velamo::attributesOfDesign(design);
    std::cout << Design{"rose"}.title() << ": " << attributes.widthInMillimetres << ' '
              << attributes.heightInMillimetres << ' ' << attributes.stitches << ' ' << attributes.colors << '\n';

    velamo::selectAll(design);
    if (!velamo::rotateSelectionByDegreeserror(design, 90, &error)) return 1;
    const auto picture = velamo::thumbnailOf(design, 128);
    if (!picture) return 1;
    std::cout << picture->width() << ' ' << picture->height() << '\n';

    std::vector<std::uint8_t> written;
    if (!velamo::exportDesignToBytes(design, velamo::extensionOf(arguments[2]), written, &error)) return 1;
    std::ofstream(arguments[2], std::ios::binary)
        .write(reinterpret_cast<const char*>(written.data()), static_cast<std::streamsize>(written.size()));
}
