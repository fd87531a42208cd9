#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velamo {

/// The bytes of a file name of unknown origin as text in UTF-8, with letters composed. Archives seldom say how names
/// are written: what is UTF-8 is taken for that, else for Shift-JIS, code page 437 (as old zip programs write),
/// Windows-1252 or what else the bytes look most like. Whatever they are, text comes out. May throw std::bad_alloc.
[[nodiscard]] std::string textOfName(std::string_view bytes);

/// A name from an archive as a location: its parts with one slash between them. Nothing where it is absolute or has a
/// part "..", so that it would lead out of the archive.
[[nodiscard]] std::optional<std::string> locationOf(std::string_view name);

/// Whether a location is left out of what an archive shows: what systems put beside files for themselves ("__MACOSX"),
/// and hidden files and folders.
[[nodiscard]] bool isHidden(std::string_view location) noexcept;

}  // namespace velamo
