// Writes a small design of each format into a folder: make_designs FOLDER makes FOLDER/sample.<extension>.
#include <cstdio>
#include <filesystem>
#include <string>

#include "formats/format.h"
#include "model/error.h"
#include "platform/files.h"
#include "tests/support/samples.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    const bool isDone = velamo::operation(nullptr, [&] {
        const std::filesystem::path folder = arguments[1];
        bool isWritten = true;
        for (const velamo::Format& format : velamo::allFormats()) {
            const auto file = folder / ("sample." + std::string(format.extension));
            isWritten = !velamo::replaceFile(file, velamo::test::sampleFile(format.extension)) && isWritten;
        }
        return isWritten;
    });
    return isDone ? 0 : 1;
}
