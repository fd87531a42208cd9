#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "velamo/api.h"
#include "velamo/model/color.h"
#include "velamo/model/list.h"
#include "velamo/model/shared_value.h"
#include "velamo/platform/text/optional_text.h"

namespace velamo {

/// A thread, which sews one colour block of a design. Texts may be absent; a colour of no palette has an empty key and
/// palette. A thread takes 24 bytes as long as it shares its colour and texts, as copies do until one of them is
/// changed. References to its colour and texts are valid until then.
class VELAMO_API VLMThread {
public:
    /// Makes the thread that decoding starts from: black, without texts, length and tension 0, not shown.
    VLMThread() = default;
    /// Makes a thread of the five values, with length 0 and tension 13, shown.
    [[nodiscard]] static VLMThread initWithColorandNameforKeyofPalettewithName(VLMColor color, Text name, Text key,
                                                                               Text palette, Text paletteName);
    /// Makes the thread with the given key of a palette; its name is in the user's language. If the palette lacks the
    /// key, or if there is no such palette, makes a visible, neutral thread: grey, with the requested key and palette,
    /// the name of an individual colour and an empty paletteName. May throw std::system_error when the palette or the
    /// names cannot be read.
    [[nodiscard]] static VLMThread initWithKeyofPalette(const Text& key, const Text& palette);

    /// Recolours the thread to the colour of the palette that is nearest to `color`, or to `color` itself when
    /// `palette` is "". Keys that begin with "x" are only chosen for a thread that already belongs to the palette. A
    /// palette without colours gives grey with an empty key and name. Returns false, leaves the thread unchanged and
    /// writes a line to the system's log when `palette` cannot be a palette's name (see paletteNamed). Throws like
    /// initWithKeyofPalette.
    bool changeToColorinPalette(const VLMColor& color, const std::string& palette);

    [[nodiscard]] const VLMColor& color() const noexcept { return look().color; }
    /// The display name of the colour.
    [[nodiscard]] const Text& name() const noexcept { return look().name; }
    /// The colour's key in its palette, such as the maker's thread number.
    [[nodiscard]] const Text& key() const noexcept { return look().key; }
    /// The name of the palette; "Undefined" for threads of files that carry no colours.
    [[nodiscard]] const Text& palette() const noexcept { return look().palette; }
    /// The display name of the palette.
    [[nodiscard]] const Text& paletteName() const noexcept { return look().paletteName; }
    /// Length and tension are only kept: the library neither computes them nor gives them a unit.
    [[nodiscard]] float length() const noexcept { return length_; }
    [[nodiscard]] std::int32_t tension() const noexcept { return tension_; }
    /// Whether the thread's block is drawn in full colour.
    [[nodiscard]] bool isShown() const noexcept { return isShown_; }
    void setColor(const VLMColor& color) { change(&Look::color, color); }
    void setName(Text name) { change(&Look::name, std::move(name)); }
    void setKey(Text key) { change(&Look::key, std::move(key)); }
    void setPalette(Text palette) { change(&Look::palette, std::move(palette)); }
    void setPaletteName(Text paletteName) { change(&Look::paletteName, std::move(paletteName)); }
    void setLength(float length) noexcept { length_ = length; }
    void setTension(std::int32_t tension) noexcept { tension_ = tension; }
    void setIsShown(bool isShown) noexcept { isShown_ = isShown; }
    void addLength(float length) noexcept { length_ += length; }

    /// Returns a line for logs with all values.
    [[nodiscard]] std::string description() const;
    [[nodiscard]] VLMThread copy() const { return *this; }
    /// Whether both threads share one colour and one set of texts, rather than just equal ones: one is a copy of the
    /// other, or both are copies of a third.
    [[nodiscard]] bool sharesLookWith(const VLMThread& other) const noexcept {
        return look_.get() == other.look_.get();
    }

    friend VELAMO_API bool operator==(const VLMThread& one, const VLMThread& other) noexcept;

private:
    struct Look {
        VLMColor color = VLMColor::initWithRedgreenblue(0, 0, 0);
        Text name;
        Text key;
        Text palette;
        Text paletteName;
        friend bool operator==(const Look&, const Look&) = default;
    };
    [[nodiscard]] const Look& look() const noexcept;
    template <class Part>
    void change(Part Look::*part, Part value) {
        Look changed = look();
        changed.*part = std::move(value);
        look_ = SharedValue<Look>(std::move(changed));
    }

    // Shared with the copies of this thread: files may change between a few threads a million times. None: all texts
    // are absent, and the colour is black.
    SharedValue<Look> look_;
    float length_ = 0;
    std::int32_t tension_ = 0;
    bool isShown_ = false;
};
static_assert(sizeof(VLMThread) <= 24);

using ThreadList = SharedList<VLMThread>;

}  // namespace velamo
