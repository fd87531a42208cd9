#include "velamo/editing/fail_edit.h"

#include <array>

#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr std::array<ErrorText, 4> errorTexts{{
    {70, "Unable to flip the design (invalid orientation)."},
    {71, "Unable to edit the design (moves too large)."},
    {72, "Unable to edit the design (too few threads)."},
    {73, "Unable to add basting (invalid length)."},
}};

}  // namespace

bool failEdit(EditFailure failure, VLMError* error) {
    return fail(errorTexts, static_cast<int>(failure), error);
}

}  // namespace velamo
