#pragma once

#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/json.h"
#include "cli/reading.h"
#include "velamo/model/design.h"

namespace velamo {

/// A command of the edit language, ready to be carried out: changes the design and gives the command's result. Throws
/// EditRefusal when the edit fails, and EditSyntaxError when the design has not what the command names.
using EditCommand = std::function<Json(VLMDesign& design, const DesignSource& source)>;

/// A command that is none: says what was expected.
class EditSyntaxError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An edit that failed.
class EditRefusal : public std::exception {
public:
    explicit EditRefusal(VLMError error) : error_(std::move(error)) {}
    /// That another file than the one that is edited could not be read.
    EditRefusal(VLMError error, std::string file) : error_(std::move(error)), file_(std::move(file)) {}
    [[nodiscard]] const VLMError& error() const noexcept { return error_; }
    /// The file that the error is about; nothing for the one that is edited.
    [[nodiscard]] const std::optional<std::string>& file() const noexcept { return file_; }

private:
    VLMError error_;
    std::optional<std::string> file_;
};

/// The command that a line stands for. Blanks separate its words; quotes, double or single, hold blanks or nothing
/// together.
[[nodiscard]] EditCommand parseEditCommand(std::string_view line);

/// The commands of a script: one a line; "#" starts a comment, and a byte-order mark at the start is none of its text.
/// An error names the line.
[[nodiscard]] std::vector<EditCommand> parseEditScript(std::string_view script, const std::string& name);

/// The commands of lines given on the command line; an error names the line.
[[nodiscard]] std::vector<EditCommand> parseEditLines(std::span<const std::string> lines);

/// Carries the commands out in order. Their results; the last one is {"error": ...} where a command failed, and those
/// behind it were not carried out.
struct EditOutcome {
    Json results = Json::array();
    std::optional<EditRefusal> refusal;
};
[[nodiscard]] EditOutcome carryOut(std::span<const EditCommand> commands, VLMDesign& design,
                                   const DesignSource& source);

}  // namespace velamo
