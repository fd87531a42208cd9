#include "catalogue/catalogue.h"

#include <sqlite3.h>

#include <array>
#include <chrono>

#include "velamo/platform/system/file_lock.h"
#include "velamo/platform/system/private_files.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

constexpr std::int64_t applicationId = 0x564C4D43;  // marks the file as ours: "VLMC"
constexpr int mostChangesInBatch = 500;             // a tenth of the time that each on its own takes
constexpr std::chrono::seconds longestBatch{1};

constexpr const char* layout = R"sql(
    PRAGMA application_id = 1447841091;
    PRAGMA user_version = 1;
    CREATE TABLE IF NOT EXISTS roots (path BLOB PRIMARY KEY) WITHOUT ROWID;
    CREATE TABLE folders (
        id INTEGER PRIMARY KEY,
        path BLOB NOT NULL UNIQUE,
        words TEXT NOT NULL);
    CREATE TABLE designs (
        folder INTEGER NOT NULL REFERENCES folders (id) ON DELETE CASCADE,
        name BLOB NOT NULL,
        words TEXT NOT NULL,
        size INTEGER NOT NULL,
        modified INTEGER NOT NULL,
        side_size INTEGER,
        side_modified INTEGER,
        reader INTEGER NOT NULL,
        width REAL,
        height REAL,
        stitches REAL,
        colors REAL,
        failure_domain TEXT,
        failure_code INTEGER,
        failure_message TEXT,
        PRIMARY KEY (folder, name)) WITHOUT ROWID;
)sql";
static_assert(applicationId == 1447841091 && Catalogue::layoutVersion == 1);

void requireRegularFile(const std::filesystem::path& file) {
    // Opening a pipe could wait for ever, and a device obeys.
    std::error_code error;
    const FileState state = stateOfFile(file, error);
    if (error == std::errc::no_such_file_or_directory) return;
    if (error) throw std::system_error(error);
    if (state.kind != FileKind::regular) throw CatalogueError(SQLITE_CANTOPEN, "not a regular file");
}

bool isEmpty(const Database& database) {
    return database.number("SELECT count(*) FROM sqlite_master") == 0;
}

/// The version of the layout; 0 for an empty file.
std::int64_t checkedVersion(const Database& database) {
    const std::int64_t application = database.number("PRAGMA application_id");
    const std::int64_t version = database.number("PRAGMA user_version");
    if (application != applicationId && !(application == 0 && version == 0 && isEmpty(database)))
        throw CatalogueError(SQLITE_NOTADB, "this database is not a catalogue of designs");
    if (version > Catalogue::layoutVersion)
        throw CatalogueError(SQLITE_ERROR, "the catalogue was written by a newer version of velamo (layout " +
                                               std::to_string(version) + ", this one knows " +
                                               std::to_string(Catalogue::layoutVersion) + ")");
    return version;
}

/// Of another program's file neither the permissions are changed nor is anything left beside it.
void requireCatalogueOrNothing(const std::filesystem::path& file) {
    std::error_code error;
    const FileState state = stateOfFile(file, error);
    if (state.size > 0) static_cast<void>(checkedVersion(Database(file, Database::Opening::existing)));
}

void makeLayout(const Database& database) {
    database.run("BEGIN IMMEDIATE");
    database.run("DROP TABLE IF EXISTS designs; DROP TABLE IF EXISTS folders;");
    database.run(layout);
    database.run("COMMIT");
}

std::filesystem::path fileBeside(const std::filesystem::path& file, const char* ending) {
    auto beside = file;
    return beside += ending;
}

Database openedToSearch(const std::filesystem::path& file, Database::Opening opening) {
    Database database(file, opening);
    if (checkedVersion(database) < Catalogue::layoutVersion)
        throw CatalogueError(SQLITE_ERROR, "the catalogue has to be brought up to date first: run 'velamo index'");
    return database;
}

/// A catalogue that this process may not write, and may not write beside: on a read-only disk, or another user's. It is
/// read as it lies there; where a killed run left changes beside it, a copy takes them in. Nobody can be kept from
/// writing it meanwhile, so one looks afterwards whether somebody did.
class ReadOnlySource {
public:
    explicit ReadOnlySource(const std::filesystem::path& file) : file_(file) {}
    ~ReadOnlySource() {
        std::error_code ignored;
        if (!copies_.empty()) std::filesystem::remove_all(copies_, ignored);
    }
    ReadOnlySource(const ReadOnlySource&) = delete;
    ReadOnlySource& operator=(const ReadOnlySource&) = delete;

    [[nodiscard]] Database open() {
        if (states_.back().size == 0) return openedToSearch(file_, Database::Opening::unchanging);
        copies_ = makePrivateTemporaryFolder();
        const auto copy = copies_ / "catalogue";
        for (const char* ending : endings)
            std::filesystem::copy_file(fileBeside(file_, ending), fileBeside(copy, ending));
        return openedToSearch(copy, Database::Opening::existing);
    }
    /// What the body gives, or throws: if nobody wrote meanwhile, for else it means nothing.
    template <class Body>
    [[nodiscard]] auto unlessChanged(Body body) const {
        try {
            auto result = body();
            if (!hasChanged()) return result;
        } catch (const CatalogueError&) {
            if (!hasChanged()) throw;
        }
        throw CatalogueError(SQLITE_BUSY, "the catalogue was changed meanwhile; search again");
    }

private:
    [[nodiscard]] bool hasChanged() const { return statesNow() != states_; }

    static constexpr std::array endings{"", "-wal"};
    using States = std::array<FileState, endings.size()>;

    [[nodiscard]] States statesNow() const {
        States states;
        std::error_code error;  // a file that is not there has the size 0
        for (std::size_t i = 0; i < endings.size(); ++i)
            states.at(i) = stateOfFile(fileBeside(file_, endings.at(i)), error);
        return states;
    }

    std::filesystem::path file_;
    std::filesystem::path copies_;
    States states_ = statesNow();
};

/// Everything below a folder sorts between these two, its own path excluded.
struct BytesBelow {
    explicit BytesBelow(const std::filesystem::path& folder) : first(folder.native()) {
        if (!first.ends_with('/')) first += '/';
        behind = first;
        ++behind.back();
    }
    std::string first;
    std::string behind;
};

FileStamp stampAt(const Statement& row, int column) {
    return {row.integer(column), row.integer(column + 1)};
}

void bindStamp(Statement& statement, int parameter, const std::optional<FileStamp>& stamp) {
    if (stamp) {
        statement.bind(parameter, stamp->size).bind(parameter + 1, stamp->modified);
    } else {
        statement.bindNothing(parameter).bindNothing(parameter + 1);
    }
}

constexpr int firstFigure = 9;
constexpr int firstFailure = 13;

void bindContent(Statement& statement, const DesignAttributes& attributes) {
    int parameter = firstFigure;
    for (const float figure :
         {attributes.widthInMillimetres, attributes.heightInMillimetres, attributes.stitches, attributes.colors})
        statement.bind(parameter++, double{figure});
    for (parameter = firstFailure; parameter < firstFailure + 3; ++parameter) statement.bindNothing(parameter);
}

void bindContent(Statement& statement, const DesignFailure& failure) {
    for (int parameter = firstFigure; parameter < firstFigure + 4; ++parameter) statement.bindNothing(parameter);
    statement.bindText(firstFailure, failure.domain)
        .bind(firstFailure + 1, std::int64_t{failure.code})
        .bindText(firstFailure + 2, failure.message);
}

}  // namespace

struct Catalogue::State {
    using Clock = std::chrono::steady_clock;

    State(std::unique_ptr<FileLock> heldLock, Database openedDatabase)
        : lock(std::move(heldLock)), database(std::move(openedDatabase)) {}

    /// Opens a batch where none is open.
    void beginChange() {
        if (changes == 0) {
            database.run("BEGIN IMMEDIATE");
            batchStart = Clock::now();
        }
        ++changes;
    }

    std::unique_ptr<FileLock> lock;          // let go of after the database
    std::unique_ptr<ReadOnlySource> source;  // of a catalogue that cannot be written; it too goes after the database
    Database database;
    int changes = 0;  // in the open batch
    Clock::time_point batchStart;

    // Prepared once: a design is put in in a fifth of the time that a new statement takes.
    Statement findFolder = database.prepare("SELECT id FROM folders WHERE path = ?");
    Statement insertFolder = database.prepare("INSERT INTO folders (path, words) VALUES (?, ?) RETURNING id");
    Statement renameFolder = database.prepare("UPDATE folders SET words = ?2 WHERE id = ?1 AND words IS NOT ?2");
    Statement listDesigns = database.prepare(
        "SELECT name, size, modified, side_size, side_modified, reader, failure_code FROM designs WHERE folder = ?");
    Statement putDesign = database.prepare(
        "INSERT OR REPLACE INTO designs (folder, name, words, size, modified, side_size, side_modified, reader,"
        " width, height, stitches, colors, failure_domain, failure_code, failure_message)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    Statement removeDesign = database.prepare("DELETE FROM designs WHERE folder = ? AND name = ?");
};

Catalogue::Catalogue(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}
Catalogue::~Catalogue() = default;
Catalogue::Catalogue(Catalogue&&) noexcept = default;
Catalogue& Catalogue::operator=(Catalogue&&) noexcept = default;

Catalogue Catalogue::openForIndexing(const std::filesystem::path& file, const std::function<void()>& onWaiting) {
    makePrivateFolders(file.parent_path());
    requireRegularFile(file);
    requireCatalogueOrNothing(file);
    auto lock = std::make_unique<FileLock>(fileBeside(file, "-lock"), onWaiting);
    makePrivateFile(file);  // the engine gives those that it makes beside it the same rights
    for (const char* ending : {"", "-wal", "-shm", "-lock"}) closeToOthers(fileBeside(file, ending));
    Database database(file, Database::Opening::existingOrNew);
    const std::int64_t version = checkedVersion(database);
    // Readers go on reading while a batch is written, and a killed process leaves nothing half-written.
    database.run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;");
    if (version < layoutVersion) makeLayout(database);
    return Catalogue(std::make_unique<State>(std::move(lock), std::move(database)));
}

Catalogue Catalogue::openForSearching(const std::filesystem::path& file) {
    requireRegularFile(file);
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        throw CatalogueError(SQLITE_CANTOPEN, "no such catalogue; 'velamo index FOLDER' makes one");
    if (const auto reason = reasonAgainstReading(file)) throw std::system_error(reason);
    try {
        return Catalogue(std::make_unique<State>(nullptr, openedToSearch(file, Database::Opening::existing)));
    } catch (const CatalogueError& failure) {
        // Many may search at once because they write down where they read, which here they may not.
        if (failure.code() != SQLITE_CANTOPEN && failure.code() != SQLITE_READONLY) throw;
    }
    auto source = std::make_unique<ReadOnlySource>(file);
    auto state = source->unlessChanged([&] { return std::make_unique<State>(nullptr, source->open()); });
    state->source = std::move(source);
    return Catalogue(std::move(state));
}

std::vector<std::filesystem::path> Catalogue::roots() const {
    std::vector<std::filesystem::path> roots;
    Statement rows = state_->database.prepare("SELECT path FROM roots ORDER BY path");
    while (rows.next()) roots.emplace_back(rows.bytes(0));
    return roots;
}

void Catalogue::addRoot(const std::filesystem::path& root) {
    state_->beginChange();
    state_->database.prepare("INSERT OR IGNORE INTO roots (path) VALUES (?)").bindBytes(1, root.native()).run();
}

void Catalogue::removeRoot(const std::filesystem::path& root) {
    state_->beginChange();
    state_->database.prepare("DELETE FROM roots WHERE path = ?").bindBytes(1, root.native()).run();
}

std::optional<Catalogue::FolderId> Catalogue::findFolder(const std::filesystem::path& folder) {
    Statement& statement = state_->findFolder.bindBytes(1, folder.native());
    if (!statement.next()) return std::nullopt;
    const FolderId id = statement.integer(0);
    statement.reset();
    return id;
}

Catalogue::FolderId Catalogue::putFolder(const std::filesystem::path& folder, std::string_view words) {
    state_->beginChange();
    const std::string folded = foldedForSearch(words);
    if (const auto known = findFolder(folder)) {
        state_->renameFolder.bind(1, *known).bindText(2, folded).run();
        return *known;
    }
    Statement& statement = state_->insertFolder.bindBytes(1, folder.native()).bindText(2, folded);
    statement.next();
    const FolderId id = statement.integer(0);
    statement.run();
    return id;
}

std::map<std::string, KnownDesign> Catalogue::designsIn(FolderId folder) {
    std::map<std::string, KnownDesign> designs;
    Statement& row = state_->listDesigns.bind(1, folder);
    while (row.next()) {
        KnownDesign design{.stamp = {.design = stampAt(row, 1), .sideFile = {}, .reader = row.integer(5)},
                           .isBroken = !row.isNothing(6)};
        if (!row.isNothing(3)) design.stamp.sideFile = stampAt(row, 3);
        designs.emplace(row.bytes(0), design);
    }
    return designs;
}

void Catalogue::putDesign(FolderId folder, const std::string& name, const DesignStamp& stamp,
                          const DesignContent& content) {
    state_->beginChange();
    Statement& statement = state_->putDesign;
    statement.bind(1, folder).bindBytes(2, name).bindText(3, foldedForSearch(name));
    bindStamp(statement, 4, stamp.design);
    bindStamp(statement, 6, stamp.sideFile);
    statement.bind(8, stamp.reader);
    std::visit([&](const auto& found) { bindContent(statement, found); }, content);
    statement.run();
    commitIfDue();
}

void Catalogue::removeDesign(FolderId folder, const std::string& name) {
    state_->beginChange();
    state_->removeDesign.bind(1, folder).bindBytes(2, name).run();
    commitIfDue();
}

std::int64_t Catalogue::removeFolders(const std::filesystem::path& top, const IsKept& isKept) {
    const BytesBelow below(top);
    Statement rows =
        state_->database.prepare("SELECT id, path FROM folders WHERE path = ? OR (path >= ? AND path < ?)");
    rows.bindBytes(1, top.native()).bindBytes(2, below.first).bindBytes(3, below.behind);
    std::vector<FolderId> vanished;
    while (rows.next())
        if (!isKept(rows.integer(0), rows.bytes(1))) vanished.push_back(rows.integer(0));

    std::int64_t removed = 0;
    Statement removeDesigns = state_->database.prepare("DELETE FROM designs WHERE folder = ?");
    Statement removeFolder = state_->database.prepare("DELETE FROM folders WHERE id = ?");
    for (const FolderId folder : vanished) {
        state_->beginChange();
        removeDesigns.bind(1, folder).run();
        removed += state_->database.changedRows();
        removeFolder.bind(1, folder).run();
        commitIfDue();
    }
    return removed;
}

void Catalogue::removeEmptyFolders() {
    state_->beginChange();
    state_->database.run(
        "DELETE FROM folders WHERE NOT EXISTS (SELECT 1 FROM designs WHERE designs.folder = folders.id)");
}

void Catalogue::commitIfDue() {
    if (state_->changes >= mostChangesInBatch ||
        (state_->changes > 0 && State::Clock::now() - state_->batchStart >= longestBatch))
        commit();
}

void Catalogue::commit() {
    if (state_->changes == 0) return;
    state_->database.run("COMMIT");
    state_->changes = 0;
}

std::vector<FoundDesign> Catalogue::search(const SearchRequest& request) const {
    const auto search = [&] { return searchDesigns(state_->database, request); };
    return state_->source ? state_->source->unlessChanged(search) : search();
}

}  // namespace velamo
