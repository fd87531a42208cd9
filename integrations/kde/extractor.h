#pragma once

#include <iosfwd>
#include <string>

#include "reading/confined_reader.h"

namespace velamo {

/// What KFileMetaData is told about a file, as a JSON object on a line.
struct ExtractorAnswer {
    std::string json;
    bool isDesign = false;
};

/// Reads the whole request, {"path": ..., "mimetype": ...}, and answers it. Input that is no such request, or longer
/// than 64 KiB, is an error, as is a file that holds no design. May throw std::bad_alloc,
/// and WorkerLoss.
[[nodiscard]] ExtractorAnswer answerExtractorRequest(std::istream& in, ConfinedReader& reader);

}  // namespace velamo
