#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velamo {

/// The user's languages, best first, from LANGUAGE (when the locale is not "C"), LC_ALL, LC_MESSAGES and LANG: the lower-case
/// language codes such as "de". English closes the list.
[[nodiscard]] std::vector<std::string> languagesOfUser();

/// The name of the locale that numbers are written in, from LC_ALL, LC_NUMERIC and LANG, such as "de_DE"; "en_US_POSIX" for "C" and
/// for none.
[[nodiscard]] std::string numberLocaleOfUser();

/// The folders that may hold resources, best first: $VELAMO_RESOURCES, then beside the program or library that holds this
/// code (a bundle's and an installation's layout), then the source tree.
[[nodiscard]] std::vector<std::filesystem::path> resourceFolders();

/// A table of texts by key, read from a ".strings" file: `"key" = "text";` with /* */ and // comments, UTF-8.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// The entries of a ".strings" text up to its end or its first damaged entry; no entry when it is not there at all.
[[nodiscard]] StringTable parseStringTable(std::string_view text);

/// Finds and reads resources in given folders for given languages. What was read stays for the life of the object and does not change;
/// a missing or damaged resource counts as empty. Safe to use from many threads.
class Resources {
public:
    Resources(std::vector<std::filesystem::path> folders, std::vector<std::string> languages);
    ~Resources();
    Resources(const Resources&) = delete;
    Resources& operator=(const Resources&) = delete;

    /// The resources of this process: resourceFolders() in languagesOfUser(), as found on first use.
    static const Resources& ofProcess();

    /// The text of `key` in the table (the file "<language>.lproj/<table>.strings") of the first language that has the
    /// key, or `fallback`. A table whose name is no plain file name is empty.
    [[nodiscard]] std::string text(std::string_view key, std::string_view table, std::string_view fallback) const;

    /// The path of the first "<folder>/<name>" that is a regular file, or an empty path.
    [[nodiscard]] std::filesystem::path find(const std::filesystem::path& name) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The text of `key` in the table of the process's resources, or `fallback`.
[[nodiscard]] std::string localizedText(std::string_view key, std::string_view table, std::string_view fallback);

}  // namespace velamo
