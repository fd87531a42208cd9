#include "velamo/platform/archives/archive_path.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>

#include "velamo/platform/archives/member_names.h"
#include "velamo/platform/system/file_state.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::array<std::string_view, 14> archiveEndings{".zip", ".7z",       ".rar",     ".tar",  ".tar.gz",
                                                          ".tgz", ".taz",      ".tar.bz2", ".tbz2", ".tar.xz",
                                                          ".txz", ".tar.lzma", ".tar.zst", ".tzst"};

bool endsAs(std::string_view name, std::string_view ending) noexcept {
    return name.size() > ending.size() &&
           std::equal(ending.begin(), ending.end(), name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      [](char wanted, char letter) { return wanted == lowerCase(letter); });
}

}  // namespace

bool hasArchiveName(const std::filesystem::path& path) {
    const std::string name = path.filename().native();
    return std::any_of(archiveEndings.begin(), archiveEndings.end(),
                       [&](std::string_view ending) { return endsAs(name, ending); });
}

std::optional<ArchivePath> pathThroughArchive(const std::filesystem::path& path) {
    const std::string& whole = path.native();
    // Behind a regular file no path leads on, so at most one part of it is such a file.
    for (std::size_t end = whole.find('/', 1); end != whole.npos; end = whole.find('/', end + 1)) {
        const std::filesystem::path archive = whole.substr(0, end);
        if (!hasArchiveName(archive)) continue;
        std::error_code failure;
        if (stateOfFile(archive, failure).kind != FileKind::regular || failure) continue;
        auto member = locationOf("." + whole.substr(end));
        return member && !member->empty() ? std::optional(ArchivePath{archive, std::move(*member)}) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace velamo
