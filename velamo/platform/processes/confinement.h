#pragma once

#include <cstdint>

namespace velamo {

/// What a confined process keeps.
struct Allowance {
    std::uint64_t memory = 0;  // bytes of address space, and the most that the attachment may hold
    int socket = -1;           // a connected one, for messages
    int attachment = -1;       // a file that is open for writing; -1: none
};

/// What the system took from a process.
struct Confinement {
    bool areCallsRefused = false;  // every call that a reader has no need of
    bool isReadOnly = false;       // the file system refuses changes by itself, too
    bool isLimited = false;        // in memory, files and processes
};

/// Takes from this process, for good, what a reader of untrusted files has no need of: from now on it can open files
/// for reading, write to its attachment, pass messages on its socket, have memory and end, and nothing else: every
/// other call of the system is refused with EPERM (with ENOSYS where the C library then tries an older one). Nor can it
/// make memory executable, gain privileges, be traced by others or leave a core file, and it has at most
/// `allowance.memory` bytes of address space (sanitizers take far more, so builds with them have no such limit). Where
/// the system cannot do all of that, as much is done as it can, and the result says so. Modules must be loaded before.
[[nodiscard]] Confinement confineToReading(const Allowance& allowance) noexcept;

/// Whether this build's memory can be limited.
[[nodiscard]] bool canLimitMemory() noexcept;

}  // namespace velamo
