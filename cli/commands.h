#pragma once

#include <functional>

#include "cli/console.h"

namespace CLI {
class App;
}

namespace velamo {

/// What the command line asked for, ready to be done.
using Action = std::function<ExitStatus(const Console&)>;

/// Each adds one subcommand to the program; when the command line names it, `chosen` becomes its action.
void describeInfo(CLI::App& program, Action& chosen);
void describeIndex(CLI::App& program, Action& chosen);
void describeSearch(CLI::App& program, Action& chosen);
void describeForget(CLI::App& program, Action& chosen);
void describeDump(CLI::App& program, Action& chosen);
void describeConvert(CLI::App& program, Action& chosen);
void describePalettes(CLI::App& program, Action& chosen);
void describeHoops(CLI::App& program, Action& chosen);
void describeEdit(CLI::App& program, Action& chosen);
void describeRender(CLI::App& program, Action& chosen);
void describeDesktop(CLI::App& program, Action& chosen);
void describeFormatLength(CLI::App& program, Action& chosen);
void describeParseLength(CLI::App& program, Action& chosen);

}  // namespace velamo
