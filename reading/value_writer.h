#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

#include "velamo/platform/text/optional_text.h"

namespace velamo {

/// Values one behind the other, as they stand in memory, on their way to another process of the same program.
class ValueWriter {
public:
    template <class Value>
    void put(const Value& value) {
        static_assert(std::is_arithmetic_v<Value>);
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof(Value));
    }
    void put(const std::string& text) {
        put(std::uint64_t{text.size()});
        bytes_ += text;
    }
    void put(const Text& text) {
        put(text.has_value());
        if (text) put(*text);
    }
    void putRaw(const std::string& bytes) { bytes_ += bytes; }
    [[nodiscard]] const std::string& bytes() const noexcept { return bytes_; }
    [[nodiscard]] std::string take() && noexcept { return std::move(bytes_); }

private:
    std::string bytes_;
};

}  // namespace velamo
