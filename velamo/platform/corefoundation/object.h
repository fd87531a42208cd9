#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>

namespace velamo::corefoundation {

/// The type identifiers, which hosts compare and never write down.
enum class Type : CFTypeID { string = 1, number, dictionary, uuid };

/// What all objects are: a count of references, and what CFEqual and CFHash ask. A reference is a pointer to the
/// object, and an object's only base comes first in it, so a reference of any type is a pointer to its Object as well.
class Object {
public:
    explicit Object(Type type) noexcept : type_(type) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    [[nodiscard]] static const Object& of(CFTypeRef reference) noexcept {
        return *static_cast<const Object*>(reference);
    }

    [[nodiscard]] Type type() const noexcept { return type_; }
    [[nodiscard]] CFIndex references() const noexcept { return references_.load(std::memory_order_relaxed); }
    void retain() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    /// From now on no balance of references comes near zero.
    void keepForever() const noexcept { references_.store(std::numeric_limits<CFIndex>::max() / 2); }
    void release() const noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    /// `other` has the same type.
    [[nodiscard]] virtual bool equals(const Object& other) const noexcept { return this == &other; }
    [[nodiscard]] virtual CFHashCode hash() const noexcept { return reinterpret_cast<CFHashCode>(this); }

private:
    const Type type_;
    mutable std::atomic<CFIndex> references_ = 1;
};

/// Returns what `make` gives, or null when memory runs out: no exception may leave a C function.
template <class Make>
auto orNull(Make make) noexcept -> decltype(make()) {
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Objects that are made on first use, one for each value, and never freed: a plug-in may use them until the process
/// ends.
template <class Value, class Made>
class Constants {
public:
    /// Returns null when memory runs out.
    [[nodiscard]] const Made* of(const Value& value) noexcept {
        return orNull([&]() -> const Made* {
            const std::lock_guard lock(mutex_);
            std::unique_ptr<Made>& made = made_[value];
            if (!made) made = immortal(value);
            return made.get();
        });
    }

private:
    static std::unique_ptr<Made> immortal(const Value& value) {
        auto made = std::make_unique<Made>(value);
        made->keepForever();
        return made;
    }

    std::mutex mutex_;
    std::map<Value, std::unique_ptr<Made>> made_;
};

}  // namespace velamo::corefoundation
