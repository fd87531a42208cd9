#pragma once

#include <filesystem>

#include "model/design.h"

namespace velamo {

/// Fills `design` from an embroidery file; the extension of its name, in any case, decides the format. Name and
/// location are set and both lists emptied first; other fields keep their values until the format's reader sets them.
/// After the reader, whether it succeeded or not, the thread side file is asked for better threads (see thread_file.h)
/// and useThreadFile set to its answer. On success the display range covers all stitches.
///
/// False on failure, with 10 (unknown extension; the side file is not asked), 11 (no stitches), 12 (no threads) or the
/// reader's own error in `error`, when that is not null. The design then keeps what was set so far.
[[nodiscard]] bool importDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url,
                                            VLMError* error) noexcept;

}  // namespace velamo
