#include <cstdlib>
#include <iostream>

#include "integrations/recoll/recoll_handler.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/program_start.h"

namespace {

bool showPage(const char* file, velamo::ConfinedReader& reader) {
    const std::string page = velamo::recollPageOf(file, reader, std::cerr);
    std::cout << page << std::flush;
    return !page.empty() && std::cout;
}

}  // namespace

/// Without an argument the persistent handler, with a file name the one that is started anew for each file.
int main(int argumentCount, char** arguments) {
    velamo::startProgram();
    std::ios::sync_with_stdio(false);
    const bool isDone = velamo::operation(nullptr, [&] {
        if (argumentCount > 2) return false;
        velamo::ConfinedReader reader;
        if (!reader.isConfined()) std::cerr << "velamo-recoll: " << velamo::unconfinedNotice << '\n';
        return argumentCount == 2 ? showPage(arguments[1], reader)
                                  : velamo::answerRecollRequests(std::cin, std::cout, reader, std::cerr);
    });
    return isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
