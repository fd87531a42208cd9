#include "catalogue/catalogue.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "catalogue/layout.h"
#include "catalogue/places.h"
#include "velamo/platform/system/file_lock.h"
#include "velamo/platform/system/private_files.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

constexpr int mostChangesInBatch = 500;  // a tenth of the time that each on its own takes
constexpr std::chrono::seconds longestBatch{1};

void requireRegularFile(const std::filesystem::path& file) {
    // Opening a pipe could wait for ever, and a device obeys.
    std::error_code error;
    const FileState state = stateOfFile(file, error);
    if (error == std::errc::no_such_file_or_directory) return;
    if (error) throw std::system_error(error);
    if (state.kind != FileKind::regular) throw CatalogueError(SQLITE_CANTOPEN, "not a regular file");
}

/// Of another program's file neither the permissions are changed nor is anything left beside it.
void requireCatalogueOrNothing(const std::filesystem::path& file) {
    std::error_code error;
    const FileState state = stateOfFile(file, error);
    if (state.size > 0) static_cast<void>(checkedLayout(Database(file, Database::Opening::existing)));
}

std::filesystem::path fileBeside(const std::filesystem::path& file, const char* ending) {
    auto beside = file;
    return beside += ending;
}

Database openedToSearch(const std::filesystem::path& file, Database::Opening opening) {
    Database database(file, opening);
    if (checkedLayout(database) < catalogueLayout)
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

/// Of a folder's path, which bindPlace binds.
constexpr std::string_view atOrBelow = "(path = ?1 OR (path >= ?2 AND path < ?3))";

void bindPlace(Statement& statement, const std::filesystem::path& folder) {
    const BytesBelow below(folder);
    statement.bindBytes(1, folder.native()).bindBytes(2, below.first).bindBytes(3, below.behind);
}

FileStamp stampAt(const Statement& row, int column) {
    return {row.integer(column), row.integer(column + 1)};
}

/// What a design is stored in, in the order of its values.
constexpr std::array designColumns{
    "folder",     "name",        "words",          "size",         "modified",       "side_size",   "side_modified",
    "reader",     "hash",        "width",          "height",       "stitches",       "colors",      "format",
    "version",    "jumps",       "trims",          "blocks",       "length",         "hoop_vendor", "hoop_name",
    "hoop_width", "hoop_height", "failure_domain", "failure_code", "failure_message"};

/// Puts a design in; one that is there already keeps its number.
std::string putDesignText() {
    std::string columns;
    std::string places;
    std::string changes;
    for (const char* column : designColumns) {
        const char* const separator = columns.empty() ? "" : ", ";
        columns.append(separator).append(column);
        places.append(separator).append("?");
        changes.append(separator).append(column).append(" = excluded.").append(column);
    }
    return "INSERT INTO designs (" + columns + ") VALUES (" + places + ") ON CONFLICT (folder, name) DO UPDATE SET " +
           changes + " RETURNING id";
}

/// Binds values one after the other; those that are not bound are nothing.
class Binder {
public:
    explicit Binder(Statement& statement) : statement_(statement) { statement.bindNothing(); }

    Binder& put(std::int64_t value) {
        statement_.bind(next_++, value);
        return *this;
    }
    Binder& put(double value) {
        statement_.bind(next_++, value);
        return *this;
    }
    Binder& put(const Text& text) { return text ? putText(*text) : skip(1); }
    Binder& putText(std::string_view text) {
        statement_.bindText(next_++, text);
        return *this;
    }
    Binder& putBytes(std::string_view bytes) {
        statement_.bindBytes(next_++, bytes);
        return *this;
    }
    Binder& put(const std::optional<FileStamp>& stamp) {
        return stamp ? put(stamp->size).put(stamp->modified) : skip(2);
    }
    Binder& put(std::optional<std::uint64_t> number) {
        return number ? put(static_cast<std::int64_t>(*number)) : skip(1);
    }
    Binder& put(const std::optional<Sha256>& hash) {
        return hash ? putBytes({reinterpret_cast<const char*>(hash->data()), hash->size()}) : skip(1);
    }
    Binder& skip(int count) noexcept {
        next_ += count;
        return *this;
    }

private:
    Statement& statement_;
    int next_ = 1;
};

constexpr int figuresOfHoop = 4;
constexpr int figuresOfDesign = 10 + figuresOfHoop;  // which a broken one lacks

void bindContent(Binder& binder, const DesignFacts& facts) {
    const DesignAttributes& attributes = facts.attributes;
    for (const float figure :
         {attributes.widthInMillimetres, attributes.heightInMillimetres, attributes.stitches, attributes.colors})
        binder.put(double{figure});
    binder.putText(facts.format).put(std::int64_t{facts.version}).put(facts.jumps).put(facts.trims).put(facts.blocks);
    binder.put(facts.length);
    if (!facts.hoop) return;
    binder.put(facts.hoop->vendor).put(facts.hoop->name);
    binder.put(std::int64_t{facts.hoop->width}).put(std::int64_t{facts.hoop->height});
}

void bindContent(Binder& binder, const DesignFailure& failure) {
    binder.skip(figuresOfDesign).putText(failure.domain).put(std::int64_t{failure.code}).putText(failure.message);
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

    template <class Body>
    [[nodiscard]] auto read(Body body) const {
        return source ? source->unlessChanged(body) : body();
    }

    void putThreads(std::int64_t design, const std::vector<ThreadFacts>& threads) {
        removeThreads.bind(1, design).run();
        std::int64_t position = 0;
        for (const ThreadFacts& thread : threads) {
            Binder binder(putThread);
            binder.put(design).put(position++);
            binder.put(std::optional<std::uint64_t>(thread.color));
            binder.put(thread.name).put(thread.palette).put(thread.stitches).put(thread.length);
            putThread.run();
        }
    }

    std::unique_ptr<FileLock> lock;          // let go of after the database
    std::unique_ptr<ReadOnlySource> source;  // of a catalogue that cannot be written; it too goes after the database
    Database database;
    int changes = 0;  // in the open batch
    Clock::time_point batchStart;

    // Prepared once: a design is put in in a fifth of the time that a new statement takes.
    Statement findFolder = database.prepare("SELECT id FROM folders WHERE path = ?");
    Statement insertFolder =
        database.prepare("INSERT INTO folders (path, words, device) VALUES (?, ?, ?) RETURNING id");
    Statement changeFolder = database.prepare(
        "UPDATE folders SET words = ?2, device = ?3 WHERE id = ?1 AND (words IS NOT ?2 OR device IS NOT ?3)");
    Statement listDesigns = database.prepare(
        "SELECT name, size, modified, side_size, side_modified, reader, failure_code FROM designs WHERE folder = ?");
    Statement putDesign = database.prepare(putDesignText());
    Statement removeThreads = database.prepare("DELETE FROM threads WHERE design = ?");
    Statement putThread = database.prepare(
        "INSERT INTO threads (design, position, color, name, palette, stitches, length) VALUES (?, ?, ?, ?, ?, ?, ?)");
    Statement findArchive =
        database.prepare("SELECT size, modified, reader, designs, broken FROM archives WHERE path = ?");
    Statement putArchive = database.prepare(
        "INSERT OR REPLACE INTO archives (path, size, modified, reader, designs, broken) VALUES (?, ?, ?, ?, ?, ?)");
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
    static_cast<void>(checkedLayout(database));
    // Readers go on reading while a batch is written, and a killed process leaves nothing half-written.
    database.run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;");
    bringLayoutUpToDate(database);
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

Catalogue::FolderId Catalogue::putFolder(const std::filesystem::path& folder, std::string_view words,
                                         std::optional<std::uint64_t> device) {
    state_->beginChange();
    const std::string folded = foldedForSearch(words);
    if (const auto known = findFolder(folder)) {
        Binder(state_->changeFolder).put(*known).putText(folded).put(device);
        state_->changeFolder.run();
        return *known;
    }
    Statement& statement = state_->insertFolder;
    Binder(statement).putBytes(folder.native()).putText(folded).put(device);
    statement.next();
    const FolderId id = statement.integer(0);
    statement.run();
    return id;
}

std::optional<std::uint64_t> Catalogue::deviceOf(const std::filesystem::path& folder) const {
    Statement row = state_->database.prepare("SELECT device FROM folders WHERE device IS NOT NULL AND " +
                                             std::string(atOrBelow) + " LIMIT 1");
    bindPlace(row, folder);
    return row.next() ? std::optional(static_cast<std::uint64_t>(row.integer(0))) : std::nullopt;
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

void Catalogue::putDesign(FolderId folder, const std::string& name, const DesignStamp& stamp, const FileFacts& facts,
                          std::string_view words) {
    state_->beginChange();
    Binder binder(state_->putDesign);
    binder.put(folder)
        .putBytes(name)
        .putText(foldedForSearch(words.empty() ? name : words))
        .put(std::optional(stamp.design));
    binder.put(stamp.sideFile).put(stamp.reader).put(facts.hash);
    std::visit([&](const auto& content) { bindContent(binder, content); }, facts.content);
    state_->putDesign.next();
    const std::int64_t id = state_->putDesign.integer(0);
    state_->putDesign.run();
    const auto* design = std::get_if<DesignFacts>(&facts.content);
    state_->putThreads(id, design == nullptr ? std::vector<ThreadFacts>() : design->threads);
    commitIfDue();
}

void Catalogue::removeDesign(FolderId folder, const std::string& name) {
    state_->beginChange();
    state_->removeDesign.bind(1, folder).bindBytes(2, name).run();
    commitIfDue();
}

std::optional<KnownArchive> Catalogue::findArchive(const std::filesystem::path& archive) {
    Statement& row = state_->findArchive.bindBytes(1, archive.native());
    if (!row.next()) return std::nullopt;
    const KnownArchive known{stampAt(row, 0), row.integer(2), row.integer(3), row.integer(4)};
    row.reset();
    return known;
}

void Catalogue::putArchive(const std::filesystem::path& archive, const KnownArchive& known) {
    state_->beginChange();
    Binder binder(state_->putArchive);
    binder.putBytes(archive.native()).put(std::optional(known.stamp)).put(known.reader);
    binder.put(known.designs).put(known.broken);
    state_->putArchive.run();
    commitIfDue();
}

void Catalogue::removeArchive(const std::filesystem::path& archive) {
    state_->beginChange();
    state_->database.prepare("DELETE FROM archives WHERE path = ?").bindBytes(1, archive.native()).run();
    commitIfDue();
}

std::vector<std::filesystem::path> Catalogue::archivesBelow(const std::filesystem::path& folder) const {
    Statement row = state_->database.prepare("SELECT path FROM archives WHERE " + std::string(atOrBelow));
    bindPlace(row, folder);
    std::vector<std::filesystem::path> archives;
    while (row.next()) archives.emplace_back(row.bytes(0));
    return archives;
}

std::vector<Catalogue::FolderId> Catalogue::foldersBelow(const std::filesystem::path& top) const {
    Statement row = state_->database.prepare("SELECT id FROM folders WHERE " + std::string(atOrBelow));
    bindPlace(row, top);
    std::vector<FolderId> folders;
    while (row.next()) folders.push_back(row.integer(0));
    return folders;
}

std::int64_t Catalogue::removeFolders(const std::filesystem::path& top, const IsKept& isKept) {
    Statement rows = state_->database.prepare("SELECT id, path FROM folders WHERE " + std::string(atOrBelow));
    bindPlace(rows, top);
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

std::optional<std::int64_t> Catalogue::forget(const std::filesystem::path& place) {
    bool isKnown = false;
    for (const auto& root : roots()) {
        if (!isWithin(root, place)) continue;
        removeRoot(root);
        isKnown = true;
    }
    for (const auto& archive : archivesBelow(place)) removeArchive(archive);
    // One of which a part is forgotten is gone through anew.
    for (auto around = place.parent_path(); around.has_relative_path(); around = around.parent_path())
        removeArchive(around);
    std::int64_t removed = removeFolders(place, [](FolderId, const std::filesystem::path&) { return false; });
    const auto folder = findFolder(place.parent_path());
    if (folder && designsIn(*folder).contains(place.filename())) {
        removeDesign(*folder, place.filename());
        ++removed;
    }
    removeEmptyFolders();
    commit();
    return isKnown || removed > 0 ? std::optional(removed) : std::nullopt;
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
    auto found = state_->read([&] { return searchDesigns(state_->database, request); });
    AwayPlaces away(roots());
    for (FoundDesign& design : found) design.isAway = away.contains(design.file.parent_path(), design.device);
    return found;
}

std::int64_t Catalogue::count(const SearchRequest& request) const {
    return state_->read([&] { return countDesigns(state_->database, request); });
}

}  // namespace velamo
