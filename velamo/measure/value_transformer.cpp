#include "velamo/measure/value_transformer.h"

#include <cxxabi.h>

#include <cmath>
#include <cstdlib>
#include <memory>

#include "velamo/measure/inches.h"
#include "velamo/measure/length_formatter.h"
#include "velamo/platform/plist/property_list.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/user.h"

namespace velamo {
namespace {

bool contains(std::string_view text, std::string_view part) noexcept {
    return text.find(part) != std::string_view::npos;
}

/// The first piece of a text, and the second where there is one, between separators.
struct Pieces {
    std::string_view first;
    std::optional<std::string_view> second;
};

Pieces split(std::string_view text, char separator) noexcept {
    const auto end = text.find(separator);
    if (end == std::string_view::npos) return {text, std::nullopt};
    const auto rest = text.substr(end + 1);
    return {text.substr(0, end), rest.substr(0, rest.find(separator))};
}

std::string demangled(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           &std::free);
    return status == 0 ? name.get() : type.name();
}

struct TypeOfValue {
    template <class Value>
    const std::type_info& operator()(const Value&) const noexcept {
        return typeid(Value);
    }
    const std::type_info& operator()(const std::any& other) const noexcept { return other.type(); }
};

}  // namespace

std::filesystem::path preferenceFile() {
    return homeFolder() / "Library/Preferences/de.velamo.app.plist";
}

std::int32_t measurementUnitIn(const std::filesystem::path& preferences) {
    const auto list = parsePropertyList(readWholeFile(preferences));
    const PropertyList* unit = list ? list->find("MeasurementUnit") : nullptr;
    const auto number = unit != nullptr ? unit->number() : std::nullopt;
    return integerOf(number.value_or(0));
}

std::int32_t measurementUnitOfUser() {
    return measurementUnitIn(preferenceFile());
}

std::optional<double> TransformableValue::number() const noexcept {
    const auto* number = std::get_if<double>(&value_);
    return number != nullptr ? std::optional(*number) : std::nullopt;
}

const std::string* TransformableValue::text() const noexcept {
    if (const auto* styled = std::get_if<StyledText>(&value_)) return &styled->string;
    return std::get_if<std::string>(&value_);
}

std::optional<float> TransformableValue::floatValue() const {
    if (const auto* number = std::get_if<double>(&value_)) return static_cast<float>(*number);
    if (const auto* plainText = std::get_if<std::string>(&value_)) {
        return static_cast<float>(scanNumber(*plainText, NumberMarks{}).value_or(0));
    }
    return std::nullopt;
}

std::string TransformableValue::typeName() const {
    return demangled(std::visit(TypeOfValue{}, value_));
}

VLMValueTransformer::VLMValueTransformer() : VLMValueTransformer(numberLocaleOfUser(), measurementUnitOfUser) {}

VLMValueTransformer::VLMValueTransformer(MeasurementUnit unit)
    : VLMValueTransformer(numberLocaleOfUser(), [unit] { return static_cast<std::int32_t>(unit); }) {}

VLMValueTransformer::VLMValueTransformer(std::string locale, UnitSource unit)
    : locale_(std::move(locale)),
      unit_(std::move(unit)),
      coreFormatter_(std::make_shared<const PlainNumberFormatter>(locale_)) {}

Text VLMValueTransformer::transformedValue(const TransformableValue& value) const {
    if (value.isNothing()) return std::nullopt;
    const auto millimetres = value.floatValue();
    if (!millimetres) {
        throw InternalInconsistencyException("Value (" + value.typeName() + ") does not respond to -floatValue.");
    }
    return LengthFormatter(static_cast<MeasurementUnit>(unit_()), locale_).text(*millimetres);
}

TransformableValue VLMValueTransformer::reverseTransformedValue(const TransformableValue& value) const {
    if (value.isNothing()) return 0.0;
    const std::string* text = value.text();
    if (text == nullptr) return value;
    if (text->empty()) return 0.0;
    const double number = numberIn(*text);
    return isInInches(*text) ? number * millimetresPerInch : number;
}

double VLMValueTransformer::numberIn(std::string_view text) const {
    const auto [beforeSlash, denominator] = split(text, '/');
    if (!denominator) return scanNumber(text, coreFormatter_->marks()).value_or(0);
    return fractionOf(beforeSlash, *denominator);
}

double VLMValueTransformer::fractionOf(std::string_view beforeSlash, std::string_view denominatorText) const {
    const auto [first, second] = split(withoutWhiteSpaceAround(beforeSlash), ' ');
    const auto number = [this](std::string_view text) { return coreFormatter_->parse(text).value_or(0); };
    const double denominator = denominatorText.empty() ? 1 : number(denominatorText);
    const double numerator = number(second.value_or(first));
    const double whole = second ? integerOf(number(first)) : 0;
    const double sign = whole < 0 ? -1 : 1;
    return sign * (numerator / denominator + std::abs(whole));
}

bool VLMValueTransformer::isInInches(std::string_view text) const {
    if (contains(text, "mm")) return false;
    if (contains(text, "in") || text.find(inchMark) != std::string_view::npos) return true;
    const auto unit = static_cast<MeasurementUnit>(unit_());
    return unit == MeasurementUnit::decimalInches || unit == MeasurementUnit::fractionalInches;
}

}  // namespace velamo
