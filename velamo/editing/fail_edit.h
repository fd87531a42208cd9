#pragma once

#include "velamo/editing/edit_error.h"
#include "velamo/model/error.h"
#include "velamo/private_api.h"

namespace velamo {

/// Fills the slot, if there is one. Always false.
VELAMO_PRIVATE_API bool failEdit(EditFailure failure, VLMError* error);

}  // namespace velamo
