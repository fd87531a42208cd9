#include "formats/format.h"

#include <algorithm>
#include <array>

#include "formats/dst.h"
#include "formats/exp.h"
#include "formats/jef.h"
#include "formats/jpx.h"
#include "formats/ksm.h"
#include "formats/pcs.h"
#include "formats/pes.h"
#include "formats/sew.h"
#include "formats/vp3.h"
#include "platform/text.h"

namespace velamo {
namespace {

constexpr std::array<Format, 13> formats{{
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
}};

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

}  // namespace velamo
