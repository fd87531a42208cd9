#include <CoreFoundation/CFDictionary.h>

#include <unordered_map>
#include <utility>

#include "velamo/platform/corefoundation/object.h"

using namespace velamo::corefoundation;

namespace {

struct Hash {
    CFDictionaryHashCallBack callBack;
    std::size_t operator()(const void* key) const { return callBack ? callBack(key) : std::hash<const void*>()(key); }
};

struct Equal {
    CFDictionaryEqualCallBack callBack;
    bool operator()(const void* one, const void* other) const {
        return one == other || (callBack && callBack(one, other));
    }
};

const void* retain(CFAllocatorRef, const void* object) {
    return CFRetain(object);
}

void release(CFAllocatorRef, const void* object) {
    CFRelease(object);
}

template <class CallBacks>
const void* retainedBy(const CallBacks& callBacks, const void* value) {
    return callBacks.retain ? callBacks.retain(kCFAllocatorDefault, value) : value;
}

template <class CallBacks>
void releaseBy(const CallBacks& callBacks, const void* value) {
    if (callBacks.release) callBacks.release(kCFAllocatorDefault, value);
}

}  // namespace

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{0, retain, release, nullptr, CFEqual, CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{0, retain, release, nullptr, CFEqual};

struct CFDictionaryObject final : Object {
    CFDictionaryObject(const CFDictionaryKeyCallBacks* ofKeys, const CFDictionaryValueCallBacks* ofValues)
        : Object(Type::dictionary),
          keys(ofKeys ? *ofKeys : CFDictionaryKeyCallBacks{}),
          values(ofValues ? *ofValues : CFDictionaryValueCallBacks{}) {}
    CFDictionaryObject(const CFDictionaryObject&) = delete;
    CFDictionaryObject& operator=(const CFDictionaryObject&) = delete;
    ~CFDictionaryObject() override {
        for (const auto& [key, value] : entries) {
            releaseBy(keys, key);
            releaseBy(values, value);
        }
    }

    void set(const void* key, const void* value) {
        const auto [entry, isNew] = entries.try_emplace(key, nullptr);
        if (isNew) retainedBy(keys, key);
        const void* former = std::exchange(entry->second, retainedBy(values, value));
        if (!isNew) releaseBy(values, former);
    }

    void remove(const void* key) {
        const auto found = entries.find(key);
        if (found == entries.end()) return;
        const auto entry = *found;
        entries.erase(found);
        releaseBy(keys, entry.first);
        releaseBy(values, entry.second);
    }

    const CFDictionaryKeyCallBacks keys;
    const CFDictionaryValueCallBacks values;
    std::unordered_map<const void*, const void*, Hash, Equal> entries{0, Hash{keys.hash}, Equal{keys.equal}};
};

CFTypeID CFDictionaryGetTypeID() {
    return static_cast<CFTypeID>(Type::dictionary);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex, const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
    return orNull([&] { return new CFDictionaryObject(keyCallBacks, valueCallBacks); });
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return static_cast<CFIndex>(dictionary->entries.size());
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto found = dictionary->entries.find(key);
    return found == dictionary->entries.end() ? nullptr : found->second;
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key) {
    dictionary->remove(key);
}

void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
    try {
        dictionary->set(key, value);
    } catch (const std::bad_alloc&) {
        return;  // as the header promises
    }
}
