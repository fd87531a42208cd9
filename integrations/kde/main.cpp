#include <cstdlib>
#include <iostream>

#include "integrations/kde/extractor.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/program_start.h"

/// Answers one request; whoever asks again starts the program again.
int main() {
    velamo::startProgram();
    std::ios::sync_with_stdio(false);
    const bool isDone = velamo::operation(nullptr, [] {
        velamo::ConfinedReader reader;
        if (!reader.isConfined()) std::cerr << "velamo-kfilemetadata: " << velamo::unconfinedNotice << '\n';
        const auto answer = velamo::answerExtractorRequest(std::cin, reader);
        std::cout << answer.json << std::endl;
        return answer.isDesign && std::cout;
    });
    return isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
