#pragma once

#include <cstdint>
#include <memory>
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
    [[nodiscard]] const Text& name() const noexcept { return texts().name; }
    /// The colour's key in its palette, such as the maker's thread number.
    [[nodiscard]] const Text& key() const noexcept { return texts().key; }
    /// Identifier of the palette; "Undefined" for threads of files that carry no colours.
    [[nodiscard]] const Text& palette() const noexcept { return texts().palette; }
    /// Display name of the palette.
    [[nodiscard]] const Text& paletteName() const noexcept { return texts().paletteName; }
    [[nodiscard]] float length() const noexcept { return length_; }
    [[nodiscard]] std::int32_t tension() const noexcept { return tension_; }
    [[nodiscard]] bool isShown() const noexcept { return isShown_; }
    void setColor(const VLMColor& color) noexcept { color_ = color; }
    void setName(Text name) { change(&Texts::name, std::move(name)); }
    void setKey(Text key) { change(&Texts::key, std::move(key)); }
    void setPalette(Text palette) { change(&Texts::palette, std::move(palette)); }
    void setPaletteName(Text paletteName) { change(&Texts::paletteName, std::move(paletteName)); }
    void setLength(float length) noexcept { length_ = length; }
    void setTension(std::int32_t tension) noexcept { tension_ = tension; }
    void setIsShown(bool isShown) noexcept { isShown_ = isShown; }
    void addLength(float length) noexcept { length_ += length; }

    [[nodiscard]] std::string description() const;
    [[nodiscard]] VLMThread copy() const { return *this; }

    friend bool operator==(const VLMThread& one, const VLMThread& other) noexcept;

private:
    struct Texts {
        Text name;
        Text key;
        Text palette;
        Text paletteName;
        friend bool operator==(const Texts&, const Texts&) = default;
    };
    [[nodiscard]] const Texts& texts() const noexcept;
    void change(Text Texts::*text, Text value);

    VLMColor color_ = VLMColor::initWithRedgreenblue(0, 0, 0);
    // Shared with the copies of this thread: files may change between a few threads many thousand times. Never changed
    // in place; null while all texts are absent.
    std::shared_ptr<const Texts> texts_;
    float length_ = 0;
    std::int32_t tension_ = 0;
    bool isShown_ = false;
};

using VLMThreadList = VLMList<VLMThread>;

}  // namespace velamo
