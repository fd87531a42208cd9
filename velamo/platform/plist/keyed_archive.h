#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velamo {

/// Writes objects under keys into the property-list layout of Apple's keyed archiver: "$archiver", "$version", "$top"
/// with the root's reference, and "$objects", a flat table in which index 0 is "$null" and every object is a dictionary
/// of its keys and its "$class". Plain values stand in the dictionary itself, texts and objects in the table. Keys, and
/// with them the objects in the table, stand in the order in which they are encoded; each key is to be encoded once.
/// Every operation may throw std::bad_alloc and what its body throws.
class KeyedArchiver {
public:
    using Body = std::function<void(KeyedArchiver&)>;

    /// The archive of one root object, whose keys `body` encodes, as an XML property list: the writer of binary ones
    /// takes minutes for a large design.
    [[nodiscard]] static std::vector<std::uint8_t> archiveRoot(std::string_view className, const Body& body);

    void encodeFloat(std::string_view key, float value);
    void encodeInteger(std::string_view key, std::int32_t value);
    void encodeBool(std::string_view key, bool value);
    /// An absent text, location or object is written as a reference to "$null".
    void encodeText(std::string_view key, const std::optional<std::string>& text);
    /// A file location as a URL object (percent-encoded "file://" text, so that any byte of a path survives; of a
    /// relative path the text is relative too).
    void encodeLocation(std::string_view key, const std::optional<std::filesystem::path>& location);
    void encodeObject(std::string_view key, std::string_view className, const Body& body);
    void encodeNothing(std::string_view key);
    /// A list of `count` objects of one class; `body` encodes the keys of the object with the given index.
    void encodeList(std::string_view key, std::string_view className, std::size_t count,
                    const std::function<void(KeyedArchiver&, std::size_t)>& body);

private:
    class Table;
    KeyedArchiver(Table& table, void* object) noexcept : table_(&table), object_(object) {}
    Table* table_;
    void* object_;  // libplist's dictionary of the object being encoded
};

/// Why an archive was refused, in words for a person.
class KeyedArchiveError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads what KeyedArchiver writes (and what Apple's archiver writes of such objects), in XML or binary form. A missing
/// key gives zero, false or nothing. A value of the wrong kind (an integer will do for a float, and integers and
/// booleans for each other), a reference outside the table, a reference that leads back to an object being decoded,
/// another class than the one asked for, or more to decode than an archive of that size can hold throws
/// KeyedArchiveError. Every operation may also throw std::bad_alloc and what its body throws.
class KeyedUnarchiver {
public:
    using Body = std::function<void(KeyedUnarchiver&)>;

    /// Decodes the root object by `body`. Throws KeyedArchiveError when the bytes are no archive of that class.
    static void unarchiveRoot(std::span<const std::uint8_t> archive, std::string_view className, const Body& body);

    [[nodiscard]] float decodeFloat(std::string_view key);
    [[nodiscard]] std::int32_t decodeInteger(std::string_view key);
    [[nodiscard]] bool decodeBool(std::string_view key);
    [[nodiscard]] std::optional<std::string> decodeText(std::string_view key);
    [[nodiscard]] std::optional<std::filesystem::path> decodeLocation(std::string_view key);
    /// Runs `body` on the object under the key and returns true; returns false without running it when there is none.
    bool decodeObject(std::string_view key, std::string_view className, const Body& body);
    /// Runs `body` on each object of the list in order, after `begin` was told their number, which is never more than
    /// the archive has bytes. Returns false when there is no list.
    bool decodeList(std::string_view key, std::string_view className, const std::function<void(std::size_t)>& begin,
                    const Body& body);

private:
    class Archive;
    KeyedUnarchiver(Archive& archive, void* object) noexcept : archive_(&archive), object_(object) {}
    Archive* archive_;
    void* object_;  // libplist's dictionary of the object being decoded
};

}  // namespace velamo
