#include "catalogue/search.h"

#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <variant>

#include "catalogue/database.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

constexpr std::string_view columns =
    "SELECT folders.path, designs.name, designs.width, designs.height, designs.stitches, designs.colors,"
    " designs.modified, designs.failure_domain, designs.failure_code, designs.failure_message"
    " FROM designs JOIN folders ON folders.id = designs.folder WHERE ";

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
    explicit Query(bool isBroken) {
        sql_ += columns;
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
    void addLimit(std::int64_t limit) {
        sql_ += " LIMIT ?";
        parameters_.emplace_back(limit);
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

Query queryFor(const SearchRequest& request) {
    Query query(request.isBroken);
    query.addWords(request.words);
    query.addRange("width", request.width);
    query.addRange("height", request.height);
    query.addRange("stitches", request.stitches);
    query.addRange("colors", request.colors);
    if (request.folder) query.addFolder(*request.folder);
    query.addOrder(request.sortKey, request.isReversed);
    if (request.limit) query.addLimit(*request.limit);
    return query;
}

FoundDesign designOf(const Statement& row) {
    const auto figure = [&row](int column) { return static_cast<float>(row.real(column)); };
    FoundDesign design{.file = std::filesystem::path(row.bytes(0)) / row.bytes(1),
                       .attributes = {.widthInMillimetres = figure(2),
                                      .heightInMillimetres = figure(3),
                                      .stitches = figure(4),
                                      .colors = figure(5)},
                       .modified = row.integer(6),
                       .failure = {}};
    if (!row.isNothing(8)) design.failure = {row.bytes(7), static_cast<int>(row.integer(8)), row.bytes(9)};
    return design;
}

}  // namespace

std::vector<FoundDesign> searchDesigns(const Database& database, const SearchRequest& request) {
    Statement rows = queryFor(request).prepare(database);
    std::vector<FoundDesign> found;
    while (rows.next()) found.push_back(designOf(rows));
    return found;
}

}  // namespace velamo
