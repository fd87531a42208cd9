#include "velamo/platform/plist/property_list.h"

#include "fuzz/claims.h"

namespace velamo::fuzz {
namespace {

using Write = std::vector<std::uint8_t> (*)(const PropertyList& list);

/// Compared as XML: not-a-number differs from itself, a kind that nothing here reads is written as a text, and the
/// binary writer may keep equal values once or twice.
void checkWriting(const PropertyList& list, Write write) {
    const auto read = parsePropertyList(write(list));
    claim(read.has_value(), "what was written can be read");
    claim(xmlPropertyList(*read) == xmlPropertyList(list), "writing and reading changes nothing");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    const auto list = parsePropertyList({data, size});
    if (!list) return 0;
    fuzz::checkWriting(*list, xmlPropertyList);
    fuzz::checkWriting(*list, binaryPropertyList);
    return 0;
}
