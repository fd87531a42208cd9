#pragma once

#include <functional>

#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// Draws something into the context that it is given.
using Painter = std::function<void(GraphicsContext&)>;

}  // namespace velamo
