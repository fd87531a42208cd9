#pragma once

namespace velamo {

/// The codes of refused edits, in designErrorDomain. A refused edit has changed nothing.
enum class EditFailure : int {
    invalidOrientation = 70,
    movesTooLarge = 71,  // the stitches could not be optimised, see optimizeJumpsFor
    tooFewThreads = 72,  // colour blocks without a thread
    invalidBasting = 73,
};

}  // namespace velamo
