#pragma once

#include <functional>
#include <iosfwd>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli/json.h"
#include "model/design.h"

namespace velamo {

/// A command of the edit language, ready to be carried out: changes the design and gives the command's result.
using EditCommand = std::function<Json(VLMDesign&)>;

/// One word of the edit language.
struct EditWord {
    std::string_view name;
    std::string_view parameters;  // as --help shows them: "VENDOR CODE"
    std::string_view meaning;
    std::string_view example;
    EditCommand (*parse)(std::span<const std::string> arguments);  // throws EditSyntaxError
    std::size_t parameterCount;
};

/// All words, in the order in which --help shows them.
[[nodiscard]] std::span<const EditWord> editWords() noexcept;

/// A command that is none: says what was expected.
class EditSyntaxError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command that a line stands for. Blanks separate its words; quotes, double or single, hold blanks or nothing
/// together.
[[nodiscard]] EditCommand parseEditCommand(std::string_view line);

/// The commands of a script: one a line; empty lines and those that start with "#" are none. An error names the line.
[[nodiscard]] std::vector<EditCommand> parseEditScript(std::istream& script, const std::string& name);

}  // namespace velamo
