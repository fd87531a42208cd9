#include "integrations/kde/extractor.h"

#include <istream>
#include <nlohmann/json.hpp>
#include <optional>

#include "integrations/attribute_words.h"
#include "velamo/platform/text/harmless_text.h"

namespace velamo {
namespace {

using Json = nlohmann::ordered_json;

/// Several times what the longest path takes, even with all its characters escaped.
constexpr std::size_t longestRequest = 65536;

/// Nothing when the input is longer than a request can be.
std::optional<std::string> readInput(std::istream& in) {
    std::string input(longestRequest + 1, '\0');
    in.read(input.data(), static_cast<std::streamsize>(input.size()));
    input.resize(static_cast<std::size_t>(in.gcount()));
    return input.size() <= longestRequest ? std::optional(std::move(input)) : std::nullopt;
}

/// The path that the request names; nothing when it names none. A path with a zero byte would open another file.
std::optional<std::string> pathIn(const std::string& request) {
    constexpr bool throwsExceptions = false;
    const auto json = Json::parse(request, nullptr, throwsExceptions);
    if (!json.is_object() || !json.contains("path") || !json["path"].is_string()) return std::nullopt;
    auto path = json["path"].get<std::string>();
    return path.find('\0') == std::string::npos ? std::optional(std::move(path)) : std::nullopt;
}

/// Only names that KFileMetaData knows: it drops all others. Its ranges find whole numbers alone.
Json propertiesOf(const DesignAttributes& design) {
    return {{"width", nearestWhole(design.widthInMillimetres)},
            {"height", nearestWhole(design.heightInMillimetres)},
            {"description", attributesInWords(design)},
            {"typeInfo", "Image"},
            {"text", withOneDecimal(design.widthInMillimetres) + " mm " + withOneDecimal(design.heightInMillimetres) +
                         " mm " + stitchesInWords(design) + ' ' + colorsInWords(design)}};
}

ExtractorAnswer failure(const std::string& reason) {
    const Json answer{{"properties", Json::object()}, {"status", "ERROR"}, {"error", reason}};
    return {.json = harmlessJson(answer.dump())};
}

}  // namespace

ExtractorAnswer answerExtractorRequest(std::istream& in, ConfinedReader& reader) {
    const auto request = readInput(in);
    const auto path = request ? pathIn(*request) : std::nullopt;
    if (!path) return failure("The request names no file.");
    VLMError error;
    const auto design = reader.attributesOfFile(*path, &error);
    if (!design) return failure(error.message());
    const Json answer{{"properties", propertiesOf(*design)}, {"status", "OK"}, {"error", ""}};
    return {.json = harmlessJson(answer.dump()), .isDesign = true};
}

}  // namespace velamo
