#include "velamo/model/thread_codes.h"

#include <algorithm>
#include <array>

#include "velamo/model/design.h"

namespace velamo {
namespace {

/// The key of each Janome index from 0.
constexpr std::array<std::string_view, 79> janomeCodes{
    "x9",  "002", "001", "204", "203", "219", "226", "217", "208", "201", "225", "214", "207", "003", "205", "209",
    "210", "211", "212", "213", "215", "216", "218", "220", "221", "227", "228", "229", "230", "231", "232", "233",
    "234", "235", "236", "237", "238", "239", "240", "241", "242", "243", "244", "245", "246", "247", "248", "249",
    "250", "251", "252", "253", "254", "255", "256", "257", "258", "259", "260", "261", "262", "263", "264", "265",
    "266", "267", "268", "269", "270", "271", "272", "273", "274", "275", "202", "206", "222", "223", "224",
};

/// The key of each Brother index; there is no index 0.
constexpr std::array<std::string_view, 65> brotherCodes{
    "",    "007", "405", "534", "070", "800", "337", "620", "810", "612", "502", "214", "208",
    "205", "513", "328", "005", "330", "010", "704", "900", "406", "869", "707", "058", "086",
    "323", "079", "030", "001", "613", "542", "019", "126", "812", "348", "339", "509", "415",
    "817", "399", "517", "307", "085", "808", "804", "607", "843", "807", "333", "519", "107",
    "017", "209", "507", "614", "515", "124", "206", "420", "202", "027", "x9",  "x8",  "x7",
};

struct IndexedCode {
    std::int32_t index;
    std::string_view code;
};
/// Further indices that stand for a key in the files of some programs.
constexpr std::array<IndexedCode, 7> brotherAliases{{
    {66, "007"},
    {67, "405"},
    {69, "515"},
    {71, "513"},
    {75, "058"},
    {79, "019"},
    {92, "086"},
}};

/// The keys by index as far as a byte reaches; empty where there is none.
constexpr auto brotherReadCodes = [] {
    std::array<std::string_view, 256> codes{};
    for (std::size_t index = 0; index < brotherCodes.size(); ++index) codes[index] = brotherCodes[index];
    for (const IndexedCode& alias : brotherAliases) codes[static_cast<std::size_t>(alias.index)] = alias.code;
    return codes;
}();

/// A table turned round: the entries in the order of their keys.
template <std::size_t Size>
constexpr std::array<IndexedCode, Size> sortedByCode(const std::array<std::string_view, Size>& codes) {
    std::array<IndexedCode, Size> sorted{};
    for (std::size_t index = 0; index < Size; ++index) sorted[index] = {static_cast<std::int32_t>(index), codes[index]};
    std::sort(sorted.begin(), sorted.end(),
              [](const IndexedCode& one, const IndexedCode& other) { return one.code < other.code; });
    return sorted;
}
constexpr auto janomeIndices = sortedByCode(janomeCodes);
constexpr auto brotherIndices = sortedByCode(brotherCodes);

template <std::size_t Size>
std::optional<std::string_view> codeAt(const std::array<std::string_view, Size>& codes, std::int64_t index) noexcept {
    if (index < 0 || index >= static_cast<std::int64_t>(Size) || codes[static_cast<std::size_t>(index)].empty())
        return std::nullopt;
    return codes[static_cast<std::size_t>(index)];
}

template <std::size_t Size>
std::optional<std::int32_t> indexOf(const std::array<IndexedCode, Size>& sorted, std::string_view code) noexcept {
    const auto found =
        std::lower_bound(sorted.begin(), sorted.end(), code,
                         [](const IndexedCode& entry, std::string_view wanted) { return entry.code < wanted; });
    if (code.empty() || found == sorted.end() || found->code != code) return std::nullopt;
    return found->index;
}

template <std::size_t Size>
std::map<std::int32_t, std::string> mapOf(const std::array<std::string_view, Size>& codes) {
    std::map<std::int32_t, std::string> map;
    for (std::size_t index = 0; index < Size; ++index)
        if (!codes[index].empty()) map.emplace(static_cast<std::int32_t>(index), codes[index]);
    return map;
}

}  // namespace

std::optional<std::string_view> janomeCodeOfIndex(std::int64_t index) noexcept {
    return codeAt(janomeCodes, index);
}

std::optional<std::int32_t> janomeIndexOfCode(std::string_view code) noexcept {
    return indexOf(janomeIndices, code);
}

std::map<std::int32_t, std::string> VLMDesign::janomeColorCodes() {
    return mapOf(janomeCodes);
}

std::optional<std::string_view> brotherCodeOfIndex(std::int64_t index) noexcept {
    return codeAt(brotherReadCodes, index);
}

std::optional<std::int32_t> brotherIndexOfCode(std::string_view code) noexcept {
    return indexOf(brotherIndices, code);
}

std::map<std::int32_t, std::string> VLMDesign::brotherColorCodes() {
    return mapOf(brotherCodes);
}

std::map<std::int32_t, std::string> VLMDesign::brotherReadColorCodes() {
    return mapOf(brotherReadCodes);
}

}  // namespace velamo
