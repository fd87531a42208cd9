#include "catalogue/layout.h"

#include <sqlite3.h>

#include <array>
#include <string>

namespace velamo {
namespace {

constexpr std::int64_t applicationId = 0x564C4D43;  // marks the file as ours: "VLMC"

/// What leads from a layout to the next; the first one from an empty file, or from what there was before layouts were
/// counted, of which the roots alone are kept.
constexpr std::array<const char*, catalogueLayout> steps{
    R"sql(
    PRAGMA application_id = 1447841091;
    DROP TABLE IF EXISTS designs;
    DROP TABLE IF EXISTS folders;
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
)sql",
    // Numbers that are never given to another design, and all that a file tells besides the four attributes.
    R"sql(
    ALTER TABLE folders ADD COLUMN device INTEGER;
    ALTER TABLE designs RENAME TO designs_1;
    CREATE TABLE designs (
        id INTEGER PRIMARY KEY AUTOINCREMENT,
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
        format TEXT,
        version INTEGER,
        jumps INTEGER,
        trims INTEGER,
        blocks INTEGER,
        length REAL,
        hoop_vendor TEXT,
        hoop_name TEXT,
        hoop_width INTEGER,
        hoop_height INTEGER,
        hash BLOB,
        failure_domain TEXT,
        failure_code INTEGER,
        failure_message TEXT,
        UNIQUE (folder, name));
    CREATE TABLE threads (
        design INTEGER NOT NULL REFERENCES designs (id) ON DELETE CASCADE,
        position INTEGER NOT NULL,
        color INTEGER,
        name TEXT,
        palette TEXT,
        stitches INTEGER NOT NULL,
        length REAL NOT NULL,
        PRIMARY KEY (design, position)) WITHOUT ROWID;
    CREATE TABLE archives (
        path BLOB PRIMARY KEY,
        size INTEGER NOT NULL,
        modified INTEGER NOT NULL,
        reader INTEGER NOT NULL,
        designs INTEGER NOT NULL,
        broken INTEGER NOT NULL) WITHOUT ROWID;
    CREATE INDEX threads_by_color ON threads (color, design);
    INSERT INTO designs (folder, name, words, size, modified, side_size, side_modified, reader, width, height, stitches,
                         colors, failure_domain, failure_code, failure_message)
        SELECT folder, name, words, size, modified, side_size, side_modified, 0, width, height, stitches,
               colors, failure_domain, failure_code, failure_message FROM designs_1;
    DROP TABLE designs_1;
)sql"};
static_assert(applicationId == 1447841091);

bool isEmpty(const Database& database) {
    return database.number("SELECT count(*) FROM sqlite_master") == 0;
}

}  // namespace

std::int64_t checkedLayout(const Database& database) {
    const std::int64_t application = database.number("PRAGMA application_id");
    const std::int64_t version = database.number("PRAGMA user_version");
    if (application != applicationId && !(application == 0 && version == 0 && isEmpty(database)))
        throw CatalogueError(SQLITE_NOTADB, "this database is not a catalogue of designs");
    if (version > catalogueLayout)
        throw CatalogueError(SQLITE_ERROR, "the catalogue was written by a newer version of velamo (layout " +
                                               std::to_string(version) + ", this one knows " +
                                               std::to_string(catalogueLayout) + ")");
    return version;
}

void bringLayoutUpToDate(const Database& database) {
    const auto before = static_cast<std::size_t>(checkedLayout(database));
    if (before == steps.size()) return;
    database.run("BEGIN IMMEDIATE");
    for (std::size_t step = before; step < steps.size(); ++step) database.run(steps.at(step));
    database.run(("PRAGMA user_version = " + std::to_string(steps.size()) + "; COMMIT").c_str());
}

}  // namespace velamo
