// library_user IN OUT: tells a design's attributes, its first thread and the size of its picture, writes it for another
// machine, and says what is wrong with a design that is not there.
#include <velamo/formats/design_attributes.h>
#include <velamo/formats/export.h>
#include <velamo/formats/import.h>
#include <velamo/render/design_picture.h>

#include <iostream>

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) return 2;
    const auto attributes = velamo::attributesOfFile(arguments[1]);
    if (!attributes) return 1;
    std::cout << attributes->widthInMillimetres << ' ' << attributes->heightInMillimetres << ' ' << attributes->stitches
              << ' ' << attributes->colors << '\n';

    velamo::VLMDesign design;
    velamo::VLMError error;
    if (!velamo::importDesignFromURLerror(design, arguments[1], &error)) return 1;
    std::cout << design.nameOfThread(0).value_or("") << '\n';
    const auto picture = velamo::bitmapOf(design, velamo::scaleForLongerSide(design, 128), {});
    if (!picture) return 1;
    std::cout << picture->width() << ' ' << picture->height() << '\n';
    if (!velamo::exportDesignToURLerror(design, arguments[2], &error)) return 1;

    if (velamo::importDesignFromURLerror(design, "missing.dst", &error)) return 1;
    std::cout << error.code << ' ' << error.message() << '\n';
}
