#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

#include "velamo/api.h"

namespace velamo {

/// A handle of a value that never changes, or of none. All copies of the handle share the value; it is destroyed with
/// the last of them. A handle is as large as a pointer, half of what the standard's takes, since lists hold millions of
/// them. Several threads may make and destroy copies at the same time.
template <class Value>
class VELAMO_API SharedValue {
public:
    SharedValue() noexcept = default;
    explicit SharedValue(Value value) : cell_(new Cell{std::move(value)}) {}
    SharedValue(const SharedValue& other) noexcept : cell_(other.cell_) {
        if (cell_ != nullptr) cell_->owners.fetch_add(1, std::memory_order_relaxed);
    }
    SharedValue(SharedValue&& other) noexcept : cell_(std::exchange(other.cell_, nullptr)) {}
    SharedValue& operator=(SharedValue other) noexcept {
        std::swap(cell_, other.cell_);
        return *this;
    }
    ~SharedValue() {
        const bool isLast = cell_ != nullptr && cell_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1;
        // The path analysis does not follow the count, and so sees one cell let go of twice.
        if (isLast) delete cell_;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
    }

    /// Returns the value, or null when there is none. The handle owns it.
    [[nodiscard]] const Value* get() const noexcept { return cell_ == nullptr ? nullptr : &cell_->value; }

private:
    struct Cell {
        const Value value;
        std::atomic<std::size_t> owners{1};
    };
    Cell* cell_ = nullptr;
};

}  // namespace velamo
