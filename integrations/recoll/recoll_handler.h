#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>

#include "reading/confined_reader.h"

namespace velamo {

/// What the indexer sends and is answered, on the handler's standard input and output. A message is a row of fields
///   NAME ": " LENGTH "\n" DATA
/// with LENGTH bytes of data, and ends with an empty line. A request names a file in the field "filename".

/// Answers one request after the other until the input ends, and flushes every answer. A file that holds no design is
/// answered as such, and so is a request without a usable file name. False when the input ends inside a request or is
/// no such message (nor is one with a field of more than 64 KiB), which leaves nothing to go on with, and when the
/// answers cannot be written. What is wrong with a file is said on `problems`, since an answer has no room for it. May
/// throw std::bad_alloc, and WorkerLoss.
[[nodiscard]] bool answerRecollRequests(std::istream& in, std::ostream& out, ConfinedReader& reader,
                                        std::ostream& problems);

/// The answer for a file, with its empty line.
[[nodiscard]] std::string recollAnswerFor(const std::filesystem::path& file, ConfinedReader& reader,
                                          std::ostream& problems);

/// The file as a web page, for handlers that are started anew for each file; empty when it holds no design.
[[nodiscard]] std::string recollPageOf(const std::filesystem::path& file, ConfinedReader& reader,
                                       std::ostream& problems);

}  // namespace velamo
