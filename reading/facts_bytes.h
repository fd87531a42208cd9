#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "reading/facts_reader.h"

namespace velamo {

/// An outcome on its way from one process to another of the same program.
[[nodiscard]] std::string bytesOf(const FileOutcome& outcome);

/// What bytesOf wrote, or EBADMSG where the bytes are anything else: a worker that a file has taken over may answer
/// anything. Whatever they are, nothing but them is read. May throw std::bad_alloc.
[[nodiscard]] FileOutcome outcomeOf(std::string_view bytes);

/// The same for what is known of an archive; nothing where the bytes are anything else. May throw std::bad_alloc.
[[nodiscard]] std::string bytesOf(const ArchiveFacts& archive);
[[nodiscard]] std::optional<ArchiveFacts> archiveFactsOf(std::string_view bytes);

}  // namespace velamo
