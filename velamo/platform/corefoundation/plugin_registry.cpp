#include <CoreFoundation/CFPlugIn.h>
#include <velamo_plugin_registry.h>

#include "velamo/platform/corefoundation/uuid_object.h"

using namespace velamo::corefoundation;

namespace {

/// How many instances each factory has. Factories are few and stay listed, so that taking an instance away needs no
/// memory.
class Registry {
public:
    static Registry& ofProcess() {
        static auto& registry = *new Registry;  // plug-ins may still leave it while the process ends
        return registry;
    }

    void add(const UuidBytes& factory) {
        const std::lock_guard lock(mutex_);
        ++counts_[factory];
    }
    void remove(const UuidBytes& factory) {
        const std::lock_guard lock(mutex_);
        const auto found = counts_.find(factory);
        if (found != counts_.end() && found->second > 0) --found->second;
    }
    CFIndex count(const UuidBytes& factory) {
        const std::lock_guard lock(mutex_);
        const auto found = counts_.find(factory);
        return found == counts_.end() ? 0 : found->second;
    }
    CFIndex count() {
        const std::lock_guard lock(mutex_);
        CFIndex sum = 0;
        for (const auto& [factory, count] : counts_) sum += count;
        return sum;
    }

private:
    std::mutex mutex_;
    std::map<UuidBytes, CFIndex> counts_;
};

}  // namespace

void CFPlugInAddInstanceForFactory(CFUUIDRef factory) {
    try {
        Registry::ofProcess().add(factory->bytes);
    } catch (const std::bad_alloc&) {
        return;  // as the header promises
    }
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory) {
    Registry::ofProcess().remove(factory->bytes);
}

CFIndex VelamoPlugInInstanceCountForFactory(CFUUIDRef factory) {
    return Registry::ofProcess().count(factory->bytes);
}

CFIndex VelamoPlugInInstanceCount() {
    return Registry::ofProcess().count();
}
