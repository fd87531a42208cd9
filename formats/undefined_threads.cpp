#include "formats/undefined_threads.h"

#include <string>

namespace velamo {

void appendUndefinedThread(VLMDesign& design) {
    constexpr std::size_t numberOfKeys = 20;
    const std::size_t key = design.threads().size() % numberOfKeys + 1;
    design.threads().push_back(VLMThread::initWithKeyofPalette(std::to_string(key), "Undefined"));
}

}  // namespace velamo
