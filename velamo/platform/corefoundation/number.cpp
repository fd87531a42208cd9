#include <CoreFoundation/CFNumber.h>

#include <functional>

#include "velamo/platform/corefoundation/object.h"

using namespace velamo::corefoundation;

struct CFNumberObject final : Object {
    CFNumberObject(CFNumberType typeOfValue, Float64 number) : Object(Type::number), type(typeOfValue), value(number) {}

    [[nodiscard]] bool equals(const Object& other) const noexcept override {
        return value == static_cast<const CFNumberObject&>(other).value;
    }
    [[nodiscard]] CFHashCode hash() const noexcept override { return std::hash<Float64>()(value); }

    const CFNumberType type;
    const Float64 value;  // a 32-bit value widened, which loses nothing
};

namespace {

CFNumberRef create(CFNumberType type, Float64 value) {
    return orNull([&]() -> CFNumberRef { return new CFNumberObject(type, value); });
}

bool isSame(Float64 narrowed, Float64 value) noexcept {
    return narrowed == value || value != value;  // no number is not a number in either width
}

}  // namespace

CFTypeID CFNumberGetTypeID() {
    return static_cast<CFTypeID>(Type::number);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    if (type == kCFNumberFloat32Type) return create(type, *static_cast<const Float32*>(value));
    if (type == kCFNumberFloat64Type) return create(type, *static_cast<const Float64*>(value));
    return nullptr;
}

CFNumberType CFNumberGetType(CFNumberRef number) {
    return number->type;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (type == kCFNumberFloat64Type) {
        *static_cast<Float64*>(value) = number->value;
        return true;
    }
    if (type != kCFNumberFloat32Type) return false;
    const auto narrowed = static_cast<Float32>(number->value);
    *static_cast<Float32*>(value) = narrowed;
    return isSame(narrowed, number->value);
}
