#include "velamo/model/color_list.h"

#include <array>
#include <mutex>
#include <optional>

#include "velamo/platform/system/files.h"
#include "velamo/platform/text/plain_number.h"
#include "velamo/platform/text/resources.h"

namespace velamo {
namespace {

constexpr std::string_view separators = "\n\r\t ,";

/// Takes the next run of characters between separators; empty at the end of the line.
std::string_view takeField(std::string_view& line) noexcept {
    line.remove_prefix(std::min(line.find_first_not_of(separators), line.size()));
    const auto field = line.substr(0, line.find_first_of(separators));
    line.remove_prefix(field.size());
    return field;
}

/// Scans a number from the line as far as it reaches; the next field may follow without a separator.
template <class Number>
std::optional<Number> takeNumber(std::string_view& line) noexcept {
    line.remove_prefix(std::min(line.find_first_not_of(separators), line.size()));
    if (line.substr(0, 1) == "+") line.remove_prefix(1);
    const auto number = scanPlainNumber<Number>(line);
    if (!number) return std::nullopt;
    line.remove_prefix(number->length);
    return number->fits ? number->value : 0;
}

struct Entry {
    std::string key;
    VLMColor color;
};

std::optional<Entry> entryOf(std::string_view line) {
    const auto index = takeNumber<std::int64_t>(line);
    const auto red = takeNumber<float>(line);
    const auto green = takeNumber<float>(line);
    const auto blue = takeNumber<float>(line);
    const auto fourth = takeNumber<float>(line);
    const auto key = takeField(line);
    if (!index || !red || !green || !blue || !fourth || key.empty()) return std::nullopt;
    return Entry{std::string(key), VLMColor::initWithRedgreenblue(*red, *green, *blue)};
}

std::string_view takeLine(std::string_view& text) noexcept {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

bool isResourceName(std::string_view name) noexcept {
    return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos && name.find('\0') == name.npos;
}

/// The palettes that this process has read so far.
class PaletteShelf {
public:
    std::shared_ptr<const VLMColorList> palette(const std::string& name) {
        const std::scoped_lock lock(mutex_);
        auto& palette = palettes_[name];
        if (!palette) palette = std::make_shared<const VLMColorList>(read(name));
        return palette;
    }

private:
    static VLMColorList read(const std::string& name) {
        const std::string file = name + ".clr";
        return VLMColorList::initWithNamefromFile(name,
                                                  Resources::ofProcess().find(std::filesystem::path(file) / file));
    }

    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const VLMColorList>> palettes_;
};

}  // namespace

VLMColorList VLMColorList::initWithNamefromFile(std::string_view, const std::filesystem::path& file) {
    const auto bytes = readWholeFile(file);
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    VLMColorList list;
    takeLine(text);  // the header
    while (!text.empty()) {
        auto entry = entryOf(takeLine(text));
        if (!entry) continue;
        list.orderedKeys_.push_back(entry->key);
        list.colorList_.insert_or_assign(std::move(entry->key), entry->color);
    }
    return list;
}

const VLMColor* VLMColorList::colorWithKey(std::string_view key) const noexcept {
    const auto found = colorList_.find(key);
    return found == colorList_.end() ? nullptr : &found->second;
}

std::shared_ptr<const VLMColorList> paletteNamed(const std::string& name) {
    static PaletteShelf shelf;
    return isResourceName(name) ? shelf.palette(name) : nullptr;
}

}  // namespace velamo
