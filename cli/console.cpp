#include "cli/console.h"

#include <ostream>

#include "velamo/platform/text/harmless_text.h"

namespace velamo {
namespace {

std::string shownOn(bool isTerminal, std::string_view text) {
    return isTerminal ? escapedForTerminal(text) : std::string(text);
}

}  // namespace

std::string Console::shown(std::string_view text) const {
    return shownOn(outIsTerminal, text);
}

void reportProblem(const Console& console, std::string_view file, std::string_view message, int code) {
    console.problems << "velamo: " << shownOn(console.problemsIsTerminal, file) << ": "
                     << shownOn(console.problemsIsTerminal, message) << " (error " << code << ")\n";
}

void reportProblem(const Console& console, const std::filesystem::path& file, const VLMError& error) {
    reportProblem(console, file.native(), error.message(), error.code);
}

void reportNote(const Console& console, std::string_view file, std::string_view message) {
    console.problems << "velamo: " << shownOn(console.problemsIsTerminal, file) << ": "
                     << shownOn(console.problemsIsTerminal, message) << '\n';
}

void reportWrongUsage(const Console& console, std::string_view message) {
    console.problems << "velamo: " << shownOn(console.problemsIsTerminal, message) << '\n';
}

}  // namespace velamo
