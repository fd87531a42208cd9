#pragma once

#include <iosfwd>

#include "cli/json.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/model/design.h"

namespace velamo {

/// {"domain", "code", "message"}
[[nodiscard]] Json errorJson(const VLMError& error);

/// Puts in what every indexer stores: width and height in millimetres, stitches and colors.
void putAttributes(Json& json, const DesignAttributes& attributes);

/// The hoop with its eight values; null without one.
[[nodiscard]] Json hoopJson(const HoopHandle& hoop);

/// Writes the figures that are derived from a design as a JSON object; its description, with a line for each thread, a
/// piece at a time.
void writeStatistics(std::ostream& out, const VLMDesign& design);

/// Writes the whole design as a JSON object, one member a line. `error`: why its import failed, or null. Stitches and
/// threads are written one by one, so that a large design takes no memory beside its own.
void writeDesignJson(std::ostream& out, const VLMDesign& design, const VLMError* error);

}  // namespace velamo
