#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#if __has_include(<velamo_plugin_registry.h>)
#include <velamo_plugin_registry.h>
#endif

namespace velamo::test {

/// The instances of plug-ins that are registered, which our own CoreFoundation counts. Apple's tells nobody: with it
/// every expectation holds.
class Instances {
public:
    /// There are so many more than there were when this was made.
    void expectMore(CFIndex count) const { EXPECT_TRUE(!areCounted || all() == before_ + count) << all() - before_; }
    /// The factory has so many.
    static void expectOf(CFUUIDRef factory, CFIndex count) {
        EXPECT_TRUE(!areCounted || of(factory) == count) << of(factory);
    }

private:
#if __has_include(<velamo_plugin_registry.h>)
    static constexpr bool areCounted = true;
    static CFIndex all() {
        return VelamoPlugInInstanceCount();
    }
    static CFIndex of(CFUUIDRef factory) {
        return VelamoPlugInInstanceCountForFactory(factory);
    }
#else
    static constexpr bool areCounted = false;
    static CFIndex all() {
        return 0;
    }
    static CFIndex of(CFUUIDRef) {
        return 0;
    }
#endif
    const CFIndex before_ = all();
};

}  // namespace velamo::test
