#include "plugin/importer.h"

#include "plugin/attributes.h"
#include "plugin/path_of_text.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

AttributeValues valuesOf(const DesignAttributes& design) noexcept {
    return {design.widthInMillimetres, design.heightInMillimetres, design.stitches, design.colors};
}

using Numbers = std::array<Owned<CFNumberRef>, numberOfAttributes>;

Numbers numbersOf(const AttributeValues& values) {
    Numbers numbers;
    for (std::size_t index = 0; index < numberOfAttributes; ++index)
        numbers[index] = own(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat32Type, &values[index]));
    return numbers;
}

/// All four or none: a dictionary that had no memory for one says nothing, but does not have it.
bool storeAttributes(CFMutableDictionaryRef attributes, const Numbers& numbers) {
    const auto keys = attributeKeys();
    bool areAllThere = true;
    for (std::size_t index = 0; index < numberOfAttributes; ++index) {
        CFDictionarySetValue(attributes, keys[index], numbers[index].get());
        areAllThere = areAllThere && CFDictionaryGetValue(attributes, keys[index]) == numbers[index].get();
    }
    if (areAllThere) return true;
    for (const CFStringRef key : keys) CFDictionaryRemoveValue(attributes, key);
    return false;
}

}  // namespace
}  // namespace velamo

Boolean GetMetadataForFile(void*, CFMutableDictionaryRef attributes, CFStringRef, CFStringRef pathToFile) noexcept {
    using namespace velamo;
    return operation(nullptr, [&] {
        if (attributes == nullptr || pathToFile == nullptr) return false;
        const auto design = attributesOfFile(pathOfText(pathToFile));
        return design && storeAttributes(attributes, numbersOf(valuesOf(*design)));
    });
}
