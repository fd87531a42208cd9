#include <cstdlib>
#include <iostream>

#include "integrations/kde/extractor.h"
#include "model/error.h"
#include "platform/interruption.h"
#include "platform/standard_streams.h"

/// Answers one request; whoever asks again starts the program again.
int main() {
    velamo::prepareForSignals();
    velamo::openStandardStreams();
    std::ios::sync_with_stdio(false);
    const bool isDone = velamo::operation(nullptr, [] {
        const auto answer = velamo::answerExtractorRequest(std::cin);
        std::cout << answer.json << std::endl;
        return answer.isDesign && std::cout;
    });
    return isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
