#pragma once

#include <string>
#include <string_view>

#include "reading/facts_reader.h"

namespace velamo {

/// An outcome of a file that is no archive, on its way from one process to another of the same program.
[[nodiscard]] std::string bytesOf(const FactsOutcome& outcome);

/// What bytesOf wrote, or EBADMSG where the bytes are anything else: a worker that a file has taken over may answer
/// anything. Whatever they are, nothing but them is read. May throw std::bad_alloc.
[[nodiscard]] FactsOutcome outcomeOf(std::string_view bytes);

/// The same for what is known of an archive. May throw std::bad_alloc.
[[nodiscard]] std::string bytesOf(const ArchiveFacts& archive);
[[nodiscard]] FactsOutcome archiveOutcomeOf(std::string_view bytes);

}  // namespace velamo
