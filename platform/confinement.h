#pragma once

#include <cstdint>

namespace velamo {

/// Takes from this process, for good, what a reader of untrusted files has no need of: it can open files for reading
/// only, change nothing in the file system, open no sockets, start no processes and touch no others; it leaves no core
/// file, and has at most `memory` bytes of address space (sanitizers take far more, so builds with them have no such
/// limit). What it has open already stays open. Where the system cannot confine a process, as much is done as it can.
void confineToReading(std::uint64_t memory) noexcept;

/// Whether this build's memory can be limited.
[[nodiscard]] bool canLimitMemory() noexcept;

}  // namespace velamo
