#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/design_reader.h"
#include "catalogue/number_range.h"

namespace velamo {

class Database;

enum class SortKey : std::uint8_t { name, width, height, stitches, colors, date };

/// What to look for. An absent condition lets every design pass.
struct SearchRequest {
    std::vector<std::string> words = {};     // each must be in the file's or its folders' names, in any case
    std::optional<NumberRange> width = {};   // millimetres
    std::optional<NumberRange> height = {};  // millimetres
    std::optional<NumberRange> stitches = {};
    std::optional<NumberRange> colors = {};
    std::optional<std::filesystem::path> folder = {};  // absolute; the design lies in it or below
    bool isBroken = false;                             // the files that could not be read, instead of designs
    SortKey sortKey = SortKey::name;
    bool isReversed = false;
    std::optional<std::int64_t> limit = {};  // at most so many, the first in order
};

struct FoundDesign {
    std::filesystem::path file;
    DesignAttributes attributes;
    std::int64_t modified = 0;             // nanoseconds since the start of 1970
    std::optional<DesignFailure> failure;  // of a broken one, whose attributes are zero
};

/// The designs in the database that fulfil the request, in its order; equal ones by name and place.
[[nodiscard]] std::vector<FoundDesign> searchDesigns(const Database& database, const SearchRequest& request);

}  // namespace velamo
