#include "cli/search.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <map>
#include <memory>
#include <ostream>

#include "catalogue/indexer.h"
#include "cli/catalogue_file.h"
#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/json.h"
#include "velamo/formats/format.h"
#include "velamo/measure/length_formatter.h"
#include "velamo/platform/system/user.h"
#include "velamo/platform/text/harmless_output.h"
#include "velamo/platform/text/number_format.h"
#include "velamo/platform/text/search_words.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

using Found = std::span<const FoundDesign>;

/// Lengths are sums of many roundings: more digits would promise what nobody can hold.
double inHundredths(double millimetres) {
    return std::round(millimetres * 100) / 100;
}

std::string twoDigits(unsigned number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

Json threadJson(const ThreadFacts& thread) {
    return {{"color", thread.color ? Json(colorText(*thread.color)) : Json()},
            {"name", jsonText(thread.name)},
            {"palette", jsonText(thread.palette)},
            {"stitches", thread.stitches},
            {"length", jsonNumber(inHundredths(thread.length))}};
}

Json hoopJson(const std::optional<HoopFacts>& hoop) {
    if (!hoop) return {};
    return {{"vendor", jsonText(hoop->vendor)},
            {"name", jsonText(hoop->name)},
            {"width", hoop->width},
            {"height", hoop->height}};
}

/// What only reading again could tell of a design that is away since an older program read it is null.
void putFacts(Json& json, const DesignFacts& facts) {
    const auto known = [isKnown = !facts.format.empty()](Json value) { return isKnown ? std::move(value) : Json(); };
    json["format"] = known(facts.format);
    json["version"] = known(facts.version);
    json["blocks"] = known(facts.blocks);
    json["jumps"] = known(facts.jumps);
    json["trims"] = known(facts.trims);
    json["length"] = known(jsonNumber(inHundredths(facts.length)));
    Json threads = Json::array();
    for (const ThreadFacts& thread : facts.threads) threads.push_back(threadJson(thread));
    json["threads"] = known(std::move(threads));
    json["hoop"] = hoopJson(facts.hoop);
}

std::string hexadecimal(const Sha256& hash) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : hash) {
        text += digits[std::to_integer<std::size_t>(byte >> 4)];
        text += digits[std::to_integer<std::size_t>(byte & std::byte{0xF})];
    }
    return text;
}

Json designJson(const FoundDesign& design) {
    Json json{{"file", design.file.native()}, {"modified", timeText(design.modified)}};
    if (design.failure) {
        json["error"] = {
            {"domain", design.failure->domain}, {"code", design.failure->code}, {"message", design.failure->message}};
    } else {
        putAttributes(json, design.facts.attributes);
        putFacts(json, design.facts);
    }
    json["hash"] = design.hash ? Json(hexadecimal(*design.hash)) : Json();
    json["away"] = design.isAway;
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
    /// "3 designs", or "3 of 20 designs" where a limit left some out.
    [[nodiscard]] std::string countOf(std::size_t shown, std::int64_t found) const {
        const std::string all = counted(found, "design");
        const bool isPart = static_cast<std::int64_t>(shown) < found;
        return digits_.writing(isPart ? std::to_string(shown) + " of " + all : all);
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

void printTable(Found found, std::int64_t count, const Console& console) {
    if (count == 0) {
        console.out << "no design found\n";
        return;
    }
    const RowWriter writer;
    std::vector<Row> rows{{"Size", "Stitches", "Colors"}};
    rows.reserve(found.size() + 1);
    for (const FoundDesign& design : found) rows.push_back(writer.rowOf(design.facts.attributes));
    std::array<std::size_t, columnCount> widths{};
    for (const Row& row : rows)
        for (std::size_t column = 0; column < columnCount; ++column)
            widths[column] = std::max(widths[column], columnsOf(row[column]));
    printRow(rows.front(), widths, "Design", console.out);
    for (std::size_t i = 0; i < found.size(); ++i)
        printRow(rows[i + 1], widths, console.shown(found[i].file.native()) + (found[i].isAway ? "  (away)" : ""),
                 console.out);
    console.out << writer.countOf(found.size(), count) << '\n';
}

void printBroken(Found found, const Console& console) {
    for (const FoundDesign& design : found)
        console.out << console.shown(design.file.native()) << ": " << console.shown(design.failure->message)
                    << " (error " << design.failure->code << ")\n";
    console.out << (found.empty() ? "no broken file found"
                                  : counted(static_cast<std::int64_t>(found.size()), "broken file"))
                << '\n';
}

void print(Found found, std::int64_t count, const SearchRequest& request, SearchOutput output, const Console& console) {
    if (output == SearchOutput::json)
        printJson(found, console);
    else if (output == SearchOutput::paths)
        printPaths(found, console);
    else if (request.isBroken)
        printBroken(found, console);
    else
        printTable(found, count, console);
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
    const std::array<RangeOption, 5> rangeOptions{{
        {"--width", "Width in millimetres: 50..100, ..100, 50.. or 50", &request.width},
        {"--height", "Height in millimetres, likewise", &request.height},
        {"--stitches", "Number of stitches, likewise", &request.stitches},
        {"--colors", "Number of different colors, likewise", &request.colors},
        {"--blocks", "Number of color blocks, between which the thread is changed, likewise", &request.blocks},
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

/// The format's type, as designs have it, from an extension or a type.
std::string formatOption(const std::string& text) {
    if (const Format* format = formatWithExtension(text)) return std::string(format->type);
    std::string known;
    for (const Format& format : allFormats()) known.append(known.empty() ? "" : ", ").append(format.extension);
    throw CLI::ValidationError("--format", "'" + text + "' is none of " + known);
}

ColorTest colorOption(const std::string& text) {
    if (auto test = parseColor(text)) return *std::move(test);
    std::string known;
    for (const ColorName& name : colorNames) known.append(known.empty() ? "" : ", ").append(name.english);
    throw CLI::ValidationError("--has",
                               "expected " + std::string(colorForms) + ", not '" + text + "'; the names are " + known);
}

/// More options that broken files have nothing for.
std::vector<CLI::Option*> describeFacts(CLI::App& command, SearchRequest& request) {
    auto* format = command
                       .add_option_function<std::vector<std::string>>(
                           "--format",
                           [&request](const std::vector<std::string>& texts) {
                               for (const std::string& text : texts) request.formats.push_back(formatOption(text));
                           },
                           "Files of this format, such as pes; of any of several, with a comma between")
                       ->delimiter(',')
                       ->expected(1)
                       ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                       ->type_name("FORMAT");
    auto* hoop =
        command
            .add_option_function<std::string>(
                "--hoop",
                [&request](const std::string& text) {
                    request.field = parseField(text);
                    if (!request.field)
                        throw CLI::ValidationError("--hoop",
                                                   "expected " + std::string(fieldForms) + ", not '" + text + "'");
                },
                "What fits into the hoop, lengthwise or crosswise: 100x100 (mm), or \"Janome B\" (see velamo hoops)")
            ->type_name("HOOP");
    auto* has = command
                    .add_option_function<std::vector<std::string>>(
                        "--has",
                        [&request](const std::vector<std::string>& texts) {
                            for (const std::string& text : texts) request.has.push_back(colorOption(text));
                        },
                        "Designs with a thread of this color, such as red, or much like #rrggbb; given again, with all "
                        "of them")
                    ->expected(1)
                    ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                    ->type_name("COLOR");
    return {format, hoop, has};
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
    command.add_option("--offset", request.offset, "Leave out so many before them")->check(CLI::NonNegativeNumber);
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
        const auto opened = Catalogue::openForSearching(catalogue);
        const auto found = opened.search(request);
        const bool isPart = request.limit || request.offset > 0;
        const auto count = isPart ? opened.count(request) : static_cast<std::int64_t>(found.size());
        print(found, count, request, output, console);
        return ExitStatus::success;
    });
}

void describeSearch(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("search", "Find designs in the catalogue");
    const auto options = std::make_shared<SearchOptions>();
    command->add_option("WORDS", options->request.words,
                        "Words that are all in the design's name or its folders' names, in any case");
    const auto ranges = describeRanges(*command, options->request);
    const auto facts = describeFacts(*command, options->request);
    describeOrder(*command, options->request);
    command->add_option("--folder", options->folder, "Only designs in this folder or below it");
    auto* broken = command->add_flag("--broken", options->request.isBroken, "List the files that could not be read");
    for (CLI::Option* range : ranges) broken->excludes(range);
    for (CLI::Option* fact : facts) broken->excludes(fact);
    auto* json = command->add_flag(
        "--json", options->isJson,
        "Print a JSON list with an object for each design: file, modified, width and height (mm), stitches, colors, "
        "format, blocks, jumps, trims, threads, hoop and more");
    command->add_flag("--print0", options->arePaths, "Print only paths, each followed by a zero byte")->excludes(json);
    command->add_option("--catalogue", options->catalogue, "The catalogue's file")->capture_default_str();
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) {
            if (!options->folder.empty()) options->request.folder = catalogueName(options->folder);
            options->request.withThreads = options->isJson;
            return search(options->catalogue, options->request, options->output(), console);
        };
    });
}

}  // namespace velamo
