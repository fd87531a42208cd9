// Where there is no fuzzer to link: sends the files of the corpus through the target, once each.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "velamo/platform/system/files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::filesystem::path& file) {
    const auto bytes = velamo::readWholeFile(file);
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);  // said before the crash, if there is one
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argumentCount, char** arguments) {
    std::size_t replayed = 0;
    for (int i = 1; i < argumentCount; ++i) {
        const std::filesystem::path path = arguments[i];
        const auto files = std::filesystem::is_directory(path) ? filesIn(path) : std::vector{path};
        for (const auto& file : files) replay(file);
        replayed += files.size();
    }
    std::printf("%zu inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}
