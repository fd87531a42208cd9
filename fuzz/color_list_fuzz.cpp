#include "velamo/model/color_list.h"

#include <array>
#include <charconv>

#include "fuzz/claims.h"
#include "fuzz/input_file.h"

namespace velamo::fuzz {
namespace {

std::string shortest(double component) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), static_cast<float>(component)).ptr;
    return {text.data(), end};
}

/// The list as its file stands at best: every key once with its colour.
std::string written(const VLMColorList& list) {
    std::string text = "header\n";
    for (const std::string& key : list.allKeys()) {
        const VLMColor* color = list.colorWithKey(key);
        claim(color != nullptr, "every key has a colour");
        text += "0 " + shortest(color->red()) + ' ' + shortest(color->green()) + ' ' + shortest(color->blue()) + " 0 " +
                key + '\n';
    }
    return text;
}

VLMColorList listOf(Input bytes) {
    return VLMColorList::initWithNamefromFile("list", inputFile("list.clr", bytes));
}

void checkList(Input bytes) {
    constexpr std::size_t smallestLine = 11;  // "0.0.0.0.0k" and its end
    const VLMColorList list = listOf(bytes);
    claim(list.allKeys().size() <= bytes.size() / smallestLine + 1, "no more colours than the bytes hold");
    const std::string text = written(list);
    const VLMColorList again = listOf({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    claim(again.allKeys() == list.allKeys(), "every key is there again");
    claim(written(again) == text, "every colour is there again");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::checkList({data, size});
    return 0;
}
