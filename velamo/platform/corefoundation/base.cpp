#include "velamo/platform/corefoundation/object.h"

using velamo::corefoundation::Object;

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFTypeRef CFRetain(CFTypeRef object) {
    Object::of(object).retain();
    return object;
}

void CFRelease(CFTypeRef object) {
    Object::of(object).release();
}

CFIndex CFGetRetainCount(CFTypeRef object) {
    return Object::of(object).references();
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    return static_cast<CFTypeID>(Object::of(object).type());
}

Boolean CFEqual(CFTypeRef one, CFTypeRef other) {
    return Object::of(one).type() == Object::of(other).type() && Object::of(one).equals(Object::of(other));
}

CFHashCode CFHash(CFTypeRef object) {
    return Object::of(object).hash();
}
