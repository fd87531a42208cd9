#include "formats/format.h"

#include <algorithm>
#include <array>

#include "formats/dst.h"

namespace velamo {
namespace {

constexpr std::array<Format, 13> formats{{
    {"jef", "JEF", nullptr},
    {"jef+", "JEF+", nullptr},
    {"jpx", "JPX", nullptr},
    {"pes", "PES", nullptr},
    {"pec", "PEC", nullptr},
    {"sew", "SEW", nullptr},
    {"exp", "EXP", nullptr},
    {"dst", "DST", importDstDesignFromURLerror},
    {"vp3", "VP3", nullptr},
    {"ksm", "KSM", nullptr},
    {"pcs", "PCS", nullptr},
    {"pcd", "PCD", nullptr},
    {"pcq", "PCQ", nullptr},
}};

constexpr char lowerCase(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

std::span<const Format> allFormats() noexcept {
    return formats;
}

const Format* formatWithExtension(std::string_view extension) noexcept {
    const auto isEqual = [](char one, char other) { return lowerCase(one) == other; };
    const auto found = std::find_if(formats.begin(), formats.end(), [&](const Format& format) {
        return std::equal(extension.begin(), extension.end(), format.extension.begin(), format.extension.end(),
                          isEqual);
    });
    return found == formats.end() ? nullptr : &*found;
}

std::string extensionOf(const std::filesystem::path& url) {
    const std::string extension = url.extension().native();
    return extension.empty() ? extension : extension.substr(1);
}

}  // namespace velamo
