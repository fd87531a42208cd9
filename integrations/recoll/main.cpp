#include <cstdlib>
#include <iostream>

#include "integrations/recoll/recoll_handler.h"
#include "model/error.h"
#include "platform/interruption.h"
#include "platform/standard_streams.h"

namespace {

bool showPage(const char* file) {
    const std::string page = velamo::recollPageOf(file);
    std::cout << page << std::flush;
    return !page.empty() && std::cout;
}

}  // namespace

/// Without an argument the persistent handler, with a file name the one that is started anew for each file.
int main(int argumentCount, char** arguments) {
    velamo::prepareForSignals();
    velamo::openStandardStreams();
    std::ios::sync_with_stdio(false);
    const bool isDone = velamo::operation(nullptr, [&] {
        if (argumentCount > 2) return false;
        return argumentCount == 2 ? showPage(arguments[1]) : velamo::answerRecollRequests(std::cin, std::cout);
    });
    return isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
