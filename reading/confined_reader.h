#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "velamo/formats/design_attributes.h"
#include "velamo/model/design.h"
#include "velamo/platform/processes/lasting_worker.h"

namespace velamo {

/// What a program says, once, where its reader is not confined.
inline constexpr std::string_view unconfinedNotice = "this system cannot wholly confine the process that reads designs";

/// Reads designs for a program in a process of its own that can do nothing but read (see WorkerProcess): what a file
/// makes a reader do stays there, and a file that takes too much time or memory is refused. What comes back is checked
/// as bytes of a stranger are. One thread at a time reads.
class ConfinedReader {
public:
    /// Must be made while this process has one thread. WorkerLoss when there is no process to be had.
    explicit ConfinedReader(const WorkerLimits& limits = {});

    /// At most `count` readers, for a thread each, but no more than there are processes to be had; at least one, or
    /// WorkerLoss. Lost ones are replaced whatever threads there are. To be made as one is.
    [[nodiscard]] static std::vector<ConfinedReader> some(std::size_t count, const WorkerLimits& limits = {});

    /// Whether the system refuses the process everything but reading. Waits until the process is ready; WorkerLoss when
    /// it is lost.
    [[nodiscard]] bool isConfined() { return worker_.isConfined(); }

    /// Does what readDesign does, for paths through archives as well. `error` may also be ETIMEDOUT or EFAULT where the
    /// file takes the reader too long or ends it, ENOMEM and EFBIG where it takes too much memory, and EBADMSG where
    /// what comes back is no design: then the design is as it was. WorkerLoss, and nothing else, is thrown: when there
    /// is no process to be had any more.
    [[nodiscard]] bool readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error);

    /// The threads of the side file beside `file`, of which there must be `count`; none where it is not there, or is
    /// not one that a design of so many threads takes (see takeThreadsOfSideFile). False with `error` where the system
    /// could not read it this time, or what readDesign names prevents it. Throws as readDesign.
    [[nodiscard]] bool readThreads(std::vector<VLMThread>& threads, const std::filesystem::path& file,
                                   std::size_t count, VLMError* error);

    /// The attributes of the design in the file; nothing, and the error, where it holds none that can be read. Throws
    /// as readDesign.
    [[nodiscard]] std::optional<DesignAttributes> attributesOfFile(const std::filesystem::path& file, VLMError* error);

private:
    explicit ConfinedReader(LastingWorker worker) noexcept : worker_(std::move(worker)) {}
    [[nodiscard]] bool read(const std::string& request, VLMDesign& design, const std::filesystem::path& file,
                            VLMError* error);

    LastingWorker worker_;
};

}  // namespace velamo
