#include "tests/faults/failing_memory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> left = never;
std::atomic<bool> failed = false;
std::atomic<std::size_t> live = 0;

bool mayAllocate() noexcept {
    if (left == never) return true;
    if (left == 0) {
        failed = true;
        return false;
    }
    --left;
    return true;
}

void* allocate(std::size_t size, std::size_t alignment) noexcept {
    if (!mayAllocate()) return nullptr;
    void* const memory = alignment == 0 ? std::malloc(size == 0 ? 1 : size)
                                        : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (memory != nullptr) ++live;
    return memory;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment = 0) {
    void* const memory = allocate(size, alignment);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void release(void* memory) noexcept {
    if (memory == nullptr) return;
    --live;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}

namespace velamo::test {

FailingMemory::FailingMemory(std::size_t allocations) noexcept {
    failed = false;
    left = allocations;
}

FailingMemory::~FailingMemory() {
    left = never;
}

bool FailingMemory::hasFailed() noexcept {
    return failed;
}

std::size_t liveAllocations() noexcept {
    return live;
}

}  // namespace velamo::test
