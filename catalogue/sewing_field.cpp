#include "catalogue/sewing_field.h"

#include <string>

#include "velamo/model/design.h"
#include "velamo/platform/text/plain_number.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

std::optional<double> parseSide(std::string_view text) {
    const bool isPlain = text.find_first_not_of("0123456789.") == text.npos;
    const auto side = isPlain ? plainNumber<double>(text) : std::nullopt;
    return side > 0.0 ? side : std::nullopt;
}

std::optional<SewingField> parseSize(std::string_view text) {
    for (const std::string_view sign : {std::string_view("x"), std::string_view("X"), std::string_view("×")}) {
        const auto place = text.find(sign);
        if (place == text.npos) continue;
        const auto width = parseSide(text.substr(0, place));
        const auto height = parseSide(text.substr(place + sign.size()));
        if (width && height) return SewingField{*width, *height};
    }
    return std::nullopt;
}

/// Whether the name is the text, or the text stands between slashes in it.
bool isNamed(const std::string& names, const std::string& text) {
    return names == text || (text.find('/') == text.npos && ('/' + names + '/').find('/' + text + '/') != names.npos);
}

bool isMeant(const VLMHoop& hoop, const std::string& folded) {
    const std::string vendor = foldedForSearch(hoop.vendor().value_or("") + ' ');
    if (!folded.starts_with(vendor)) return false;
    const std::string name = folded.substr(vendor.size());
    return !name.empty() &&
           (isNamed(foldedForSearch(hoop.name().value_or("")), name) || name == std::to_string(hoop.code()));
}

}  // namespace

std::optional<SewingField> parseField(std::string_view text) {
    if (const auto size = parseSize(text)) return size;
    const std::string folded = foldedForSearch(text);
    for (const HoopHandle& hoop : VLMDesign::hoops())
        if (isMeant(*hoop, folded)) return SewingField{double(hoop->width()), double(hoop->height())};
    return std::nullopt;
}

}  // namespace velamo
