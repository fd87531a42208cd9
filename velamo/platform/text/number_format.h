#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "velamo/private_api.h"

namespace velamo {

/// Writes numbers by a pattern such as "#,##0.00" with the marks of a locale (ICU names, "de_DE"). Halves round to the
/// even digit; infinity and not-a-number are written as the locale's signs for them.
class VELAMO_PRIVATE_API PatternNumberFormatter {
public:
    /// Throws std::invalid_argument when the pattern is none. An unknown locale has the marks of a wider one.
    PatternNumberFormatter(std::string_view pattern, const std::string& locale);
    ~PatternNumberFormatter();
    PatternNumberFormatter(PatternNumberFormatter&&) noexcept;
    PatternNumberFormatter& operator=(PatternNumberFormatter&&) noexcept;

    [[nodiscard]] std::string format(double value) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// What numbers are written with; UTF-8.
struct NumberMarks {
    std::string decimal = ".";
    std::string grouping;  // empty: digits stand in one row
    std::string minus = "-";
};

/// The marks of a locale (ICU names).
[[nodiscard]] VELAMO_PRIVATE_API NumberMarks numberMarksOf(const std::string& locale);

/// The digits that a locale (ICU names) writes numbers with.
class VELAMO_PRIVATE_API LocaleDigits {
public:
    explicit LocaleDigits(const std::string& locale);
    /// The text of a number, with the locale's digits in place of ASCII ones.
    [[nodiscard]] std::string writing(std::string_view number) const;

private:
    std::array<std::string, 10> digits_;  // UTF-8
};

/// The number at the start of a text: white space is skipped, what follows the number is ignored. Returns nullopt when
/// the text does not start with a number. A number is a sign, digits of any script, a decimal mark and more digits, and
/// an exponent; grouping marks belong to it where they part it into groups of three digits ("1,234.5", but "12,5" is
/// 12). One that is too large is infinite.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<double> scanNumber(std::string_view text, const NumberMarks& marks);

/// The plain number formatter, which reads numbers: the whole text, but for white space around it, must be one number.
class VELAMO_PRIVATE_API PlainNumberFormatter {
public:
    explicit PlainNumberFormatter(const std::string& locale) : marks_(numberMarksOf(locale)) {}

    [[nodiscard]] const NumberMarks& marks() const noexcept { return marks_; }
    [[nodiscard]] std::optional<double> parse(std::string_view text) const;

private:
    NumberMarks marks_;
};

/// The text without the white space (of any script) at its ends.
[[nodiscard]] VELAMO_PRIVATE_API std::string_view withoutWhiteSpaceAround(std::string_view text);

}  // namespace velamo
