#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace velamo {

/// The catalogue's file cannot be used. The text is for a person and does not name the file.
class CatalogueError : public std::runtime_error {
public:
    CatalogueError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    /// The number of the failure as the database engine counts them.
    [[nodiscard]] int code() const noexcept { return code_; }

private:
    int code_;
};

/// A statement ready to run. Parameters are numbered from 1, columns from 0. Every failure throws CatalogueError.
class Statement {
public:
    Statement(sqlite3* database, std::string_view sql);

    Statement& bind(int parameter, std::int64_t value);
    Statement& bind(int parameter, double value);
    Statement& bindText(int parameter, std::string_view text);
    /// Bytes as they are, so that a name that is no UTF-8 comes back unchanged.
    Statement& bindBytes(int parameter, std::string_view bytes);
    /// Leaves every parameter without a value.
    Statement& bindNothing();

    /// Goes to the next row; false at the end, after which the statement is ready to be bound and run again.
    bool next();
    /// Runs a statement that gives no rows, or whose rows are of no interest.
    void run();
    /// Leaves the rest of the rows.
    void reset() noexcept;

    [[nodiscard]] bool isNothing(int column) const noexcept;
    [[nodiscard]] std::int64_t integer(int column) const noexcept;
    [[nodiscard]] double real(int column) const noexcept;
    [[nodiscard]] std::string bytes(int column) const;  // of a text, too

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    void check(int result) const;

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

/// An open database file, which its path alone names, whatever the engine makes of other names. Every failure throws
/// CatalogueError. Its statements have a function of their own: holds_all(TEXT, PARTS) is 1 where the text holds each
/// of the parts, bytes that end with a zero byte each; SQL has no conditions without end.
class Database {
public:
    /// `unchanging`: nothing is written, not even beside the file, and no other process is expected to write it; what a
    /// killed process left in the file "-wal" is not seen.
    enum class Opening : std::uint8_t { existing, existingOrNew, unchanging };
    Database(const std::filesystem::path& file, Opening opening);

    [[nodiscard]] Statement prepare(std::string_view sql) const { return {database_.get(), sql}; }
    /// Runs statements without parameters, separated by semicolons.
    void run(const char* sql) const;
    /// The first number that a query without parameters gives.
    [[nodiscard]] std::int64_t number(std::string_view query) const;
    /// How many rows the last statement changed.
    [[nodiscard]] std::int64_t changedRows() const noexcept;

private:
    struct Closer {
        void operator()(sqlite3* database) const noexcept;
    };
    std::unique_ptr<sqlite3, Closer> database_;
};

}  // namespace velamo
