#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "cli/edit_script.h"

namespace velamo {

struct EditWord;

/// What stands behind the word of a command. Each reader throws EditSyntaxError, with the parameter's name, where the
/// argument is of another kind.
class EditArguments {
public:
    /// Throws where there are too few or too many.
    EditArguments(const EditWord& word, std::span<const std::string> arguments);

    [[nodiscard]] const std::string& text(std::size_t index) const { return arguments_[index]; }
    [[nodiscard]] std::int32_t integer(std::size_t index) const;
    [[nodiscard]] std::uint64_t natural(std::size_t index) const;
    [[nodiscard]] double real(std::size_t index) const;
    [[nodiscard]] float single(std::size_t index) const;
    /// A part of a colour, 0 to 1.
    [[nodiscard]] double share(std::size_t index) const;
    /// "on" or "off".
    [[nodiscard]] bool isOn(std::size_t index) const;
    /// Whether the optional word, which is its parameter's name, is there.
    [[nodiscard]] bool isGiven(std::size_t index) const;

private:
    [[noreturn]] void refuse(std::size_t index, std::string_view expected) const;
    template <class Number>
    [[nodiscard]] Number number(std::size_t index, std::string_view expected) const;

    const EditWord& word_;
    std::span<const std::string> arguments_;
};

/// One word of the edit language.
struct EditWord {
    std::string_view name;
    std::string_view parameters;  // as --help shows them: "X Y TOL [unselect]"; those in brackets may be missing
    std::string_view meaning;
    std::string_view example;
    EditCommand (*parse)(const EditArguments& arguments);
};

/// All words, in the order in which --help shows them.
[[nodiscard]] std::span<const EditWord> editWords() noexcept;

}  // namespace velamo
