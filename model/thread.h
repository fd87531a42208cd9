#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/color.h"
#include "model/list.h"
#include "platform/text.h"

namespace velamo {

/// One thread, which sews one colour block of a design. Texts may be absent; a free colour has an empty key and
/// palette.
class VLMThread {
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
    [[nodiscard]] static VLMThread initWithCoder(KeyedUnarchiver& coder);
    void encodeWithCoder(KeyedArchiver& coder) const;

    /// Recolours to the nearest colour of the palette, or to the free colour itself when the palette is "". Keys that
    /// begin with "x" are taken only by a thread that already belongs to the palette. An empty palette gives grey with
    /// empty key and name. False, with a line in the system's log and the thread unchanged, when the name cannot be
    /// that of a palette.
    bool changeToColorinPalette(const VLMColor& color, const std::string& palette);

    [[nodiscard]] const VLMColor& color() const noexcept { return color_; }
    /// Display name of the colour.
    [[nodiscard]] const Text& name() const noexcept { return name_; }
    /// The colour's key in its palette, such as the maker's thread number.
    [[nodiscard]] const Text& key() const noexcept { return key_; }
    /// Identifier of the palette; "Undefined" for threads of files that carry no colours.
    [[nodiscard]] const Text& palette() const noexcept { return palette_; }
    /// Display name of the palette.
    [[nodiscard]] const Text& paletteName() const noexcept { return paletteName_; }
    [[nodiscard]] float length() const noexcept { return length_; }
    [[nodiscard]] std::int32_t tension() const noexcept { return tension_; }
    [[nodiscard]] bool isShown() const noexcept { return isShown_; }
    void setColor(const VLMColor& color) noexcept { color_ = color; }
    void setName(Text name) noexcept { name_ = std::move(name); }
    void setKey(Text key) noexcept { key_ = std::move(key); }
    void setPalette(Text palette) noexcept { palette_ = std::move(palette); }
    void setPaletteName(Text paletteName) noexcept { paletteName_ = std::move(paletteName); }
    void setLength(float length) noexcept { length_ = length; }
    void setTension(std::int32_t tension) noexcept { tension_ = tension; }
    void setIsShown(bool isShown) noexcept { isShown_ = isShown; }
    void addLength(float length) noexcept { length_ += length; }

    [[nodiscard]] std::string description() const;
    [[nodiscard]] VLMThread copy() const { return *this; }

    friend bool operator==(const VLMThread&, const VLMThread&) = default;

private:
    VLMColor color_ = VLMColor::initWithRedgreenblue(0, 0, 0);
    Text name_;
    Text key_;
    Text palette_;
    Text paletteName_;
    float length_ = 0;
    std::int32_t tension_ = 0;
    bool isShown_ = false;
};

using VLMThreadList = VLMList<VLMThread>;

}  // namespace velamo
