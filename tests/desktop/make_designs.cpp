// Writes a small design of each format into a folder: make_designs FOLDER makes FOLDER/sample.<extension>.
#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/support/patches.h"
#include "velamo/formats/format.h"
#include "velamo/model/failure.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    const bool isDone = velamo::operation(nullptr, [&] {
        bool isWritten = true;
        for (const velamo::Format& format : velamo::allFormats())
            isWritten = velamo::test::writePatch(std::filesystem::path(arguments[1]) /
                                                 ("sample." + std::string(format.extension))) &&
                        isWritten;
        return isWritten;
    });
    return isDone ? 0 : 1;
}
