#include "cli/convert.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <ostream>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/jobs_option.h"
#include "cli/save_design.h"
#include "velamo/formats/format.h"

namespace velamo {
namespace {

struct Options {
    std::string source;
    std::string target;
    std::string folder;
    std::string extension;
    std::string outFolder;
    ExportOptions exported;
    bool isDumped = false;
    ReadingOptions reading;
    std::size_t jobs = usualJobs();
};

/// Throws the parser's own errors, which are wrong usage.
void checkOptions(const Options& options) {
    const bool isOne = !options.source.empty();
    const bool isAll = !options.folder.empty();
    if (isOne && isAll) throw CLI::ValidationError("--all", "takes the place of IN and OUT");
    if (isOne && options.target.empty()) throw CLI::RequiredError("OUT");
    if (isAll && (options.extension.empty() || options.outFolder.empty()))
        throw CLI::ValidationError("--all", "needs --to and --out");
    if (!isAll && !(options.extension.empty() && options.outFolder.empty()))
        throw CLI::ValidationError("--to, --out", "go with --all");
    if (isAll && options.isDumped) throw CLI::ValidationError("--dump", "is for a single design");
    if (!isOne && !isAll) throw CLI::ValidationError("convert", "needs IN and OUT, or --all");
}

std::string writableExtensions() {
    std::string names;
    for (const Format& format : allFormats())
        if (format.writer != nullptr) names += (names.empty() ? "" : ", ") + std::string(format.extension);
    return names;
}

std::string refuseExtension(const std::string& extension) {
    const Format* format = formatWithExtension(extension);
    if (format != nullptr && format->writer != nullptr) return "";
    return "'" + extension + "' is none of " + writableExtensions();
}

std::string refuseDate(const std::string& date) {
    constexpr std::size_t dateSize = 14;
    const bool isDate =
        date.size() == dateSize && std::all_of(date.begin(), date.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isDate ? "" : "'" + date + "' is no date of 14 digits, yyyyMMddHHmmss";
}

ExitStatus run(const Options& options, const Console& console) {
    if (options.folder.empty())
        return convert({options.source, options.target, options.exported, options.isDumped, options.reading}, console);
    return convertAll(
        {options.folder, options.extension, options.outFolder, options.exported, options.jobs, options.reading},
        console);
}

ExitStatus convertDesign(const ConvertRequest& request, ConfinedReader& reader, const Console& console) {
    VLMDesign design;
    VLMError error;
    if (!reader.readDesign(design, request.source, &error)) {
        if (request.isDumped) writeDesignJson(console.out, design, &error);
        reportProblem(console, request.source, error);
        return ExitStatus::failure;
    }
    const DesignOrigin origin{request.source, design.useThreadFile()};
    const SaveOutcome outcome = saveDesign(design, request.target, origin, request.options, threadsFrom(reader));
    if (request.isDumped) writeDesignJson(console.out, design, outcome.isSaved ? nullptr : &outcome.error);
    report(outcome, console);
    return outcome.isSaved ? ExitStatus::success : ExitStatus::failure;
}

}  // namespace

ExitStatus convert(const ConvertRequest& request, const Console& console) {
    return withReader(request.reading, console,
                      [&](ConfinedReader& reader) { return convertDesign(request, reader, console); });
}

void describeConvert(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("convert", "Write designs for other machines");
    const auto options = std::make_shared<Options>();
    command->add_option("IN", options->source, "The design");
    command->add_option("OUT", options->target,
                        "The new file, whose extension decides the format: " + writableExtensions());
    command->add_option("--all", options->folder, "Convert every design in this folder and below it")
        ->option_text("FOLDER");
    command->add_option("--to", options->extension, "The extension of the new files, with --all")
        ->check(refuseExtension)
        ->option_text("EXTENSION");
    command->add_option("--out", options->outFolder, "Where the new files go, with --all")->option_text("DIR");
    addJobsOption(*command, options->jobs, "How many designs to convert at a time, with --all");
    command
        ->add_option("--date", options->exported.dateText,
                     "The date that a JEF file carries, yyyyMMddHHmmss, in place of now")
        ->check(refuseDate)
        ->option_text("DATE");
    command->add_flag("--dump", options->isDumped, "Print the design as it is afterwards, as 'velamo dump' does");
    addReadingOptions(*command, options->reading);
    command->callback([&chosen, options] {
        checkOptions(*options);
        chosen = [options](const Console& console) { return run(*options, console); };
    });
}

}  // namespace velamo
