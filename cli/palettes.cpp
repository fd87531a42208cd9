#include "cli/palettes.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <ostream>
#include <set>
#include <string>

#include "cli/commands.h"
#include "cli/json.h"
#include "velamo/model/color_list.h"
#include "velamo/model/thread.h"
#include "velamo/platform/text/resources.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

struct Palette {
    std::string name;
    std::string displayName;
    std::vector<VLMThread> threads;  // one for each key
};

/// The names of all folders "<name>.clr", without that ending, in order.
std::set<std::string> paletteNames(std::span<const std::filesystem::path> resourceFolders) {
    std::set<std::string> names;
    for (const auto& folder : resourceFolders) {
        std::error_code error;  // a folder that is not there holds none
        for (const auto& entry : std::filesystem::directory_iterator(folder, error))
            if (entry.path().extension() == ".clr" && entry.is_directory(error)) names.insert(entry.path().stem());
    }
    return names;
}

std::vector<Palette> allPalettes(std::span<const std::filesystem::path> resourceFolders) {
    std::vector<Palette> palettes;
    for (const std::string& name : paletteNames(resourceFolders)) {
        const auto colors = paletteNamed(name);
        if (!colors || colors->allSortedKeys().empty()) continue;
        Palette palette{.name = name, .displayName = name, .threads = {}};
        for (const std::string& key : colors->allSortedKeys())
            palette.threads.push_back(VLMThread::initWithKeyofPalette(key, name));
        palette.displayName = palette.threads.front().paletteName().value_or(name);
        palettes.push_back(std::move(palette));
    }
    return palettes;
}

std::string hexadecimal(const VLMColor& color) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "#";
    for (const double component : {color.red(), color.green(), color.blue()}) {
        const auto byte = static_cast<std::size_t>(std::lround(std::clamp(component, 0.0, 1.0) * 255));
        text += digits[byte / 16];
        text += digits[byte % 16];
    }
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

ExitStatus palettes(std::span<const std::filesystem::path> resourceFolders, const Console& console) {
    const char* separator = "";
    for (const Palette& palette : allPalettes(resourceFolders)) {
        console.out << separator;
        print(palette, console);
        separator = "\n";
    }
    return ExitStatus::success;
}

ExitStatus palettesAsJson(std::span<const std::filesystem::path> resourceFolders, const Console& console) {
    Json list = Json::array();
    for (const Palette& palette : allPalettes(resourceFolders)) list.push_back(paletteJson(palette));
    console.out << listTextOf(list);
    return ExitStatus::success;
}

void describePalettes(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("palettes", "List the thread palettes and their colors");
    const auto isJson = std::make_shared<bool>(false);
    command->add_flag("--json", *isJson, "Print a JSON list with an object for each palette");
    command->callback([&chosen, isJson] {
        chosen = [isJson](const Console& console) {
            const auto folders = resourceFolders();
            return *isJson ? palettesAsJson(folders, console) : palettes(folders, console);
        };
    });
}

}  // namespace velamo
