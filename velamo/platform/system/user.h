#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "velamo/private_api.h"

namespace velamo {

/// Gives the value of an environment variable, or nullopt when it is not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;

/// The environment of this process.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<std::string> processEnvironment(const char* name);

/// The user's languages, best first and each once, as lower-case codes such as "de". The first of LC_ALL, LC_MESSAGES
/// and LANG that is not empty names the locale; the list LANGUAGE goes before it, but only in a locale other than "C".
/// English closes the list.
[[nodiscard]] std::vector<std::string> languagesOfUser(const Environment& environment = processEnvironment);

/// The name of the locale that numbers are written in, such as "de_DE", from the first of LC_ALL, LC_NUMERIC and LANG
/// that is not empty; "en_US_POSIX" for "C", for none, and for what is no locale's name.
[[nodiscard]] VELAMO_PRIVATE_API std::string numberLocaleOfUser(const Environment& environment = processEnvironment);

/// Takes the system's own messages from the user's language. Once, before other threads start.
VELAMO_PRIVATE_API void adoptUserLanguage() noexcept;

/// The user's home folder: $HOME, else what the system's user database says; empty when neither knows one.
[[nodiscard]] VELAMO_PRIVATE_API std::filesystem::path homeFolder();

}  // namespace velamo
