#include "velamo/model/palettes.h"

#include <filesystem>
#include <set>
#include <system_error>

#include "velamo/model/color_list.h"
#include "velamo/model/failure.h"
#include "velamo/platform/text/resources.h"

namespace velamo {

/// A palette is a folder "<name>.clr".
std::vector<std::string> paletteNames() noexcept {
    std::vector<std::string> names;
    const bool isDone = operation(nullptr, [&names] {
        std::set<std::string> found;
        for (const auto& folder : resourceFolders()) {
            std::error_code error;  // a folder that is not there holds none
            for (const auto& entry : std::filesystem::directory_iterator(folder, error))
                if (entry.path().extension() == ".clr" && entry.is_directory(error)) found.insert(entry.path().stem());
        }
        names.assign(found.begin(), found.end());
        return true;
    });
    if (!isDone) names.clear();
    return names;
}

std::vector<VLMThread> threadsOfPalette(std::string_view name) noexcept {
    std::vector<VLMThread> threads;
    const bool isDone = operation(nullptr, [&] {
        const std::string palette(name);
        const auto colors = paletteNamed(palette);
        if (!colors) return true;
        threads.reserve(colors->allSortedKeys().size());
        for (const std::string& key : colors->allSortedKeys())
            threads.push_back(VLMThread::initWithKeyofPalette(key, palette));
        return true;
    });
    if (!isDone) threads.clear();
    return threads;
}

}  // namespace velamo
