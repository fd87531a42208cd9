#include "cli/search.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <ostream>

#include "catalogue/indexer.h"
#include "cli/catalogue_file.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "velamo/measure/length_formatter.h"
#include "velamo/platform/system/user.h"
#include "velamo/platform/text/harmless_output.h"
#include "velamo/platform/text/number_format.h"
#include "velamo/platform/text/search_words.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

using Found = std::span<const FoundDesign>;

std::string twoDigits(unsigned number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

Json designJson(const FoundDesign& design) {
    Json json{{"file", design.file.native()}, {"modified", timeText(design.modified)}};
    if (design.failure) {
        json["error"] = {
            {"domain", design.failure->domain}, {"code", design.failure->code}, {"message", design.failure->message}};
        return json;
    }
    json["width"] = jsonNumber(design.attributes.widthInMillimetres);
    json["height"] = jsonNumber(design.attributes.heightInMillimetres);
    json["stitches"] = jsonCount(design.attributes.stitches);
    json["colors"] = jsonCount(design.attributes.colors);
    return json;
}

void printJson(Found found, const Console& console) {
    Json list = Json::array();
    for (const FoundDesign& design : found) list.push_back(designJson(design));
    console.out << listTextOf(list);
}

void printPaths(Found found, const Console& console) {
    for (const FoundDesign& design : found) {
        console.out << design.file.native();
        writeAsIs(console.out, std::string_view("\0", 1));
    }
}

constexpr std::size_t columnCount = 3;  // before the path
using Row = std::array<std::string, columnCount>;

/// Writes the figures of all rows alike: what the user wants is asked once.
class RowWriter {
public:
    [[nodiscard]] Row rowOf(const DesignAttributes& design) const {
        return {digits_.writing(lengths_.text(design.widthInMillimetres) + " x " +
                                lengths_.text(design.heightInMillimetres)),
                count(design.stitches), count(design.colors)};
    }
    /// A file of more threads than stitches has a number of stitches below zero, which says nothing to a person.
    [[nodiscard]] std::string count(float number) const {
        return digits_.writing(textOf(jsonCount(std::max(number, 0.0F))));
    }
    [[nodiscard]] std::string countOf(Found designs) const {
        return digits_.writing(counted(static_cast<std::int64_t>(designs.size()), "design"));
    }

private:
    LengthFormatter lengths_ = LengthFormatter::ofUser();
    LocaleDigits digits_ = LocaleDigits(numberLocaleOfUser());
};

void printRow(const Row& row, const std::array<std::size_t, columnCount>& widths, const std::string& path,
              std::ostream& out) {
    for (std::size_t column = 0; column < columnCount; ++column)
        out << std::string(widths[column] - columnsOf(row[column]), ' ') << row[column] << "  ";
    out << path << '\n';
}

void printTable(Found found, const Console& console) {
    if (found.empty()) {
        console.out << "no design found\n";
        return;
    }
    const RowWriter writer;
    std::vector<Row> rows{{"Size", "Stitches", "Colors"}};
    rows.reserve(found.size() + 1);
    for (const FoundDesign& design : found) rows.push_back(writer.rowOf(design.attributes));
    std::array<std::size_t, columnCount> widths{};
    for (const Row& row : rows)
        for (std::size_t column = 0; column < columnCount; ++column)
            widths[column] = std::max(widths[column], columnsOf(row[column]));
    printRow(rows.front(), widths, "Design", console.out);
    for (std::size_t i = 0; i < found.size(); ++i)
        printRow(rows[i + 1], widths, console.shown(found[i].file.native()), console.out);
    console.out << writer.countOf(found) << '\n';
}

void printBroken(Found found, const Console& console) {
    for (const FoundDesign& design : found)
        console.out << console.shown(design.file.native()) << ": " << console.shown(design.failure->message)
                    << " (error " << design.failure->code << ")\n";
    console.out << (found.empty() ? "no broken file found"
                                  : counted(static_cast<std::int64_t>(found.size()), "broken file"))
                << '\n';
}

void print(Found found, const SearchRequest& request, SearchOutput output, const Console& console) {
    if (output == SearchOutput::json)
        printJson(found, console);
    else if (output == SearchOutput::paths)
        printPaths(found, console);
    else if (request.isBroken)
        printBroken(found, console);
    else
        printTable(found, console);
}

NumberRange rangeOption(const std::string& option, const std::string& text) {
    if (const auto range = parseRange(text)) return *range;
    throw CLI::ValidationError(option, "expected " + std::string(rangeForms) + ", not '" + text + "'");
}

/// What the command line fills in.
struct SearchOptions {
    SearchRequest request;
    std::string folder;
    std::string catalogue = catalogueOfUser();
    bool isJson = false;
    bool arePaths = false;

    [[nodiscard]] SearchOutput output() const noexcept {
        if (isJson) return SearchOutput::json;
        return arePaths ? SearchOutput::paths : SearchOutput::table;
    }
};

/// The options that look at figures, which broken files do not have.
std::vector<CLI::Option*> describeRanges(CLI::App& command, SearchRequest& request) {
    struct RangeOption {
        const char* name;
        const char* description;
        std::optional<NumberRange>* range;
    };
    const std::array<RangeOption, 4> rangeOptions{{
        {"--width", "Width in millimetres: 50..100, ..100, 50.. or 50", &request.width},
        {"--height", "Height in millimetres, likewise", &request.height},
        {"--stitches", "Number of stitches, likewise", &request.stitches},
        {"--colors", "Number of different colors, likewise", &request.colors},
    }};
    std::vector<CLI::Option*> described;
    described.reserve(rangeOptions.size());
    for (const auto& [name, description, range] : rangeOptions)
        described.push_back(command
                                .add_option_function<std::string>(
                                    name,
                                    [option = std::string(name), target = range](const std::string& text) {
                                        *target = rangeOption(option, text);
                                    },
                                    description)
                                ->type_name("A..B"));
    return described;
}

void describeOrder(CLI::App& command, SearchRequest& request) {
    const std::map<std::string, SortKey> keys{{"name", SortKey::name},     {"width", SortKey::width},
                                              {"height", SortKey::height}, {"stitches", SortKey::stitches},
                                              {"colors", SortKey::colors}, {"date", SortKey::date}};
    command
        .add_option_function<std::string>(
            "--sort", [keys, &request](const std::string& key) { request.sortKey = keys.at(key); },
            "Order: name (the default), width, height, stitches, colors or date, smallest or oldest first")
        ->check(CLI::IsMember({"name", "width", "height", "stitches", "colors", "date"}))
        ->type_name("KEY");
    command.add_flag("--reverse", request.isReversed, "Turn the order round");
    command.add_option("--limit", request.limit, "Print at most so many")->check(CLI::PositiveNumber);
}

}  // namespace

std::string timeText(std::int64_t time) {
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(sys_time<nanoseconds>(nanoseconds(time)));
    const auto day = floor<days>(seconds);
    const year_month_day date(day);
    const hh_mm_ss clock(seconds - day);
    return std::to_string(static_cast<int>(date.year())) + '-' + twoDigits(static_cast<unsigned>(date.month())) + '-' +
           twoDigits(static_cast<unsigned>(date.day())) + 'T' +
           twoDigits(static_cast<unsigned>(clock.hours().count())) + ':' +
           twoDigits(static_cast<unsigned>(clock.minutes().count())) + ':' +
           twoDigits(static_cast<unsigned>(clock.seconds().count())) + 'Z';
}

ExitStatus search(const std::filesystem::path& catalogue, const SearchRequest& request, SearchOutput output,
                  const Console& console) {
    return withCatalogue(catalogue, console, [&] {
        const auto found = Catalogue::openForSearching(catalogue).search(request);
        print(found, request, output, console);
        return ExitStatus::success;
    });
}

void describeSearch(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("search", "Find designs in the catalogue");
    const auto options = std::make_shared<SearchOptions>();
    command->add_option("WORDS", options->request.words,
                        "Words that are all in the design's name or its folders' names, in any case");
    const auto ranges = describeRanges(*command, options->request);
    describeOrder(*command, options->request);
    command->add_option("--folder", options->folder, "Only designs in this folder or below it");
    auto* broken = command->add_flag("--broken", options->request.isBroken, "List the files that could not be read");
    for (CLI::Option* range : ranges) broken->excludes(range);
    auto* json = command->add_flag(
        "--json", options->isJson,
        "Print a JSON list with an object for each design: file, modified, width and height (mm), stitches, colors");
    command->add_flag("--print0", options->arePaths, "Print only paths, each followed by a zero byte")->excludes(json);
    command->add_option("--catalogue", options->catalogue, "The catalogue's file")->capture_default_str();
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) {
            if (!options->folder.empty()) options->request.folder = catalogueName(options->folder);
            return search(options->catalogue, options->request, options->output(), console);
        };
    });
}

}  // namespace velamo
