#include <algorithm>

#include "cli/edit_words.h"
#include "velamo/platform/text/plain_number.h"

namespace velamo {
namespace {

constexpr char betweenArguments = ' ';

/// The parameter with the index, as --help shows it; "" when there is none.
std::string_view parameterOf(const EditWord& word, std::size_t index) {
    std::string_view rest = word.parameters;
    for (; index > 0 && !rest.empty(); --index)
        rest.remove_prefix(std::min(rest.find(betweenArguments), rest.size() - 1) + 1);
    return rest.substr(0, rest.find(betweenArguments));
}

bool isOptional(std::string_view parameter) {
    return parameter.starts_with('[');
}

/// Whether so many arguments may stand behind the word.
bool takes(const EditWord& word, std::size_t count) {
    const bool isEnough = parameterOf(word, count).empty() || isOptional(parameterOf(word, count));
    return isEnough && (count == 0 || !parameterOf(word, count - 1).empty());
}

}  // namespace

EditArguments::EditArguments(const EditWord& word, std::span<const std::string> arguments)
    : word_(word), arguments_(arguments) {
    if (takes(word, arguments.size())) return;
    const std::string parameters = word.parameters.empty() ? "" : " " + std::string(word.parameters);
    throw EditSyntaxError("expected '" + std::string(word.name) + parameters + "'");
}

void EditArguments::refuse(std::size_t index, std::string_view expected) const {
    throw EditSyntaxError(std::string(parameterOf(word_, index)) + " is " + std::string(expected) + ", not '" +
                          text(index) + "'");
}

template <class Number>
Number EditArguments::number(std::size_t index, std::string_view expected) const {
    std::string_view word = text(index);
    if (word.starts_with('+') && !word.starts_with("+-")) word.remove_prefix(1);
    const auto number = plainNumber<Number>(word);
    if (!number) refuse(index, expected);
    return *number;
}

std::int32_t EditArguments::integer(std::size_t index) const {
    return number<std::int32_t>(index, "a whole number");
}

std::uint64_t EditArguments::natural(std::size_t index) const {
    return number<std::uint64_t>(index, "a whole number, 0 or more");
}

double EditArguments::real(std::size_t index) const {
    return number<double>(index, "a number");
}

float EditArguments::single(std::size_t index) const {
    return number<float>(index, "a number");
}

double EditArguments::share(std::size_t index) const {
    const double share = real(index);
    if (!(share >= 0 && share <= 1)) refuse(index, "a number from 0 to 1");
    return share;
}

bool EditArguments::isOn(std::size_t index) const {
    if (text(index) != "on" && text(index) != "off") refuse(index, "'on' or 'off'");
    return text(index) == "on";
}

bool EditArguments::isGiven(std::size_t index) const {
    if (index >= arguments_.size()) return false;
    std::string_view parameter = parameterOf(word_, index);
    parameter.remove_prefix(1);
    parameter.remove_suffix(1);
    if (text(index) != parameter) refuse(index, "'" + std::string(parameter) + "' or nothing");
    return true;
}

}  // namespace velamo
