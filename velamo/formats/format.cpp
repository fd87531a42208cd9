#include "velamo/formats/format.h"

#include <algorithm>
#include <array>

#include "velamo/formats/dst.h"
#include "velamo/formats/exp.h"
#include "velamo/formats/jef.h"
#include "velamo/formats/jpx.h"
#include "velamo/formats/ksm.h"
#include "velamo/formats/pcs.h"
#include "velamo/formats/pes.h"
#include "velamo/formats/sew.h"
#include "velamo/formats/vp3.h"
#include "velamo/model/written_types.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr auto formats = std::to_array<Format>({
    {"jef", "JEF", importJefDesignFromURLerror, exportJefDesignToURLerror},
    {"jef+", "JEF+", importJefDesignFromURLerror},
    {"jpx", "JPX", importJpxDesignFromURLerror},
    {"pes", "PES", importPesDesignFromURLerror, exportPesDesignToURLerror},
    {"pec", "PEC", importPecDesignFromURLerror, exportPecDesignToURLerror},
    {"sew", "SEW", importSewDesignFromURLerror},
    {"exp", "EXP", importExpDesignFromURLerror, exportExpDesignToURLerror},
    {"dst", "DST", importDstDesignFromURLerror, exportDstDesignToURLerror},
    {"vp3", "VP3", importVp3DesignFromURLerror},
    {"ksm", "KSM", importKsmDesignFromURLerror},
    {"pcs", "PCS", importPcxDesignFromURLerror, exportPcsDesignToURLerror},
    {"pcd", "PCD", importPcxDesignFromURLerror},
    {"pcq", "PCQ", importPcxDesignFromURLerror},
});
static_assert(std::all_of(formats.begin(), formats.end(), [](const Format& format) {
    return (format.writer != nullptr) == (writtenTypeNamed(format.type) != nullptr);
}));

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

std::filesystem::path fileNameOf(const std::filesystem::path& url) {
    return url.has_filename() ? url.filename() : url.parent_path().filename();
}

std::string extensionOf(const std::filesystem::path& url) {
    std::string extension = url.extension().native();
    if (!extension.empty()) extension.erase(0, 1);
    std::transform(extension.begin(), extension.end(), extension.begin(), lowerCase);
    return extension;
}

bool hasDesignName(const std::filesystem::path& url) {
    return formatWithExtension(extensionOf(url)) != nullptr;
}

}  // namespace velamo
