#include "cli/info.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/design_words.h"
#include "cli/plugin_info.h"
#include "cli/terminal_picture.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/platform/text/harmless_output.h"
#include "velamo/render/design_picture.h"

namespace velamo {
namespace {

void writeInfo(std::ostream& out, const std::string& file, const VLMDesign& design) {
    Json json{{"file", file}};
    putAttributes(json, attributesOfDesign(design));
    std::string text = textOf(json);
    text.pop_back();  // what closes the object
    out << text << ",\"statistics\":";
    writeStatistics(out, design);
    out << '}';
}

/// Imports each file and hands it on; a problem is reported, and handed on as well.
template <class OnDesign, class OnProblem>
ExitStatus readEach(std::span<const std::string> files, ConfinedReader& reader, const Console& console,
                    OnDesign onDesign, OnProblem onProblem) {
    auto status = ExitStatus::success;
    for (const std::string& file : files) {
        VLMDesign design;
        VLMError error;
        if (reader.readDesign(design, file, &error)) {
            onDesign(file, design);
            continue;
        }
        reportProblem(console, file, error);
        onProblem(file, error);
        status = ExitStatus::failure;
    }
    return status;
}

void printPicture(const VLMDesign& design, const Console& console) {
    const int pixels = pixelsOnTerminal(console.pictures, console.size);
    const auto bitmap = bitmapOf(design, scaleForLongerSide(design, pixels), {});
    if (bitmap) writeAsIs(console.out, terminalPicture(*bitmap, console.pictures));
}

}  // namespace

ExitStatus info(std::span<const std::string> files, bool withPicture, const ReadingOptions& reading,
                const Console& console) {
    const char* separator = "";
    const auto describe = [&](const std::string&, const VLMDesign& design) {
        console.out << separator;
        if (withPicture) printPicture(design, console);
        writeInWords(console.out, design, console);
        console.out << '\n';
        separator = "\n";
    };
    return withReader(reading, console, [&](ConfinedReader& reader) {
        return readEach(files, reader, console, describe, [](const std::string&, const VLMError&) {});
    });
}

ExitStatus infoAsJson(std::span<const std::string> files, const ReadingOptions& reading, const Console& console) {
    return withReader(reading, console, [&](ConfinedReader& reader) {
        JsonListWriter list(console.out);
        return readEach(
            files, reader, console,
            [&list](const std::string& file, const VLMDesign& design) { writeInfo(list.next(), file, design); },
            [&list](const std::string& file, const VLMError& error) {
                list.next() << textOf({{"file", file}, {"error", errorJson(error)}});
            });
    });
}

void describeInfo(CLI::App& program, Action& chosen) {
    struct Options {
        std::vector<std::string> files;
        bool isJson = false;
        bool withPicture = false;
        bool isOfPlugin = false;
        ReadingOptions reading;
    };
    auto* command = program.add_subcommand("info", "Describe designs");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->files, "The designs")->required();
    auto* json = command->add_flag("--json", options->isJson,
                                   "Print a JSON list with an object for each file: width and height (mm), stitches, "
                                   "colors and all statistics, or the error");
    auto* plugin = command->add_flag("--plugin", options->isOfPlugin,
                                     "Show what the desktop's indexer gets of each file from the importer plug-in");
    command
        ->add_flag("--picture", options->withPicture,
                   "Show a small picture: in pixels on terminals that announce sixel or kitty graphics, else in blocks "
                   "of color, in a pipe as well; not on a dumb terminal")
        ->excludes(json)
        ->excludes(plugin);
    addReadingOptions(*command, options->reading);
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) {
            if (options->isOfPlugin) return pluginInfo(options->files, options->isJson, options->reading, console);
            return options->isJson ? infoAsJson(options->files, options->reading, console)
                                   : info(options->files, options->withPicture, options->reading, console);
        };
    });
}

}  // namespace velamo
