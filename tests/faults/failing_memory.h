#pragma once

#include <cstddef>

// An allocator that fails when it is told to. It stands in for the program's own, in this test program only; modules
// that it loads use it too.
namespace velamo::test {

/// Lets the n-th allocation from now on (0: the next) and all behind it fail, until the end of the scope.
class FailingMemory {
public:
    explicit FailingMemory(std::size_t allocations) noexcept;
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// Whether an allocation has failed.
    [[nodiscard]] static bool hasFailed() noexcept;
};

/// Allocations that were not freed yet.
[[nodiscard]] std::size_t liveAllocations() noexcept;

}  // namespace velamo::test
