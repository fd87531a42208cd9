#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/color_words.h"
#include "catalogue/number_range.h"
#include "catalogue/sewing_field.h"
#include "reading/design_facts.h"
#include "reading/design_failure.h"
#include "velamo/platform/hashing/sha256.h"

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
    std::optional<NumberRange> blocks = {};            // of colour, which sew
    std::vector<std::string> formats = {};             // one of them, such as "DST"; in any case
    std::optional<SewingField> field = {};             // the design fits into it, lengthwise or crosswise
    std::vector<ColorTest> has = {};                   // each is true of one of the threads that sew
    std::optional<std::filesystem::path> folder = {};  // absolute; the design lies in it or below
    bool isBroken = false;                             // the files that could not be read, instead of designs
    SortKey sortKey = SortKey::name;
    bool isReversed = false;
    std::optional<std::int64_t> limit = {};  // at most so many, the first in order
    std::int64_t offset = 0;                 // without so many that come before them
    bool withThreads = false;                // tells the threads of each
};

struct FoundDesign {
    std::int64_t id = 0;  // lasts as long as the file is in the catalogue, and is never another's
    std::filesystem::path file;
    DesignFacts facts;  // threads only where they were asked for
    std::optional<Sha256> hash;
    std::int64_t modified = 0;             // nanoseconds since the start of 1970
    std::optional<DesignFailure> failure;  // of a broken one, whose facts are zero
    std::optional<std::uint64_t> device;   // the number of the disk on which it was
    bool isAway = false;                   // the disk is not there now
};

/// The designs in the database that fulfil the request, in its order; equal ones by name and place. Whether they are
/// away is for the caller to find out.
[[nodiscard]] std::vector<FoundDesign> searchDesigns(const Database& database, const SearchRequest& request);

/// How many there are without limit and offset.
[[nodiscard]] std::int64_t countDesigns(const Database& database, const SearchRequest& request);

}  // namespace velamo
