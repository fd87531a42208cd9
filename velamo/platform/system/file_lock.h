#pragma once

#include <filesystem>
#include <functional>

#include "velamo/platform/system/descriptor.h"
#include "velamo/private_api.h"

namespace velamo {

/// Holds a file that at most one process holds at a time; the system lets go of it when the process ends, however it
/// ends. The file itself is empty and stays.
class VELAMO_PRIVATE_API FileLock {
public:
    /// Waits until the file is free, after having called `onWaiting` once when it is not. Makes the file, for the user
    /// alone, when it is not there. Throws std::system_error when it cannot be opened, and what `onWaiting` throws;
    /// then it holds nothing.
    FileLock(const std::filesystem::path& file, const std::function<void()>& onWaiting);

private:
    Descriptor descriptor_;
};

}  // namespace velamo
