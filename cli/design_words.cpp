#include "cli/design_words.h"

#include <algorithm>
#include <ostream>
#include <vector>

#include "velamo/measure/length_formatter.h"
#include "velamo/model/description_pattern.h"
#include "velamo/platform/system/user.h"
#include "velamo/platform/text/number_format.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

class DesignWords {
public:
    DesignWords(const VLMDesign& design, const Console& console) : design_(design), console_(console) {}

    void write(std::ostream& out) const {
        const std::string hoop = hoopInWords();
        std::vector<PatternArgument> arguments{shown(design_.designName()), shown(design_.designType()),
                                               design_.designVersion() / 10.0, length(tenths(design_.designWidth())),
                                               length(tenths(design_.designHeight()))};
        if (!hoop.empty()) arguments.emplace_back(hoop);
        for (const std::int32_t count : {std::max(design_.numberOfStitches(), 0), design_.numberOfJumps(),
                                         design_.numberOfThreads(), design_.numberOfDifferentColors()})
            arguments.emplace_back(number(count));
        out << fillPattern(descriptionPattern(!hoop.empty()), arguments);
        for (std::int32_t index = 0; index < design_.numberOfThreads(); ++index) out << threadLine(index);
    }

private:
    [[nodiscard]] std::string shown(const Text& text) const { return console_.shown(text.value_or("")); }
    [[nodiscard]] std::string number(std::int64_t count) const { return digits_.writing(std::to_string(count)); }
    static float tenths(std::int32_t count) noexcept { return static_cast<float>(count / 10.0); }
    [[nodiscard]] std::string length(float millimetres) const { return digits_.writing(lengths_.text(millimetres)); }
    /// "Janome A (110.0 mm x 110.0 mm)"; the size alone of a hoop without a name; empty where there is no hoop.
    [[nodiscard]] std::string hoopInWords() const {
        const HoopHandle& hoop = design_.designHoop();
        if (!hoop) return "";
        const std::string width = length(static_cast<float>(hoop->width()));
        const std::string size =
            hoop->isRounded() ? "\u2300 " + width : width + " x " + length(static_cast<float>(hoop->height()));
        const std::string vendor = shown(hoop->vendor());
        const std::string name = shown(hoop->name());
        return vendor.empty() || name.empty() ? size : vendor + ' ' + name + " (" + size + ')';
    }
    /// "2. Sky Blue, 019": the palette's name only where the thread belongs to one.
    [[nodiscard]] std::string threadLine(std::int32_t index) const {
        const VLMThread& thread = design_.threads()[static_cast<std::size_t>(index)];
        const std::string palette = shown(thread.palette());
        std::string line = '\n' + number(index + 1) + ". ";
        const std::string name = shown(thread.name());
        line += name.empty() ? nameOf(thread.color()) : name;
        if (!palette.empty() && palette != "Undefined") line += ", " + palette;
        return line;
    }
    static std::string nameOf(const VLMColor& color) {
        VLMThread thread;
        thread.changeToColorinPalette(color, "");
        return thread.name().value_or("");
    }

    const VLMDesign& design_;
    const Console& console_;
    LengthFormatter lengths_ = LengthFormatter::ofUser();
    LocaleDigits digits_ = LocaleDigits(numberLocaleOfUser());
};

}  // namespace

void writeInWords(std::ostream& out, const VLMDesign& design, const Console& console) {
    DesignWords(design, console).write(out);
}

}  // namespace velamo
