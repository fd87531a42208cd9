#include "velamo/formats/undefined_threads.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "velamo/formats/save_file.h"

namespace velamo {
namespace {

constexpr std::size_t numberOfKeys = 20;
constexpr std::string_view undefinedPalette = "Undefined";

}  // namespace

void appendUndefinedThread(VLMDesign& design) {
    const Text palette = std::string(undefinedPalette);
    auto& threads = design.threads().all();
    const Text key = std::to_string(threads.size() % numberOfKeys + 1);
    // A file may change the colour in every record: a thread that comes again shares its texts.
    const VLMThread* former = threads.size() < numberOfKeys ? nullptr : &threads[threads.size() - numberOfKeys];
    const bool comesAgain = former != nullptr && former->key() == key && former->palette() == palette;
    threads.push_back(comesAgain ? VLMThread(*former) : VLMThread::initWithKeyofPalette(key, palette));
}

bool hasNoColor(const VLMThread& thread) {
    return thread.palette() == undefinedPalette;
}

bool saveWithoutColors(VLMDesign& design, const std::filesystem::path& url, std::span<const std::uint8_t> file,
                       const char* type, const ExportOptions& options, VLMError* error) {
    const std::size_t count = design.useThreadFile() ? 0 : std::min(design.threads().size(), numberOfKeys);
    VLMDesign renamed;
    renamed.threads().all().reserve(count);
    while (renamed.threads().size() < count) appendUndefinedThread(renamed);
    if (!saveFile(url, file, options, error)) return false;
    // They share what they hold with the renamed ones: nothing can fail any more, and no second list is made.
    if (!design.useThreadFile())
        for (std::size_t i = 0; i < design.threads().size(); ++i)
            design.threads()[i] = renamed.threads()[i % numberOfKeys];
    design.setDesignType(type);
    design.setDesignVersion(10);
    design.setDesignHoop(nullptr);
    return true;
}

}  // namespace velamo
