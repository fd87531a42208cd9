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

/// One thread, which sews one colour block of a design. Texts may be absent; a free colour has an empty key and
/// palette. 24 bytes where its colour and texts are shared, as those of copies are, until one is changed: references to
/// them last until then.
class VELAMO_API VLMThread {
public:
    /// The plain object that decoding and copying start from: black, no texts, tension 0, not shown.
    VLMThread() = default;
    /// A thread of the five values with length 0, tension 13, shown.
    [[nodiscard]] static VLMThread initWithColorandNameforKeyofPalettewithName(VLMColor color, Text name, Text key,
                                                                               Text palette, Text paletteName);
    /// The thread of a palette's key. A key that the palette lacks, or a palette that is not there, gives a grey thread
    /// with the requested key and palette, an individual-colour name and an empty palette display name: so files
    /// without colours get visible, neutral threads.
    [[nodiscard]] static VLMThread initWithKeyofPalette(const Text& key, const Text& palette);

    /// Recolours to the nearest colour of the palette, or to the free colour itself when the palette is "". Keys that
    /// begin with "x" are taken only by a thread that already belongs to the palette. An empty palette gives grey with
    /// empty key and name. False, with a line in the system's log and the thread unchanged, when the name cannot be
    /// that of a palette.
    bool changeToColorinPalette(const VLMColor& color, const std::string& palette);

    [[nodiscard]] const VLMColor& color() const noexcept { return look().color; }
    /// Display name of the colour.
    [[nodiscard]] const Text& name() const noexcept { return look().name; }
    /// The colour's key in its palette, such as the maker's thread number.
    [[nodiscard]] const Text& key() const noexcept { return look().key; }
    /// Identifier of the palette; "Undefined" for threads of files that carry no colours.
    [[nodiscard]] const Text& palette() const noexcept { return look().palette; }
    /// Display name of the palette.
    [[nodiscard]] const Text& paletteName() const noexcept { return look().paletteName; }
    [[nodiscard]] float length() const noexcept { return length_; }
    [[nodiscard]] std::int32_t tension() const noexcept { return tension_; }
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

    [[nodiscard]] std::string description() const;
    [[nodiscard]] VLMThread copy() const { return *this; }
    /// Whether both have the very same colour and texts, not just equal ones: one is a copy of the other, or both are
    /// of a third.
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

using VLMThreadList = VLMList<VLMThread>;

}  // namespace velamo
