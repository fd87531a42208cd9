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

/// Returns the path of the preference file of the user's editor, "~/Library/Preferences/de.velamo.app.plist".
[[nodiscard]] VELAMO_API std::filesystem::path preferenceFile();

/// Returns the number under the key "MeasurementUnit" of a preference file, without its fraction. The file is read anew
/// by every call. Returns 0 when the file or the key is missing or the value is not a number. Throws std::system_error
/// when the system fails to read an existing file.
[[nodiscard]] VELAMO_API std::int32_t measurementUnitIn(const std::filesystem::path& preferences);

/// The same for preferenceFile().
[[nodiscard]] VELAMO_API std::int32_t measurementUnitOfUser();

/// A text with styles, of which only the characters count here.
struct VELAMO_API StyledText {
    std::string string;
    friend bool operator==(const StyledText&, const StyledText&) = default;
};

/// What the transformer takes and returns: nothing, a number, a plain or styled text, or a value of any other type.
class VELAMO_API TransformableValue {
public:
    TransformableValue() = default;
    // A value is what it holds, so that callers pass it as it is. NOLINTBEGIN(google-explicit-constructor)
    TransformableValue(std::nullopt_t) {}
    template <class Number>
    requires std::is_arithmetic_v<Number> TransformableValue(Number number) : value_(static_cast<double>(number)) {}
    TransformableValue(const char* text) : value_(std::string(text)) {}
    TransformableValue(std::string_view text) : value_(std::string(text)) {}
    TransformableValue(std::string text) : value_(std::move(text)) {}
    TransformableValue(StyledText text) : value_(std::move(text)) {}
    template <std::same_as<std::any> Any>
    TransformableValue(Any other) : value_(std::move(other)) {}
    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] bool isNothing() const noexcept { return std::holds_alternative<std::monostate>(value_); }
    /// Returns the number, or nullopt when the value is not a number.
    [[nodiscard]] std::optional<double> number() const noexcept;
    /// Returns the characters of a plain or styled text, or null when the value is not a text. The value owns them.
    [[nodiscard]] const std::string* text() const noexcept;
    /// Returns the value of another type, or null when it is nothing, a number or a text.
    [[nodiscard]] const std::any* other() const noexcept { return std::get_if<std::any>(&value_); }
    /// Returns a number narrowed to single precision, or the number at the start of a plain text (with a decimal point;
    /// 0 when the text starts with none). Returns nullopt for anything else, including a styled text.
    [[nodiscard]] std::optional<float> floatValue() const;
    /// Returns the name of the C++ type of what the value holds.
    [[nodiscard]] std::string typeName() const;

private:
    std::variant<std::monostate, double, std::string, StyledText, std::any> value_;
};

/// Thrown when the transformer is given a value that it cannot measure: a mistake in the program, not in its input.
class VELAMO_API InternalInconsistencyException : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

/// Converts lengths in millimetres into text in the user's unit, and back. One inch is 25.4 mm. A unit other than 1 and
/// 2 means millimetres. Any number of threads may use one transformer at the same time.
class VELAMO_API VLMValueTransformer {
public:
    /// Returns the measurement unit (see MeasurementUnit). It is called anew by every transformation that needs
    /// the unit, in the same thread; whatever it throws passes through.
    using UnitSource = std::function<std::int32_t()>;

    /// Uses the user's locale, and the unit of the user's preference file (see measurementUnitOfUser).
    VLMValueTransformer();
    /// Uses the given locale (an ICU name such as "de_DE") and source of the unit, for example an application's own
    /// setting, or measurementUnitIn() with another preference file.
    VLMValueTransformer(std::string locale, UnitSource unit);
    /// Uses the given unit and the user's locale.
    explicit VLMValueTransformer(MeasurementUnit unit);

    /// Returns the type of what transformedValue returns: text.
    [[nodiscard]] static const std::type_info& transformedValueClass() noexcept { return typeid(std::string); }
    /// Returns whether reverseTransformedValue may be used.
    [[nodiscard]] static constexpr bool allowsReverseTransformation() noexcept { return true; }

    /// Returns the length, narrowed to single precision first, as text. Millimetres look like "12.3 mm"; inches like
    /// "0.49\"" with unit 1, and like "1 15/32\"" with unit 2, where inches and 32nds are both cut toward zero. A
    /// length that is not finite is written as the locale writes it. Returns nullopt for nothing. Throws
    /// InternalInconsistencyException for any other value that has no floatValue().
    [[nodiscard]] Text transformedValue(const TransformableValue& value) const;

    /// Returns the length in millimetres that a text states: a number ("12.5 mm", "2 in", "0.5\"") or a fraction with
    /// or without a whole number ("1 1/2"). "mm", "in" or the inch mark names the unit; without one the user's unit
    /// applies. A part that cannot be read counts as 0; as a denominator it gives a result that is not finite. Returns
    /// 0 for nothing and for an empty text. Returns any other value unchanged.
    [[nodiscard]] TransformableValue reverseTransformedValue(const TransformableValue& value) const;

private:
    [[nodiscard]] double numberIn(std::string_view text) const;
    [[nodiscard]] double fractionOf(std::string_view beforeSlash, std::string_view denominator) const;
    [[nodiscard]] bool isInInches(std::string_view text) const;

    std::string locale_;
    UnitSource unit_;
    std::shared_ptr<const PlainNumberFormatter> coreFormatter_;
};

}  // namespace velamo
