#include "velamo/platform/text/url_text.h"

namespace velamo {
namespace {

constexpr std::string_view hexadecimal = "0123456789ABCDEF";
constexpr std::string_view fileScheme = "file:";

bool standsForItself(char c) noexcept {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter || (c >= '0' && c <= '9') || std::string_view("-._~/").find(c) != std::string_view::npos;
}

int digitOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// Nothing when a percent sign does not introduce a byte.
std::optional<std::string> withoutPercents(std::string_view text) {
    std::string result;
    for (; !text.empty(); text.remove_prefix(1)) {
        if (text.front() != '%') {
            result += text.front();
            continue;
        }
        const int high = text.size() > 2 ? digitOf(text[1]) : -1;
        const int low = text.size() > 2 ? digitOf(text[2]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        text.remove_prefix(2);
    }
    return result;
}

bool hasScheme(std::string_view text) {
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && text.find('/') > colon;
}

/// The path of a URL of this machine's files, still percent-encoded; nothing for another URL.
std::optional<std::string_view> encodedPath(std::string_view url) {
    if (!url.starts_with(fileScheme)) return hasScheme(url) ? std::nullopt : std::optional(url);
    url.remove_prefix(fileScheme.size());
    for (const std::string_view host : {"//localhost/", "///"}) {
        if (url.starts_with(host)) return url.substr(host.size() - 1);
    }
    const bool isPath = url.starts_with('/') && !url.starts_with("//");
    return isPath ? std::optional(url) : std::nullopt;
}

}  // namespace

std::string locationText(const std::filesystem::path& path) {
    std::string text = path.is_absolute() ? "file://" : "";
    for (const char c : path.native()) {
        if (standsForItself(c)) {
            text += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        text.append(1, '%').append(1, hexadecimal[byte >> 4]).append(1, hexadecimal[byte & 0x0F]);
    }
    return text;
}

std::optional<std::filesystem::path> pathOfLocation(std::string_view url) {
    const auto encoded = encodedPath(url);
    const auto path = encoded ? withoutPercents(*encoded) : std::nullopt;
    if (!path || path->find('\0') != std::string::npos) return std::nullopt;
    return std::filesystem::path(*path);
}

}  // namespace velamo
