#pragma once

#include <functional>

#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// What draws something into a context that is handed to it.
using Painter = std::function<void(GraphicsContext&)>;

}  // namespace velamo
