#pragma once

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "velamo/api.h"

namespace velamo {

/// An ordered list of values that several owners may share: copying a handle shares the list, copy() makes another
/// list. A handle may also hold no list at all (see none()); it then reads as an empty list, and gets a list of its own
/// with its first element or with the first call of a non-const begin(), end() or all(). All owners of a list must use
/// it in one thread of execution at a time.
template <class Element>
class VELAMO_API SharedList {
public:
    using value_type = Element;
    using iterator = typename std::vector<Element>::iterator;
    using const_iterator = typename std::vector<Element>::const_iterator;

    SharedList() : elements_(std::make_shared<std::vector<Element>>()) {}
    SharedList(std::vector<Element> elements)  // NOLINT(google-explicit-constructor): a list is its elements
        : elements_(std::make_shared<std::vector<Element>>(std::move(elements))) {}
    SharedList(std::initializer_list<Element> elements) : SharedList(std::vector<Element>(elements)) {}

    /// Makes a handle that holds no list.
    [[nodiscard]] static SharedList none() noexcept { return SharedList(nullptr); }
    /// Returns whether the handle holds a list.
    [[nodiscard]] bool isThere() const noexcept { return elements_ != nullptr; }
    /// Returns whether both handles hold the very same list, or no list.
    [[nodiscard]] bool isSharedWith(const SharedList& other) const noexcept { return elements_ == other.elements_; }
    /// Returns another list with the same elements; it is there even if this one is not.
    [[nodiscard]] SharedList copy() const { return SharedList(all()); }

    [[nodiscard]] std::size_t size() const noexcept { return elements_ ? elements_->size() : 0; }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    [[nodiscard]] const_iterator begin() const noexcept { return all().begin(); }
    [[nodiscard]] const_iterator end() const noexcept { return all().end(); }
    [[nodiscard]] iterator begin() { return all().begin(); }
    [[nodiscard]] iterator end() { return all().end(); }
    /// The element at the index, which must be less than size().
    [[nodiscard]] const Element& operator[](std::size_t index) const noexcept { return (*elements_)[index]; }
    [[nodiscard]] Element& operator[](std::size_t index) noexcept { return (*elements_)[index]; }
    /// The element at the index. Throws std::out_of_range when there is none.
    [[nodiscard]] const Element& at(std::size_t index) const { return all().at(index); }
    [[nodiscard]] Element& at(std::size_t index) { return all().at(index); }
    /// The last element; the list must not be empty.
    [[nodiscard]] const Element& back() const noexcept { return elements_->back(); }
    [[nodiscard]] Element& back() noexcept { return elements_->back(); }

    /// The elements themselves, for loops that change the list as a whole.
    [[nodiscard]] std::vector<Element>& all() {
        if (!elements_) elements_ = std::make_shared<std::vector<Element>>();
        return *elements_;
    }
    [[nodiscard]] const std::vector<Element>& all() const noexcept {
        static const std::vector<Element> noElements;
        return elements_ ? *elements_ : noElements;
    }

    void push_back(Element element) { all().push_back(std::move(element)); }
    /// Empties the list for all its owners.
    void clear() noexcept {
        if (elements_) elements_->clear();
    }

    friend bool operator==(const SharedList& one, const SharedList& other) { return one.all() == other.all(); }

private:
    explicit SharedList(std::nullptr_t) noexcept {}
    std::shared_ptr<std::vector<Element>> elements_;
};

}  // namespace velamo
