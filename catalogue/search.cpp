#include "catalogue/search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>
#include <variant>

#include "catalogue/database.h"
#include "velamo/platform/text/search_words.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::string_view columns =
    "SELECT folders.path, designs.name, designs.id, designs.hash, designs.modified, designs.failure_domain,"
    " designs.failure_code, designs.failure_message, designs.width, designs.height, designs.stitches, designs.colors,"
    " designs.format, designs.version, designs.jumps, designs.trims, designs.blocks, designs.length,"
    " designs.hoop_width, designs.hoop_height, designs.hoop_vendor, designs.hoop_name, folders.device";
constexpr std::string_view onlyCount = "SELECT count(*)";
constexpr std::string_view tables = " FROM designs JOIN folders ON folders.id = designs.folder WHERE ";

struct SortColumn {
    SortKey key;
    std::string_view column;
};
constexpr std::array<SortColumn, 6> sortColumns{{
    {SortKey::name, "designs.words"},
    {SortKey::width, "designs.width"},
    {SortKey::height, "designs.height"},
    {SortKey::stitches, "designs.stitches"},
    {SortKey::colors, "designs.colors"},
    {SortKey::date, "designs.modified"},
}};

struct Bytes {
    std::string bytes;
};
using Parameter = std::variant<double, std::int64_t, std::string, Bytes>;

/// Attributes are single-precision numbers: 123.4 is to find what is stored as 123.4F.
double asStored(double bound) noexcept {
    return bound > double{std::numeric_limits<float>::max()} ? bound : static_cast<float>(bound);
}

/// A query that grows by conditions; whatever comes from outside is a parameter.
class Query {
public:
    Query(std::string_view what, bool isBroken) {
        sql_.append(what).append(tables);
        sql_ += isBroken ? "designs.failure_code IS NOT NULL" : "designs.failure_code IS NULL";
    }
    void addWords(const std::vector<std::string>& words) {
        if (words.empty()) return;
        sql_ += " AND holds_all(folders.words || '/' || designs.words, ?)";
        Bytes parts;
        for (const std::string& word : words) parts.bytes.append(foldedForSearch(word)).push_back('\0');
        parameters_.emplace_back(std::move(parts));
    }
    void addRange(std::string_view column, const std::optional<NumberRange>& range) {
        if (!range) return;
        addBound(column, " >= ?", range->least);
        addBound(column, " <= ?", range->most);
    }
    void addFolder(const std::filesystem::path& folder) {
        const std::string& path = folder.native();
        std::string below = path.ends_with('/') ? path : path + '/';
        std::string behind = below;
        ++behind.back();
        sql_ += " AND (folders.path = ? OR (folders.path >= ? AND folders.path < ?))";
        parameters_.emplace_back(Bytes{path});
        parameters_.emplace_back(Bytes{std::move(below)});
        parameters_.emplace_back(Bytes{std::move(behind)});
    }
    void addOrder(SortKey key, bool isReversed) {
        sql_ += " ORDER BY ";
        for (const SortColumn& candidate : sortColumns)
            if (candidate.key == key) sql_ += candidate.column;
        const std::string_view direction = isReversed ? " DESC" : "";
        for (const std::string_view part : {std::string_view(", designs.words"), std::string_view(", folders.path"),
                                            std::string_view(", designs.name"), std::string_view("")}) {
            sql_ += direction;
            sql_ += part;
        }
    }
    void addFormats(const std::vector<std::string>& formats) {
        if (formats.empty()) return;
        sql_ += " AND designs.format IN (";
        for (const std::string& format : formats) {
            if (sql_.back() == '?') sql_ += ", ";
            sql_ += '?';
            std::string name = format;
            std::transform(name.begin(), name.end(), name.begin(), upperCase);
            parameters_.emplace_back(std::move(name));
        }
        sql_ += ')';
    }
    void addField(const SewingField& field) {
        sql_ += " AND min(designs.width, designs.height) <= ? AND max(designs.width, designs.height) <= ?";
        parameters_.emplace_back(asStored(std::min(field.width, field.height)));
        parameters_.emplace_back(asStored(std::max(field.width, field.height)));
    }
    void addColors(const std::vector<std::uint32_t>& colors) {
        sql_ += " AND designs.id IN (SELECT design FROM threads WHERE color IN (SELECT value FROM json_each(?)))";
        std::string list = "[";
        for (const std::uint32_t color : colors) list.append(list.size() > 1 ? "," : "").append(std::to_string(color));
        parameters_.emplace_back(list + ']');
    }
    void addLimit(std::optional<std::int64_t> limit, std::int64_t offset) {
        constexpr std::int64_t none = -1;
        sql_ += " LIMIT ? OFFSET ?";
        parameters_.emplace_back(limit.value_or(none));
        parameters_.emplace_back(offset);
    }

    [[nodiscard]] Statement prepare(const Database& database) const {
        Statement statement = database.prepare(sql_);
        for (std::size_t i = 0; i < parameters_.size(); ++i) bind(statement, static_cast<int>(i) + 1, parameters_[i]);
        return statement;
    }

private:
    void addBound(std::string_view column, std::string_view comparison, const std::optional<double>& bound) {
        if (!bound) return;
        sql_ += " AND designs.";
        sql_ += column;
        sql_ += comparison;
        parameters_.emplace_back(asStored(*bound));
    }
    static void bind(Statement& statement, int number, const Parameter& parameter) {
        if (const auto* real = std::get_if<double>(&parameter)) statement.bind(number, *real);
        if (const auto* integer = std::get_if<std::int64_t>(&parameter)) statement.bind(number, *integer);
        if (const auto* text = std::get_if<std::string>(&parameter)) statement.bindText(number, *text);
        if (const auto* bytes = std::get_if<Bytes>(&parameter)) statement.bindBytes(number, bytes->bytes);
    }

    std::string sql_;
    std::vector<Parameter> parameters_;
};

/// All colours that threads have. Few are many threads', so each is looked for behind the last one.
std::vector<std::uint32_t> colorsIn(const Database& database) {
    std::vector<std::uint32_t> colors;
    Statement row = database.prepare("SELECT min(color) FROM threads WHERE color > ?");
    std::int64_t last = -1;
    while (row.bind(1, last).next() && !row.isNothing(0)) {
        last = row.integer(0);
        row.reset();
        colors.push_back(static_cast<std::uint32_t>(last));
    }
    return colors;
}

void addColors(Query& query, const std::vector<ColorTest>& tests, const Database& database) {
    if (tests.empty()) return;
    const auto all = colorsIn(database);
    for (const ColorTest& test : tests) {
        std::vector<std::uint32_t> meant;
        std::copy_if(all.begin(), all.end(), std::back_inserter(meant), test);
        query.addColors(meant);
    }
}

Query queryFor(std::string_view what, const SearchRequest& request, const Database& database) {
    Query query(what, request.isBroken);
    query.addWords(request.words);
    query.addRange("width", request.width);
    query.addRange("height", request.height);
    query.addRange("stitches", request.stitches);
    query.addRange("colors", request.colors);
    query.addRange("blocks", request.blocks);
    query.addFormats(request.formats);
    if (request.field) query.addField(*request.field);
    if (request.folder) query.addFolder(*request.folder);
    addColors(query, request.has, database);
    return query;
}

Text textAt(const Statement& row, int column) {
    return row.isNothing(column) ? Text() : Text(row.bytes(column));
}

DesignFacts factsAt(const Statement& row) {
    const auto figure = [&row](int column) { return static_cast<float>(row.real(column)); };
    DesignFacts facts{.attributes = {.widthInMillimetres = figure(8),
                                     .heightInMillimetres = figure(9),
                                     .stitches = figure(10),
                                     .colors = figure(11)},
                      .format = row.bytes(12),
                      .version = static_cast<std::int32_t>(row.integer(13)),
                      .jumps = row.integer(14),
                      .trims = row.integer(15),
                      .blocks = row.integer(16),
                      .length = row.real(17),
                      .threads = {},
                      .hoop = {}};
    if (!row.isNothing(18))
        facts.hoop = HoopFacts{textAt(row, 20), textAt(row, 21), static_cast<std::int32_t>(row.integer(18)),
                               static_cast<std::int32_t>(row.integer(19))};
    return facts;
}

std::optional<Sha256> hashAt(const Statement& row, int column) {
    Sha256 hash{};
    const std::string bytes = row.bytes(column);
    if (bytes.size() != hash.size()) return std::nullopt;
    std::memcpy(hash.data(), bytes.data(), hash.size());
    return hash;
}

FoundDesign designOf(const Statement& row) {
    FoundDesign design{.id = row.integer(2),
                       .file = std::filesystem::path(row.bytes(0)) / row.bytes(1),
                       .facts = factsAt(row),
                       .hash = hashAt(row, 3),
                       .modified = row.integer(4),
                       .failure = {},
                       .device = {}};
    if (!row.isNothing(22)) design.device = static_cast<std::uint64_t>(row.integer(22));
    if (!row.isNothing(6)) design.failure = {row.bytes(5), static_cast<int>(row.integer(6)), row.bytes(7)};
    return design;
}

void readThreads(const Database& database, std::vector<FoundDesign>& designs) {
    Statement row = database.prepare(
        "SELECT color, name, palette, stitches, length FROM threads WHERE design = ? ORDER BY position");
    for (FoundDesign& design : designs) {
        row.bind(1, design.id);
        while (row.next())
            design.facts.threads.push_back(
                {.color = row.isNothing(0) ? std::nullopt : std::optional(static_cast<std::uint32_t>(row.integer(0))),
                 .name = textAt(row, 1),
                 .palette = textAt(row, 2),
                 .stitches = row.integer(3),
                 .length = row.real(4)});
    }
}

}  // namespace

std::vector<FoundDesign> searchDesigns(const Database& database, const SearchRequest& request) {
    Query query = queryFor(columns, request, database);
    query.addOrder(request.sortKey, request.isReversed);
    query.addLimit(request.limit, request.offset);
    Statement rows = query.prepare(database);
    std::vector<FoundDesign> found;
    while (rows.next()) found.push_back(designOf(rows));
    if (request.withThreads) readThreads(database, found);
    return found;
}

std::int64_t countDesigns(const Database& database, const SearchRequest& request) {
    Statement row = queryFor(onlyCount, request, database).prepare(database);
    return row.next() ? row.integer(0) : 0;
}

}  // namespace velamo
