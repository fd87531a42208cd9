#include "velamo/platform/text/resources.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <system_error>

#include "velamo/platform/system/file_state.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/shared_module.h"
#include "velamo/platform/system/user.h"
#include "velamo/platform/text/string_table.h"

namespace velamo {
namespace fs = std::filesystem;
namespace {

/// The table in each language that has it, best first.
using Translations = std::vector<StringTable>;

bool isPlainFileName(std::string_view name) noexcept {
    constexpr std::string_view separators("/\0", 2);
    return !name.empty() && name.find_first_of(separators) == std::string_view::npos;
}

bool staysInside(const fs::path& name) {
    const bool hasEnd = name.native().find('\0') != std::string::npos;
    return !hasEnd && name.is_relative() && std::find(name.begin(), name.end(), "..") == name.end();
}

StringTable readTable(const fs::path& file) {
    const auto bytes = readWholeFile(file);
    return parseStringTable({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::vector<fs::path> resourceFoldersBeside(const fs::path& folder) {
    std::vector<fs::path> folders;
    for (const char* place : {"resources",
                              "../Resources",                        // a bundle's Contents/MacOS
                              "../share/velamo/resources",           // bin, lib
                              "../../share/velamo/resources",        // lib/velamo, lib/<machine>
                              "../../../share/velamo/resources"}) {  // lib/<machine>/velamo
        folders.push_back((folder / place).lexically_normal());
    }
    return folders;
}

std::vector<fs::path> resourceFolders() {
    std::vector<fs::path> folders;
    if (const auto named = processEnvironment("VELAMO_RESOURCES"); named && !named->empty())
        folders.emplace_back(*named);
    if (const fs::path object = pathOfThisModule(); !object.empty()) {
        const auto beside = resourceFoldersBeside(object.parent_path());
        folders.insert(folders.end(), beside.begin(), beside.end());
    }
    return folders;
}

struct Resources::State {
    std::vector<fs::path> folders;
    std::vector<std::string> languages;
    std::mutex mutex;
    /// By name, and only what exists, so that odd names from files leave nothing behind. An entry never changes or
    /// goes.
    std::map<std::string, Translations, std::less<>> tables;

    fs::path find(const fs::path& name) const {
        if (!staysInside(name)) return {};
        for (const fs::path& folder : folders) {
            std::error_code error;
            fs::path file = folder / name;
            const FileState state = stateOfFile(file, error);
            if (!error && state.kind == FileKind::regular) return file;
            if (error && !isAbsence(error)) throw std::system_error(error);
        }
        return {};
    }

    Translations read(std::string_view name) const {
        Translations translations;
        for (const std::string& language : languages) {
            const fs::path file = find(fs::path(language + ".lproj") / (std::string(name) + ".strings"));
            if (!file.empty()) translations.push_back(readTable(file));
        }
        return translations;
    }

    const Translations& table(std::string_view name) {
        static const Translations none;
        const std::lock_guard lock(mutex);
        if (const auto found = tables.find(name); found != tables.end()) return found->second;
        Translations translations = read(name);
        return translations.empty() ? none : tables.emplace(name, std::move(translations)).first->second;
    }
};

Resources::Resources(std::vector<fs::path> folders, std::vector<std::string> languages) : state_(new State) {
    state_->folders = std::move(folders);
    state_->languages = std::move(languages);
}

Resources::~Resources() = default;

const Resources& Resources::ofProcess() {
    static const Resources resources(resourceFolders(), languagesOfUser());
    return resources;
}

std::string Resources::text(std::string_view key, std::string_view table, std::string_view fallback) const {
    if (!isPlainFileName(table)) return std::string(fallback);
    for (const StringTable& translation : state_->table(table)) {
        if (const auto found = translation.find(key); found != translation.end()) return found->second;
    }
    return std::string(fallback);
}

fs::path Resources::find(const fs::path& name) const {
    return state_->find(name);
}

std::string localizedText(std::string_view key, std::string_view table, std::string_view fallback) {
    return Resources::ofProcess().text(key, table, fallback);
}

}  // namespace velamo
