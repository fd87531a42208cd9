#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/color.h"

namespace velamo {

/// A thread maker's palette, read from a colour-list file: UTF-8 text with a header line, then a line for each colour
/// with an index, red, green and blue (fractions, 0.0 to 1.0), a fourth number and the key. Fields are separated by
/// spaces, tabs, commas and carriage returns. The index and the fourth number are not used; a line that lacks a field
/// is skipped.
class VELAMO_API VLMColorList {
public:
    /// An empty palette.
    VLMColorList() = default;
    /// Reads the palette in the file; `name` is not used. A file that is missing or that the user may not read gives an
    /// empty palette. Throws std::system_error when the system fails to read an existing file, and std::bad_alloc.
    [[nodiscard]] static VLMColorList initWithNamefromFile(std::string_view name, const std::filesystem::path& file);

    /// Returns the keys in no particular order (at present in file order).
    [[nodiscard]] const std::vector<std::string>& allKeys() const noexcept { return orderedKeys_; }
    /// Returns the keys in file order; a key that occurs twice is listed twice.
    [[nodiscard]] const std::vector<std::string>& allSortedKeys() const noexcept { return orderedKeys_; }
    /// Returns the colour of the key, or null when the palette lacks the key. If the key occurs twice, the later line
    /// counts. The list owns the colour.
    [[nodiscard]] const VLMColor* colorWithKey(std::string_view key) const noexcept;

private:
    std::map<std::string, VLMColor, std::less<>> colorList_;
    std::vector<std::string> orderedKeys_;
};

/// Returns the palette in the resource "<name>.clr/<name>.clr", which is read once per process; it is empty when there
/// is no such resource. Returns null when `name` cannot be a resource's name (empty, ".", "..", or with a slash or a
/// NUL). Throws like initWithNamefromFile. Any number of threads may call it at the same time.
[[nodiscard]] VELAMO_API std::shared_ptr<const VLMColorList> paletteNamed(const std::string& name);

}  // namespace velamo
