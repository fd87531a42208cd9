#include "catalogue/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>

#include "velamo/platform/text/harmless_text.h"
#include "velamo/platform/text/text.h"
#include "velamo/platform/text/url_text.h"

namespace velamo {
namespace {

constexpr int waitInMilliseconds = 10'000;  // for another process to finish its transaction

[[noreturn]] void throwFailure(sqlite3* database, int result) {
    constexpr int primaryCode = 0xFF;
    const int code = result & primaryCode;
    // What is damaged may stand in the message, with line ends and all.
    const std::string_view whole = database != nullptr ? ::sqlite3_errmsg(database) : ::sqlite3_errstr(result);
    const std::string text = escapedForTerminal(whole.substr(0, whole.find('\n')));
    // Our statements are right, so that the engine refuses them only where tables are not what they were.
    constexpr std::array damages{SQLITE_CORRUPT, SQLITE_NOTADB, SQLITE_ERROR};
    if (std::find(damages.begin(), damages.end(), code) == damages.end()) throw CatalogueError(code, text);
    throw CatalogueError(code, "this is no catalogue, or a damaged one (" + text +
                                   "); move the file away, with those beside it that end in -wal and -shm, and run "
                                   "'velamo index FOLDER' anew");
}

sqlite3_uint64 lengthOf(std::string_view bytes) noexcept {
    return bytes.size();
}

/// A null pointer would be bound as nothing.
const char* startOf(std::string_view bytes) noexcept {
    return bytes.empty() ? "" : bytes.data();
}

void holdsAll(sqlite3_context* call, int, sqlite3_value** arguments) {
    const auto bytesOf = [](const void* start, int size) {
        return start == nullptr ? std::string_view()
                                : std::string_view(static_cast<const char*>(start), static_cast<std::size_t>(size));
    };
    const auto* start = ::sqlite3_value_text(arguments[0]);  // before its size is asked for
    const auto text = bytesOf(start, ::sqlite3_value_bytes(arguments[0]));
    const auto* firstPart = ::sqlite3_value_blob(arguments[1]);
    auto parts = bytesOf(firstPart, ::sqlite3_value_bytes(arguments[1]));
    bool holds = true;
    while (holds && !parts.empty()) {
        const auto part = parts.substr(0, parts.find('\0'));
        holds = text.find(part) != text.npos;
        parts.remove_prefix(std::min(part.size() + 1, parts.size()));
    }
    ::sqlite3_result_int(call, holds ? 1 : 0);
}

int flagsFor(Database::Opening opening) noexcept {
    constexpr int always = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    if (opening == Database::Opening::unchanging) return always | SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    const bool mayMake = opening == Database::Opening::existingOrNew;
    return always | SQLITE_OPEN_READWRITE | (mayMake ? SQLITE_OPEN_CREATE : 0);
}

/// The engine has a meaning of its own for names such as ":memory:" and "file:x", but none for an absolute path.
std::string nameFor(const std::filesystem::path& file, Database::Opening opening) {
    const auto path = std::filesystem::absolute(file);
    return opening == Database::Opening::unchanging ? locationText(path) + "?immutable=1" : path.native();
}

}  // namespace

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
    ::sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* database, std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = ::sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
    if (result != SQLITE_OK) throwFailure(database, result);
    statement_.reset(statement);
}

void Statement::check(int result) const {
    if (result != SQLITE_OK) throwFailure(::sqlite3_db_handle(statement_.get()), result);
}

Statement& Statement::bind(int parameter, std::int64_t value) {
    check(::sqlite3_bind_int64(statement_.get(), parameter, value));
    return *this;
}

Statement& Statement::bind(int parameter, double value) {
    check(::sqlite3_bind_double(statement_.get(), parameter, value));
    return *this;
}

Statement& Statement::bindText(int parameter, std::string_view text) {
    check(::sqlite3_bind_text64(statement_.get(), parameter, startOf(text), lengthOf(text), SQLITE_TRANSIENT,
                                SQLITE_UTF8));
    return *this;
}

Statement& Statement::bindBytes(int parameter, std::string_view bytes) {
    check(::sqlite3_bind_blob64(statement_.get(), parameter, startOf(bytes), lengthOf(bytes), SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::bindNothing() {
    check(::sqlite3_clear_bindings(statement_.get()));
    return *this;
}

bool Statement::next() {
    const int result = ::sqlite3_step(statement_.get());
    if (result == SQLITE_ROW) return true;
    const int afterwards = ::sqlite3_reset(statement_.get());
    if (result != SQLITE_DONE) throwFailure(::sqlite3_db_handle(statement_.get()), afterwards);
    return false;
}

void Statement::run() {
    while (next()) {
    }
}

void Statement::reset() noexcept {
    ::sqlite3_reset(statement_.get());
}

bool Statement::isNothing(int column) const noexcept {
    return ::sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const noexcept {
    return ::sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const noexcept {
    return ::sqlite3_column_double(statement_.get(), column);
}

std::string Statement::bytes(int column) const {
    const auto* start = static_cast<const char*>(::sqlite3_column_blob(statement_.get(), column));
    const int length = ::sqlite3_column_bytes(statement_.get(), column);
    return start == nullptr ? std::string() : std::string(start, static_cast<std::size_t>(length));
}

void Database::Closer::operator()(sqlite3* database) const noexcept {
    ::sqlite3_close_v2(database);
}

Database::Database(const std::filesystem::path& file, Opening opening) {
    sqlite3* database = nullptr;
    int result = ::sqlite3_open_v2(nameFor(file, opening).c_str(), &database, flagsFor(opening), nullptr);
    database_.reset(database);
    constexpr int purity = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (result == SQLITE_OK)
        result = ::sqlite3_create_function_v2(database, "holds_all", 2, purity, nullptr, holdsAll, nullptr, nullptr,
                                              nullptr);
    if (result != SQLITE_OK) throwFailure(database, result);
    ::sqlite3_busy_timeout(database, waitInMilliseconds);
}

void Database::run(const char* sql) const {
    const int result = ::sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) throwFailure(database_.get(), result);
}

std::int64_t Database::number(std::string_view query) const {
    Statement statement = prepare(query);
    return statement.next() ? statement.integer(0) : 0;
}

std::int64_t Database::changedRows() const noexcept {
    return ::sqlite3_changes64(database_.get());
}

}  // namespace velamo
