#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velamo {

/// Writes numbers by a pattern such as "#,##0.00" with the marks of a locale (ICU names, "de_DE").
class PatternNumberFormatter {
public:
    PatternNumberFormatter(std::string_view pattern, const std::string& locale);
    ~PatternNumberFormatter();
    PatternNumberFormatter(PatternNumberFormatter&&) noexcept;
    PatternNumberFormatter& operator=(PatternNumberFormatter&&) noexcept;

    [[nodiscard]] std::string format(double value) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The plain number formatter in its default settings, which reads numbers: the whole text must be one number.
class PlainNumberFormatter {
public:
    explicit PlainNumberFormatter(const std::string& locale);
    ~PlainNumberFormatter();
    PlainNumberFormatter(PlainNumberFormatter&&) noexcept;
    PlainNumberFormatter& operator=(PlainNumberFormatter&&) noexcept;

    [[nodiscard]] std::optional<double> parse(std::string_view text) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The number at the start of a text (white space before it is skipped, what follows is ignored), with the decimal mark of the locale;
/// nothing when the text does not start with a number.
[[nodiscard]] std::optional<double> scanNumber(std::string_view text, const std::string& locale);

}  // namespace velamo
