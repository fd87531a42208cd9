#include "velamo/platform/system/user.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

namespace velamo {
namespace {

constexpr std::string_view lastLanguage = "en";
constexpr std::string_view localeOfMachines = "en_US_POSIX";

bool isLetter(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isOfLocaleName(char character) noexcept {
    return isLetter(character) || (character >= '0' && character <= '9') || character == '_' || character == '-';
}

/// The locale in the first of the variables that is not empty, without charset and variant: "de_DE" of
/// "de_DE.UTF-8@euro".
std::string localeOf(const Environment& environment, std::initializer_list<const char*> variables) {
    for (const char* variable : variables) {
        const std::string value = environment(variable).value_or("");
        if (!value.empty()) return value.substr(0, value.find_first_of(".@"));
    }
    return "C";
}

bool isOfMachines(std::string_view locale) noexcept {
    return locale == "C" || locale == "POSIX";
}

/// "de" of "de_AT.UTF-8"; nothing when the locale does not begin with a language's code.
std::string languageOf(std::string_view locale) {
    std::string language(locale.substr(0, locale.find_first_of("_-.@")));
    const bool isCode =
        (language.size() == 2 || language.size() == 3) && std::all_of(language.begin(), language.end(), isLetter);
    if (!isCode) return {};
    std::transform(language.begin(), language.end(), language.begin(),
                   [](char letter) { return static_cast<char>(letter | 0x20); });
    return language;
}

void addLanguage(std::vector<std::string>& languages, std::string language) {
    if (language.empty() || std::find(languages.begin(), languages.end(), language) != languages.end()) return;
    languages.push_back(std::move(language));
}

void addLanguages(std::vector<std::string>& languages, std::string_view colonList) {
    while (!colonList.empty()) {
        const auto length = std::min(colonList.find(':'), colonList.size());
        addLanguage(languages, languageOf(colonList.substr(0, length)));
        colonList.remove_prefix(std::min(length + 1, colonList.size()));
    }
}

}  // namespace

std::optional<std::string> processEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::vector<std::string> languagesOfUser(const Environment& environment) {
    const std::string locale = localeOf(environment, {"LC_ALL", "LC_MESSAGES", "LANG"});
    std::vector<std::string> languages;
    if (!isOfMachines(locale)) {
        addLanguages(languages, environment("LANGUAGE").value_or(""));
        addLanguage(languages, languageOf(locale));
    }
    addLanguage(languages, std::string(lastLanguage));
    return languages;
}

std::string numberLocaleOfUser(const Environment& environment) {
    constexpr std::size_t longestName = 64;
    std::string locale = localeOf(environment, {"LC_ALL", "LC_NUMERIC", "LANG"});
    const bool isName = !languageOf(locale).empty() && locale.size() <= longestName &&
                        std::all_of(locale.begin(), locale.end(), isOfLocaleName);
    return isName ? locale : std::string(localeOfMachines);
}

void adoptUserLanguage() noexcept {
    // Numbers stay as the C locale writes them: JSON depends on it.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
}

std::filesystem::path homeFolder() {
    if (const auto home = processEnvironment("HOME"); home && !home->empty()) return *home;
    std::array<char, 16384> texts{};
    passwd entry{};
    passwd* found = nullptr;
    const bool isKnown = getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found) == 0 && found != nullptr;
    return isKnown && found->pw_dir != nullptr ? std::filesystem::path(found->pw_dir) : std::filesystem::path();
}

}  // namespace velamo
