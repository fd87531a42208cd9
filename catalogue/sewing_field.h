#pragma once

#include <optional>
#include <string_view>

namespace velamo {

/// Where a machine sews, in millimetres.
struct SewingField {
    double width = 0;
    double height = 0;
    friend bool operator==(const SewingField&, const SewingField&) = default;
};

/// What parseField reads, in words for a person.
inline constexpr std::string_view fieldForms = "a size in millimetres such as 100x100, or a hoop such as \"Janome B\"";

/// Reads "100x100" ("130.5×180"), and the names of hoops as 'velamo hoops' lists them, in any case: the vendor, then
/// the hoop's name, one of its names ("B" of "B/RE") or its code. Nothing for any other text.
[[nodiscard]] std::optional<SewingField> parseField(std::string_view text);

}  // namespace velamo
