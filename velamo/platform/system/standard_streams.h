#pragma once

namespace velamo {

/// Opens the standard streams that the caller of this program left closed, so that no file that is opened later takes
/// their place and gets what is meant for them. Reading from such a stream, and writing to it, fails as before. The
/// first thing that a program does.
void openStandardStreams() noexcept;

}  // namespace velamo
