#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <string>

namespace velamo::test {

/// Runs SQL on a file behind its owner's back; the first column of the last row, as text.
inline std::string runSql(const std::filesystem::path& file, const std::string& sql) {
    sqlite3* database = nullptr;
    ::sqlite3_open(file.c_str(), &database);
    std::string last;
    ::sqlite3_exec(
        database, sql.c_str(),
        [](void* text, int count, char** columns, char**) {
            if (count > 0 && columns[0] != nullptr) *static_cast<std::string*>(text) = columns[0];
            return 0;
        },
        &last, nullptr);
    ::sqlite3_close(database);
    return last;
}

}  // namespace velamo::test
