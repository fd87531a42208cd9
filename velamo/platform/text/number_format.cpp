#include "velamo/platform/text/number_format.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include <unicode/decimfmt.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "velamo/platform/text/plain_number.h"

namespace velamo {
namespace {

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

/// The characters of a UTF-8 text, walked from either end. Bytes that are no UTF-8 are neither digits nor white space.
class Characters {
public:
    explicit Characters(std::string_view text) noexcept : rest_(text) {}

    [[nodiscard]] std::string_view rest() const noexcept { return rest_; }

    /// Takes the text off the front when it stands there; an empty text never does.
    bool take(std::string_view text) noexcept {
        if (text.empty() || rest_.substr(0, text.size()) != text) return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    /// Takes a digit of any script off the front and gives its value; -1 when none stands there.
    int takeDigit() {
        const UChar32 character = front();
        const int value = u_charDigitValue(character);
        if (value >= 0) rest_.remove_prefix(sizeOf(character));
        return value;
    }

    void skipWhiteSpace() {
        while (!rest_.empty() && u_isUWhiteSpace(front()) != 0) rest_.remove_prefix(sizeOf(front()));
    }

    void dropWhiteSpaceBehind() {
        while (!rest_.empty() && u_isUWhiteSpace(back()) != 0) rest_.remove_suffix(sizeOf(back()));
    }

private:
    static constexpr std::size_t longestCharacter = 4;  // in bytes, so that looking at so many is enough

    static std::size_t sizeOf(UChar32 character) noexcept { return static_cast<std::size_t>(U8_LENGTH(character)); }

    static icu::UnicodeString decoded(std::string_view text) {
        return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    }

    [[nodiscard]] UChar32 front() const { return decoded(rest_.substr(0, longestCharacter)).char32At(0); }

    [[nodiscard]] UChar32 back() const {
        const auto text = decoded(rest_.substr(rest_.size() - std::min(rest_.size(), longestCharacter)));
        return text.char32At(text.length() - 1);
    }

    std::string_view rest_;
};

/// Takes one number off the front of a text and keeps it in the plain form that every C library reads.
class NumberScanner {
public:
    NumberScanner(std::string_view text, const NumberMarks& marks) : characters_(text), marks_(&marks) {}

    /// The number, or nothing when there is none.
    std::optional<double> take() {
        characters_.skipWhiteSpace();
        takeSign();
        const bool hasWhole = takeWhole();
        if (!takeFraction() && !hasWhole) return std::nullopt;
        takeExponent();
        return value();
    }

    [[nodiscard]] std::string_view rest() const noexcept { return characters_.rest(); }

private:
    void takeSign() {
        constexpr std::string_view minusSign = "\xE2\x88\x92";
        const bool isNegative = characters_.take(marks_->minus) || characters_.take("-") || characters_.take(minusSign);
        if (isNegative) plain_ += '-';
        if (!isNegative) characters_.take("+");
    }

    /// Takes digits off `from`, at most `most`, and gives their number.
    std::size_t takeDigits(Characters& from, std::string& to,
                           std::size_t most = std::numeric_limits<std::size_t>::max()) {
        std::size_t count = 0;
        for (int digit = 0; count < most && (digit = from.takeDigit()) >= 0; ++count)
            to += static_cast<char>('0' + digit);
        return count;
    }

    bool takeWhole() {
        constexpr std::size_t groupSize = 3;
        const auto leading = takeDigits(characters_, plain_);
        if (leading >= 1 && leading <= groupSize) {
            while (takeGroup(groupSize)) {
            }
        }
        return leading > 0;
    }

    /// A grouping mark and exactly so many digits.
    bool takeGroup(std::size_t size) {
        Characters ahead = characters_;
        std::string digits;
        if (!ahead.take(marks_->grouping) || takeDigits(ahead, digits, size) < size) return false;
        Characters behind = ahead;
        if (behind.takeDigit() >= 0) return false;
        characters_ = ahead;
        plain_ += digits;
        return true;
    }

    bool takeFraction() {
        Characters ahead = characters_;
        std::string digits = ".";
        if (!ahead.take(marks_->decimal)) return false;
        const bool hasDigits = takeDigits(ahead, digits) > 0;
        const bool isPart = hasDigits || (!plain_.empty() && plain_ != "-");  // "5." is a number, "." is none
        if (!isPart) return false;
        characters_ = ahead;
        plain_ += digits;
        return hasDigits;
    }

    void takeExponent() {
        Characters ahead = characters_;
        std::string exponent = "e";
        if (!ahead.take("e") && !ahead.take("E")) return;
        if (ahead.take("-"))
            exponent += '-';
        else
            ahead.take("+");
        if (takeDigits(ahead, exponent) == 0) return;
        characters_ = ahead;
        plain_ += exponent;
    }

    /// Independent of the locale that the program around us may have set.
    [[nodiscard]] double value() const {
        const auto number = scanDouble(plain_);
        return number ? number->value : 0;
    }

    Characters characters_;
    const NumberMarks* marks_;
    std::string plain_;
};

}  // namespace

struct PatternNumberFormatter::State {
    icu::DecimalFormat format;
};

PatternNumberFormatter::PatternNumberFormatter(std::string_view pattern, const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const auto patternText = icu::UnicodeString::fromUTF8({pattern.data(), static_cast<std::int32_t>(pattern.size())});
    const icu::DecimalFormatSymbols symbols(icu::Locale(locale.c_str()), status);
    state_.reset(new State{icu::DecimalFormat(patternText, symbols, status)});
    if (U_FAILURE(status)) throw std::invalid_argument("no number format: " + std::string(pattern));
}

PatternNumberFormatter::~PatternNumberFormatter() = default;
PatternNumberFormatter::PatternNumberFormatter(PatternNumberFormatter&&) noexcept = default;
PatternNumberFormatter& PatternNumberFormatter::operator=(PatternNumberFormatter&&) noexcept = default;

std::string PatternNumberFormatter::format(double value) const {
    icu::UnicodeString text;
    return utf8(state_->format.format(value, text));
}

NumberMarks numberMarksOf(const std::string& locale) {
    using Symbols = icu::DecimalFormatSymbols;
    UErrorCode status = U_ZERO_ERROR;
    const Symbols symbols(icu::Locale(locale.c_str()), status);
    if (U_FAILURE(status)) return {};
    return {utf8(symbols.getConstSymbol(Symbols::kDecimalSeparatorSymbol)),
            utf8(symbols.getConstSymbol(Symbols::kGroupingSeparatorSymbol)),
            utf8(symbols.getConstSymbol(Symbols::kMinusSignSymbol))};
}

LocaleDigits::LocaleDigits(const std::string& locale) {
    using Symbols = icu::DecimalFormatSymbols;
    UErrorCode status = U_ZERO_ERROR;
    const Symbols symbols(icu::Locale(locale.c_str()), status);
    for (std::size_t digit = 0; digit < digits_.size(); ++digit) {
        // The sign for zero stands apart from the others, which follow one another.
        const auto symbol = digit == 0
                                ? Symbols::kZeroDigitSymbol
                                : static_cast<Symbols::ENumberFormatSymbol>(Symbols::kOneDigitSymbol + digit - 1);
        digits_.at(digit) = U_SUCCESS(status) ? utf8(symbols.getConstSymbol(symbol)) : std::to_string(digit);
    }
}

std::string LocaleDigits::writing(std::string_view number) const {
    std::string text;
    text.reserve(number.size());
    for (const char letter : number) {
        if (letter >= '0' && letter <= '9')
            text += digits_.at(static_cast<std::size_t>(letter - '0'));
        else
            text += letter;
    }
    return text;
}

std::optional<double> scanNumber(std::string_view text, const NumberMarks& marks) {
    return NumberScanner(text, marks).take();
}

std::optional<double> PlainNumberFormatter::parse(std::string_view text) const {
    NumberScanner scanner(withoutWhiteSpaceAround(text), marks_);
    const auto number = scanner.take();
    return scanner.rest().empty() ? number : std::nullopt;
}

std::string_view withoutWhiteSpaceAround(std::string_view text) {
    Characters characters(text);
    characters.skipWhiteSpace();
    characters.dropWhiteSpaceBehind();
    return characters.rest();
}

}  // namespace velamo
