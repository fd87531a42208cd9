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

/// A thread maker's palette, read from a colour-list file: UTF-8 text, a header line, then a line for each colour with
/// index, red, green, blue (fractions 0.0 to 1.0), a fourth number and the key. Space, tab, comma and carriage return
/// separate. The index and the fourth number are not used; a line that lacks a field is skipped.
class VELAMO_API VLMColorList {
public:
    /// An empty palette.
    VLMColorList() = default;
    /// The palette in the file; a missing or unreadable file gives an empty one, and one that the system could not read
    /// this time is a std::system_error. The name is for the caller's own sake.
    [[nodiscard]] static VLMColorList initWithNamefromFile(std::string_view name, const std::filesystem::path& file);

    /// The keys in no particular order (here: in file order).
    [[nodiscard]] const std::vector<std::string>& allKeys() const noexcept { return orderedKeys_; }
    /// The keys in file order; a key that occurs twice is listed twice.
    [[nodiscard]] const std::vector<std::string>& allSortedKeys() const noexcept { return orderedKeys_; }
    /// The colour of the key, or null. Of a key that occurs twice, the later line counts. Owned by the list.
    [[nodiscard]] const VLMColor* colorWithKey(std::string_view key) const noexcept;

private:
    std::map<std::string, VLMColor, std::less<>> colorList_;
    std::vector<std::string> orderedKeys_;
};

/// The palette resource "<name>.clr/<name>.clr", read once per process; empty when there is none. Null when the name
/// cannot be that of a resource at all (empty, or leading to another folder).
[[nodiscard]] VELAMO_API std::shared_ptr<const VLMColorList> paletteNamed(const std::string& name);

}  // namespace velamo
