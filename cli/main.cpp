#include <iostream>

#include "cli/command_line.h"
#include "velamo/platform/system/output_buffer.h"
#include "velamo/platform/system/program_start.h"
#include "velamo/platform/system/terminal.h"
#include "velamo/platform/system/user.h"

int main(int argumentCount, char** arguments) {
    velamo::startProgram();
    std::ios::sync_with_stdio(false);
    velamo::adoptUserLanguage();
    velamo::OutputBuffer output(velamo::StandardStream::output);
    std::ostream out(&output);
    velamo::Console console{.out = out,
                            .problems = std::cerr,
                            .outIsTerminal = isTerminal(velamo::StandardStream::output),
                            .problemsIsTerminal = isTerminal(velamo::StandardStream::error)};
    console.roomForProblems = [] { return terminalSize(velamo::StandardStream::error); };
    console.outFailure = &output.failure();
    if (console.outIsTerminal) {
        console.pictures = velamo::announcedPictures();
        console.size = velamo::terminalSize(velamo::StandardStream::output);
    }
    return velamo::runCommandLine({arguments + 1, arguments + argumentCount}, console);
}
