#pragma once

namespace velamo {

/// Lets this process, for good, only read the file system (of which the system tells files and folders, whatever call
/// asks), open no connection, and send signals to nobody: as much of that as this system's Landlock knows. What is open
/// stays so. The process must have given up new privileges before. Returns false when the system has no Landlock.
[[nodiscard]] bool restrictToReading() noexcept;

}  // namespace velamo
