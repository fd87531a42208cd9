#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>

#include "velamo/platform/text/text.h"

namespace velamo {

/// JSON whose members stay in the order in which they were put.
using Json = nlohmann::ordered_json;

/// The number with the fewest digits that give back the same float or double; "inf", "-inf" and "nan" are texts, as
/// JSON has no such numbers.
[[nodiscard]] Json jsonNumber(float number);
[[nodiscard]] Json jsonNumber(double number);
/// A count that is kept as a float: without a decimal point where it is whole.
[[nodiscard]] Json jsonCount(float count);
/// An absent text is null.
[[nodiscard]] Json jsonText(const Text& text);

/// A color of the number 0xRRGGBB, such as "#1e90ff".
[[nodiscard]] std::string colorText(std::uint32_t number);

/// The value on one line. Bytes that are no UTF-8 become U+FFFD; control characters and marks that turn the direction
/// of writing are escaped, so that a terminal shows them.
[[nodiscard]] std::string textOf(const Json& json);
/// The elements of a list, each on a line of its own.
[[nodiscard]] std::string listTextOf(const Json& list);

/// Writes such a list as its elements come, so that they take no memory; it ends with the writer.
class JsonListWriter {
public:
    explicit JsonListWriter(std::ostream& out) : out_(out) {}
    JsonListWriter(const JsonListWriter&) = delete;
    JsonListWriter& operator=(const JsonListWriter&) = delete;
    ~JsonListWriter();

    /// Where the next element goes, on one line.
    [[nodiscard]] std::ostream& next();

private:
    std::ostream& out_;
    bool isEmpty_ = true;
};

}  // namespace velamo
