#include "cli/palettes.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <ostream>
#include <string>

#include "cli/commands.h"
#include "cli/json.h"
#include "reading/design_facts.h"
#include "velamo/model/palettes.h"
#include "velamo/platform/text/search_words.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

struct Palette {
    std::string name;
    std::string displayName;
    std::vector<VLMThread> threads;  // one for each key
};

std::vector<Palette> allPalettes() {
    std::vector<Palette> palettes;
    for (const std::string& name : paletteNames()) {
        Palette palette{.name = name, .displayName = name, .threads = threadsOfPalette(name)};
        if (palette.threads.empty()) continue;
        palette.displayName = palette.threads.front().paletteName().value_or(name);
        palettes.push_back(std::move(palette));
    }
    return palettes;
}

std::string hexadecimal(const VLMColor& color) {
    std::string text = colorText(colorNumber(color));
    std::transform(text.begin(), text.end(), text.begin(), upperCase);
    return text;
}

Json paletteJson(const Palette& palette) {
    Json colors = Json::array();
    for (const VLMThread& thread : palette.threads) {
        const VLMColor& color = thread.color();
        colors.push_back({{"key", jsonText(thread.key())},
                          {"name", jsonText(thread.name())},
                          {"color", Json::array({color.red(), color.green(), color.blue()})}});
    }
    return {{"name", palette.name},
            {"displayName", palette.displayName},
            {"count", palette.threads.size()},
            {"colors", std::move(colors)}};
}

void print(const Palette& palette, const Console& console) {
    std::ostream& out = console.out;
    out << console.shown(palette.displayName) << " (" << console.shown(palette.name) << ", "
        << counted(static_cast<std::int64_t>(palette.threads.size()), "color") << ")\n";
    const auto shown = [&console](const Text& text) { return console.shown(text.value_or("")); };
    std::size_t keyWidth = 0;
    for (const VLMThread& thread : palette.threads) keyWidth = std::max(keyWidth, columnsOf(shown(thread.key())));
    for (const VLMThread& thread : palette.threads) {
        const std::string key = shown(thread.key());
        out << "  " << key << std::string(keyWidth - columnsOf(key), ' ') << "  " << hexadecimal(thread.color()) << "  "
            << shown(thread.name()) << '\n';
    }
}

}  // namespace

ExitStatus palettes(const Console& console) {
    const char* separator = "";
    for (const Palette& palette : allPalettes()) {
        console.out << separator;
        print(palette, console);
        separator = "\n";
    }
    return ExitStatus::success;
}

ExitStatus palettesAsJson(const Console& console) {
    Json list = Json::array();
    for (const Palette& palette : allPalettes()) list.push_back(paletteJson(palette));
    console.out << listTextOf(list);
    return ExitStatus::success;
}

void describePalettes(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("palettes", "List the thread palettes and their colors");
    const auto isJson = std::make_shared<bool>(false);
    command->add_flag("--json", *isJson, "Print a JSON list with an object for each palette");
    command->callback([&chosen, isJson] {
        chosen = [isJson](const Console& console) { return *isJson ? palettesAsJson(console) : palettes(console); };
    });
}

}  // namespace velamo
