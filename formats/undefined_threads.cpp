#include "formats/undefined_threads.h"

#include <string>

namespace velamo {

void appendUndefinedThread(VLMDesign& design) {
    constexpr std::size_t numberOfKeys = 20;
    const Text palette = "Undefined";
    auto& threads = design.threads().all();
    const Text key = std::to_string(threads.size() % numberOfKeys + 1);
    // A file may change the colour in every record: a thread that comes again shares its texts.
    const VLMThread* former = threads.size() < numberOfKeys ? nullptr : &threads[threads.size() - numberOfKeys];
    const bool comesAgain = former != nullptr && former->key() == key && former->palette() == palette;
    threads.push_back(comesAgain ? VLMThread(*former) : VLMThread::initWithKeyofPalette(key, palette));
}

}  // namespace velamo
