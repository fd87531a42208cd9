#include <iostream>

#include "cli/command_line.h"
#include "platform/interruption.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"

int main(int argumentCount, char** arguments) {
    velamo::prepareForSignals();
    velamo::openStandardStreams();
    std::ios::sync_with_stdio(false);
    velamo::adoptUserLanguage();
    velamo::Console console{.out = std::cout,
                            .problems = std::cerr,
                            .outIsTerminal = isTerminal(velamo::StandardStream::output),
                            .problemsIsTerminal = isTerminal(velamo::StandardStream::error)};
    console.roomForProblems = [] { return terminalSize(velamo::StandardStream::error); };
    if (console.outIsTerminal) {
        console.pictures = velamo::announcedPictures();
        console.size = velamo::terminalSize(velamo::StandardStream::output);
    }
    return velamo::runCommandLine({arguments + 1, arguments + argumentCount}, console);
}
