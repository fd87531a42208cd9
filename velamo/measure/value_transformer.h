#pragma once

#include <any>
#include <concepts>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>

#include "velamo/api.h"
#include "velamo/platform/text/optional_text.h"

namespace velamo {

class PlainNumberFormatter;

/// The unit in which a person wants to see lengths.
enum class MeasurementUnit : std::int32_t { millimetres = 0, decimalInches = 1, fractionalInches = 2 };

/// The preference file of the user's editor, "~/Library/Preferences/de.velamo.app.plist".
[[nodiscard]] VELAMO_API std::filesystem::path preferenceFile();

/// The integer under the key "MeasurementUnit" of a preference file, read anew on every call; 0 when the file or the
/// key is missing or is not of that kind; std::system_error where the system could not read the file this time.
[[nodiscard]] VELAMO_API std::int32_t measurementUnitIn(const std::filesystem::path& preferences);

/// The same of the user's own preference file.
[[nodiscard]] VELAMO_API std::int32_t measurementUnitOfUser();

/// A text with styles, of which a measurement needs the characters alone.
struct VELAMO_API VLMStyledText {
    std::string string;
    friend bool operator==(const VLMStyledText&, const VLMStyledText&) = default;
};

/// What the transformer takes and gives: nothing, a number, a plain or a styled text, or a value of any other kind.
class VELAMO_API VLMTransformableValue {
public:
    VLMTransformableValue() = default;
    // A value is what it holds, so that callers pass it as it is. NOLINTBEGIN(google-explicit-constructor)
    VLMTransformableValue(std::nullopt_t) {}
    template <class Number>
    requires std::is_arithmetic_v<Number> VLMTransformableValue(Number number) : value_(static_cast<double>(number)) {}
    VLMTransformableValue(const char* text) : value_(std::string(text)) {}
    VLMTransformableValue(std::string_view text) : value_(std::string(text)) {}
    VLMTransformableValue(std::string text) : value_(std::move(text)) {}
    VLMTransformableValue(VLMStyledText text) : value_(std::move(text)) {}
    template <std::same_as<std::any> Any>
    VLMTransformableValue(Any other) : value_(std::move(other)) {}
    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] bool isNothing() const noexcept { return std::holds_alternative<std::monostate>(value_); }
    /// The number, or nothing when the value is of another kind.
    [[nodiscard]] std::optional<double> number() const noexcept;
    /// The characters of a plain or styled text, or null when the value is of another kind.
    [[nodiscard]] const std::string* text() const noexcept;
    /// The value of another kind, or null.
    [[nodiscard]] const std::any* other() const noexcept { return std::get_if<std::any>(&value_); }
    /// The value in single precision, as numbers and plain texts have one: a text's leading number (with a point), else
    /// 0. Nothing for a value of another kind.
    [[nodiscard]] std::optional<float> floatValue() const;
    /// The name of the type of what the value holds.
    [[nodiscard]] std::string typeName() const;

private:
    std::variant<std::monostate, double, std::string, VLMStyledText, std::any> value_;
};

/// The transformer was given a value that it cannot measure; a fault of the program, not of its input.
class VELAMO_API VLMInternalInconsistencyException : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

/// Turns lengths in millimetres into text in the user's unit, and such text back into millimetres. One inch is 25.4 mm.
/// A unit other than 1 and 2 means millimetres. May be used by many threads at once.
class VELAMO_API VLMValueTransformer {
public:
    /// Tells the measurement unit; asked anew for every transformation.
    using UnitSource = std::function<std::int32_t()>;

    /// Numbers are written in the user's locale, lengths in the unit of the user's preference file.
    VLMValueTransformer();
    /// Numbers are written in `locale` (ICU names, "de_DE"); `unit` answers as an application's own setting, or as
    /// measurementUnitIn() another preference file, would.
    VLMValueTransformer(std::string locale, UnitSource unit);
    /// The same with a fixed unit and the user's locale.
    explicit VLMValueTransformer(MeasurementUnit unit);

    /// The kind of what transformedValue gives: text.
    [[nodiscard]] static const std::type_info& transformedValueClass() noexcept { return typeid(std::string); }
    [[nodiscard]] static constexpr bool allowsReverseTransformation() noexcept { return true; }

    /// The length as text: "12.3 mm"; "0.49\"" for unit 1; inches and 32nds, both cut toward zero, for unit 2 ("1
    /// 15/32\""). The value narrows to single precision first. Nothing for nothing. A value without a number, such as a
    /// styled text, throws VLMInternalInconsistencyException. A length that is not finite is written as the locale
    /// writes it.
    [[nodiscard]] Text transformedValue(const VLMTransformableValue& value) const;

    /// The length in millimetres that a text states: a number ("12.5 mm", "2 in", "0.5\""), or a fraction with or
    /// without a whole number ("1 1/2"). "mm", "in" and the inch mark name the unit, else it is the user's. What cannot
    /// be read counts as 0, so that a denominator that cannot be read gives a result that is not finite. 0 for nothing
    /// and for an empty text; a value that is no text is given back unchanged.
    [[nodiscard]] VLMTransformableValue reverseTransformedValue(const VLMTransformableValue& value) const;

private:
    [[nodiscard]] double numberIn(std::string_view text) const;
    [[nodiscard]] double fractionOf(std::string_view beforeSlash, std::string_view denominator) const;
    [[nodiscard]] bool isInInches(std::string_view text) const;

    std::string locale_;
    UnitSource unit_;
    std::shared_ptr<const PlainNumberFormatter> coreFormatter_;
};

}  // namespace velamo
