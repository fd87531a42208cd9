#include "platform/keyed_archive.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>

#include "platform/binary_list.h"
#include "platform/property_list.h"

namespace velamo {
namespace {

constexpr std::string_view archiverName = "NSKeyedArchiver";
constexpr std::int64_t archiveVersion = 100000;
constexpr std::string_view nullText = "$null";
constexpr std::string_view classKey = "$class";
constexpr std::string_view rootClass = "NSObject";
constexpr std::string_view listClass = "NSMutableArray";
constexpr std::string_view plainListClass = "NSArray";
constexpr std::string_view listKey = "NS.objects";
constexpr std::string_view locationClass = "NSURL";
constexpr std::string_view locationBaseKey = "NS.base";
constexpr std::string_view locationKey = "NS.relative";
constexpr std::string_view textClass = "NSString";
constexpr std::string_view mutableTextClass = "NSMutableString";
constexpr std::string_view textKey = "NS.string";

std::vector<std::string_view> superclassesOf(std::string_view className) {
    if (className == listClass) return {plainListClass, rootClass};
    return {rootClass};
}

constexpr std::string_view fileScheme = "file:";
constexpr std::string_view hexadecimal = "0123456789ABCDEF";

bool standsForItself(char c) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter || (c >= '0' && c <= '9') || std::string_view("-._~/").find(c) != std::string_view::npos;
}

std::string locationText(const std::filesystem::path& path) {
    std::string text = path.is_absolute() ? "file://" : "";
    for (const char c : path.native()) {
        if (standsForItself(c)) {
            text += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        text.append(1, '%').append(1, hexadecimal[byte >> 4]).append(1, hexadecimal[byte & 0x0F]);
    }
    return text;
}

int digitOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Nothing when a percent sign does not introduce a byte.
std::optional<std::string> withoutPercents(std::string_view text) {
    std::string result;
    for (; !text.empty(); text.remove_prefix(1)) {
        if (text.front() != '%') {
            result += text.front();
            continue;
        }
        const int high = text.size() > 2 ? digitOf(text[1]) : -1;
        const int low = text.size() > 2 ? digitOf(text[2]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        text.remove_prefix(2);
    }
    return result;
}

bool hasScheme(std::string_view text) {
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && text.find('/') > colon;
}

// The path of a URL of this machine's files, still percent-encoded; nothing for another URL.
std::optional<std::string_view> encodedPath(std::string_view url) {
    if (!url.starts_with(fileScheme)) return hasScheme(url) ? std::nullopt : std::optional(url);
    url.remove_prefix(fileScheme.size());
    for (const std::string_view host : {"//localhost/", "///"}) {
        if (url.starts_with(host)) return url.substr(host.size() - 1);
    }
    const bool isPath = url.starts_with('/') && !url.starts_with("//");
    return isPath ? std::optional(url) : std::nullopt;
}

std::optional<std::filesystem::path> pathOfLocation(std::string_view url) {
    const auto encoded = encodedPath(url);
    const auto path = encoded ? withoutPercents(*encoded) : std::nullopt;
    if (!path || path->find('\0') != std::string::npos) return std::nullopt;
    return std::filesystem::path(*path);
}

}  // namespace

struct KeyedArchiver::Entries {
    std::vector<BinaryListWriter::Index> keys;
    std::vector<BinaryListWriter::Index> values;
};

struct KeyedArchiver::Table {
    using Index = BinaryListWriter::Index;

    BinaryListWriter writer;
    std::vector<Index> objects{writer.text(nullText)};
    std::map<std::string, std::size_t, std::less<>> classes;  // where in the table each class is

    void put(Entries& entries, std::string_view key, Index value) {
        entries.keys.push_back(writer.text(key));
        entries.values.push_back(value);
    }

    Index add(Index object) {
        objects.push_back(object);
        return writer.uid(objects.size() - 1);
    }

    Index addClass(std::string_view name) {
        if (const auto known = classes.find(name); known != classes.end()) return writer.uid(known->second);
        std::vector<Index> chain{writer.text(name)};
        for (const std::string_view superclass : superclassesOf(name)) chain.push_back(writer.text(superclass));
        Entries entries;
        put(entries, "$classname", chain.front());
        put(entries, "$classes", writer.array(chain));
        classes.emplace(name, objects.size());
        return add(writer.dictionary(entries.keys, entries.values));
    }

    // An object stands before what it refers to, its class behind all of that.
    Index addObject(std::string_view className, const Body& body) {
        Entries entries;
        return addObject(className, body, entries);
    }

    Index addObject(std::string_view className, const Body& body, Entries& entries) {
        const std::size_t place = objects.size();
        objects.push_back(objects.front());
        entries.keys.clear();
        entries.values.clear();
        KeyedArchiver archiver(*this, entries);
        body(archiver);
        put(entries, classKey, addClass(className));
        objects[place] = writer.dictionary(entries.keys, entries.values);
        return writer.uid(place);
    }

    Index addList(std::string_view className, std::size_t count,
                  const std::function<void(KeyedArchiver&, std::size_t)>& body) {
        return addObject(listClass, [&](KeyedArchiver& list) {
            std::vector<Index> references;
            references.reserve(count);
            Entries entries;  // one for all, for its memory
            for (std::size_t i = 0; i < count; ++i) {
                references.push_back(addObject(
                    className, [&](KeyedArchiver& object) { body(object, i); }, entries));
            }
            put(*list.entries_, listKey, writer.array(references));
        });
    }

    std::vector<std::uint8_t> finish(Index root) {
        Entries top;
        put(top, "root", root);
        Entries entries;
        put(entries, "$version", writer.integer(archiveVersion));
        put(entries, "$archiver", writer.text(archiverName));
        put(entries, "$top", writer.dictionary(top.keys, top.values));
        put(entries, "$objects", writer.array(objects));
        return writer.finish(writer.dictionary(entries.keys, entries.values));
    }
};

std::vector<std::uint8_t> KeyedArchiver::archiveRoot(std::string_view className, const Body& body) {
    Table table;
    return table.finish(table.addObject(className, body));
}

void KeyedArchiver::encodeFloat(std::string_view key, float value) {
    table_->put(*entries_, key, table_->writer.real(static_cast<double>(value)));
}

void KeyedArchiver::encodeInteger(std::string_view key, std::int32_t value) {
    table_->put(*entries_, key, table_->writer.integer(value));
}

void KeyedArchiver::encodeBool(std::string_view key, bool value) {
    table_->put(*entries_, key, table_->writer.boolean(value));
}

void KeyedArchiver::encodeText(std::string_view key, const std::optional<std::string>& text) {
    if (!text) return encodeNothing(key);
    table_->put(*entries_, key, table_->add(table_->writer.text(*text)));
}

void KeyedArchiver::encodeLocation(std::string_view key, const std::optional<std::filesystem::path>& location) {
    if (!location) return encodeNothing(key);
    encodeObject(key, locationClass, [&](KeyedArchiver& url) {
        url.encodeNothing(locationBaseKey);
        url.encodeText(locationKey, locationText(*location));
    });
}

void KeyedArchiver::encodeObject(std::string_view key, std::string_view className, const Body& body) {
    table_->put(*entries_, key, table_->addObject(className, body));
}

void KeyedArchiver::encodeNothing(std::string_view key) {
    table_->put(*entries_, key, table_->writer.uid(0));
}

void KeyedArchiver::encodeList(std::string_view key, std::string_view className, std::size_t count,
                               const std::function<void(KeyedArchiver&, std::size_t)>& body) {
    table_->put(*entries_, key, table_->addList(className, count, body));
}

namespace {

using Kind = BinaryList::Kind;
using Object = BinaryList::Object;

[[noreturn]] void refuse(const std::string& reason) {
    throw KeyedArchiveError("The archive cannot be read: " + reason);
}

std::string inQuotes(std::string_view name) {
    return '"' + std::string(name) + '"';
}

[[noreturn]] void refuseKind(std::string_view key, std::string_view wanted) {
    refuse("the value of " + inQuotes(key) + " is no " + std::string(wanted) + ".");
}

// Shared objects may be decoded again and again; this much of it for each byte of the archive is more than any honest
// one needs and keeps a hostile one from taking time and memory without end.
constexpr std::size_t workPerByte = 32;
constexpr std::size_t leastWork = 65536;

constexpr bool isOneOf(std::string_view name, std::span<const std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

struct KeyedUnarchiver::Cursor {
    Object object;         // a dictionary
    std::size_t next = 0;  // the entry behind the one found last: keys are mostly asked for in the order of the file
};

class KeyedUnarchiver::Archive {
public:
    explicit Archive(std::span<const std::uint8_t> archive)
        : converted_(binaryForm(archive)),
          list_(openList(converted_.empty() ? archive : std::span<const std::uint8_t>(converted_))) {
        allowance_ = leastWork + workPerByte * list_.byteCount();
        Cursor root{objectAt(list_.root(), Kind::dictionary)};
        checkHeader(root);
        table_ = required(root, "$objects", Kind::array);
        top_ = required(root, "$top", Kind::dictionary);
        active_.resize(table_.count);
    }

    std::optional<Object> find(Cursor& cursor, std::string_view key) {
        const std::size_t count = cursor.object.count;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = cursor.next < count ? cursor.next : 0;
            cursor.next = place + 1;
            if (!isTextEqual(entry(cursor.object, place), key)) continue;
            return entry(cursor.object, count + place);
        }
        return std::nullopt;
    }

    // The place in the table that a value refers to; nothing for no value and for "$null".
    std::optional<std::size_t> target(const std::optional<Object>& value, std::string_view key) const {
        if (!value) return std::nullopt;
        if (value->kind != Kind::uid) refuseKind(key, "reference");
        const std::uint64_t place = uidOf(*value);
        if (place >= table_.count) refuse("the value of " + inQuotes(key) + " refers to an object that is not there.");
        if (place == 0) return std::nullopt;
        return static_cast<std::size_t>(place);
    }

    Object tableEntry(std::size_t place) { return entry(table_, place); }

    Object entry(const Object& container, std::size_t place) {
        spend(1);
        return objectAt(list_.reference(container, place));
    }

    std::string textOfObject(const Object& object) {
        spend(object.body.size());
        return textOf(object);
    }

    // The text at a place of the table: a text itself, or an object that stands for a changeable one.
    std::string text(std::size_t place, std::string_view key) {
        const Object object = tableEntry(place);
        if (object.isText()) return textOfObject(object);
        if (object.kind != Kind::dictionary) refuseKind(key, "text");
        Cursor cursor{object};
        checkClass(cursor, std::array{mutableTextClass, textClass});
        const auto content = find(cursor, textKey);
        if (!content || !content->isText()) refuseKind(key, "text");
        return textOfObject(*content);
    }

    // Runs `visit` on the object at a place of the table, which is of one of the classes.
    template <class Visit>
    void visitObject(std::size_t place, std::span<const std::string_view> classNames, const Visit& visit) {
        if (active_[place]) refuse("an object of class " + inQuotes(classNames.front()) + " contains itself.");
        Cursor cursor{tableEntry(place)};
        if (cursor.object.kind != Kind::dictionary)
            refuse("there is no " + inQuotes(classNames.front()) + " where one belongs.");
        checkClass(cursor, classNames);
        const Activity activity(active_, place);
        visit(cursor);
    }

    Cursor top() const { return {top_}; }

private:
    // Marks an object as being decoded.
    class Activity {
    public:
        Activity(std::vector<bool>& active, std::size_t place) : active_(active), place_(place) {
            active_[place_] = true;
        }
        ~Activity() { active_[place_] = false; }
        Activity(const Activity&) = delete;
        Activity& operator=(const Activity&) = delete;

    private:
        std::vector<bool>& active_;
        std::size_t place_;
    };

    // An XML archive in the binary form, so that there is one way to read; nothing for an archive that has it already.
    static std::vector<std::uint8_t> binaryForm(std::span<const std::uint8_t> archive) {
        if (BinaryList::open(archive)) return {};
        const auto list = parsePropertyList(archive);
        if (!list) refuse("it is damaged or no property list.");
        return binaryPropertyList(*list);
    }

    static BinaryList openList(std::span<const std::uint8_t> bytes) {
        const auto list = BinaryList::open(bytes);
        if (!list) refuse("it is damaged or no property list.");
        return *list;
    }

    void checkHeader(Cursor& root) {
        const auto archiver = find(root, "$archiver");
        if (!archiver || !isTextEqual(*archiver, archiverName)) refuse("it is no keyed archive.");
        const auto version = find(root, "$version");
        if (!version || version->kind != Kind::integer || integerOf(*version) != archiveVersion) {
            refuse("its version is not known.");
        }
    }

    Object required(Cursor& cursor, std::string_view key, Kind kind) {
        const auto found = find(cursor, key);
        if (!found || found->kind != kind) refuse("it has no " + inQuotes(key) + ".");
        return *found;
    }

    Object objectAt(std::uint64_t index) const {
        const auto object = list_.object(index);
        if (!object) refuse("a value is damaged or cut off.");
        return *object;
    }

    Object objectAt(std::uint64_t index, Kind kind) const {
        const Object object = objectAt(index);
        if (object.kind != kind) refuse("it is no keyed archive.");
        return object;
    }

    void checkClass(Cursor& cursor, std::span<const std::string_view> classNames) {
        cursor.next = std::max<std::size_t>(cursor.object.count, 1) - 1;  // archivers write the class last
        const auto place = target(find(cursor, classKey), classKey);
        const bool isKnown = place && place == knownClass_ && knownName_ == classNames.front();
        cursor.next = 0;
        if (isKnown) return;
        const std::string name = place ? className(*place) : "";
        if (!isOneOf(name, classNames)) {
            refuse("there is an object of class " + inQuotes(name) + " where one of class " +
                   inQuotes(classNames.front()) + " belongs.");
        }
        knownClass_ = place;
        knownName_ = classNames.front();
    }

    std::string className(std::size_t place) {
        Cursor cursor{tableEntry(place)};
        const auto name = cursor.object.kind == Kind::dictionary ? find(cursor, "$classname") : std::nullopt;
        if (!name || !name->isText()) refuse("an object has no class.");
        return textOfObject(*name);
    }

    void spend(std::size_t work) {
        if (work > allowance_) refuse("it unfolds to more than an archive of its size can hold.");
        allowance_ -= work;
    }

    std::vector<std::uint8_t> converted_;
    BinaryList list_;
    Object table_;
    Object top_;
    std::vector<bool> active_;  // by place in the table: being decoded
    std::size_t allowance_ = 0;
    std::optional<std::size_t> knownClass_;  // the class checked last, mostly that of the next object too
    std::string knownName_;
};

namespace {

bool isInteger(const Object& object) {
    return object.kind == Kind::integer || object.kind == Kind::boolean;
}

std::optional<std::int64_t> integerOrBoolean(const Object& object) {
    return object.kind == Kind::integer ? integerOf(object) : static_cast<std::int64_t>(object.count);
}

}  // namespace

void KeyedUnarchiver::unarchiveRoot(std::span<const std::uint8_t> bytes, std::string_view className, const Body& body) {
    Archive archive(bytes);
    Cursor top = archive.top();
    if (!KeyedUnarchiver(archive, top).decodeObject("root", className, body)) refuse("it holds no object.");
}

float KeyedUnarchiver::decodeFloat(std::string_view key) {
    const auto value = archive_->find(*cursor_, key);
    if (!value) return 0;
    if (value->kind == Kind::real) return static_cast<float>(realOf(*value));
    const auto integer = isInteger(*value) ? integerOrBoolean(*value) : std::nullopt;
    if (!integer) refuseKind(key, "number");
    return static_cast<float>(*integer);
}

std::int32_t KeyedUnarchiver::decodeInteger(std::string_view key) {
    const auto value = archive_->find(*cursor_, key);
    if (!value) return 0;
    const auto integer = isInteger(*value) ? integerOrBoolean(*value) : std::nullopt;
    using Limits = std::numeric_limits<std::int32_t>;
    if (!integer || *integer < Limits::min() || *integer > Limits::max()) refuseKind(key, "integer of 32 bits");
    return static_cast<std::int32_t>(*integer);
}

bool KeyedUnarchiver::decodeBool(std::string_view key) {
    const auto value = archive_->find(*cursor_, key);
    if (!value) return false;
    const auto integer = isInteger(*value) ? integerOrBoolean(*value) : std::nullopt;
    if (!integer) refuseKind(key, "boolean");
    return *integer != 0;
}

std::optional<std::string> KeyedUnarchiver::decodeText(std::string_view key) {
    const auto place = archive_->target(archive_->find(*cursor_, key), key);
    if (!place) return std::nullopt;
    return archive_->text(*place, key);
}

std::optional<std::filesystem::path> KeyedUnarchiver::decodeLocation(std::string_view key) {
    std::optional<std::filesystem::path> location;
    decodeObject(key, locationClass, [&](KeyedUnarchiver& url) {
        if (url.decodeText(locationBaseKey))
            refuse("the location of " + inQuotes(key) + " is relative to another one.");
        location = pathOfLocation(url.decodeText(locationKey).value_or(""));
        if (!location) refuse("the location of " + inQuotes(key) + " is none of a file.");
    });
    return location;
}

bool KeyedUnarchiver::decodeObject(std::string_view key, std::string_view className, const Body& body) {
    const auto place = archive_->target(archive_->find(*cursor_, key), key);
    if (!place) return false;
    archive_->visitObject(*place, std::array{className}, [&](Cursor& object) {
        KeyedUnarchiver unarchiver(*archive_, object);
        body(unarchiver);
    });
    return true;
}

bool KeyedUnarchiver::decodeList(std::string_view key, std::string_view className,
                                 const std::function<void(std::size_t)>& begin, const Body& body) {
    const auto place = archive_->target(archive_->find(*cursor_, key), key);
    if (!place) return false;
    archive_->visitObject(*place, std::array{listClass, plainListClass}, [&](Cursor& cursor) {
        const auto entries = archive_->find(cursor, listKey);
        if (!entries || entries->kind != Kind::array) refuseKind(listKey, "list");
        begin(entries->count);
        for (std::size_t i = 0; i < entries->count; ++i) {
            const auto target = archive_->target(archive_->entry(*entries, i), listKey);
            if (!target) refuse("the list of " + inQuotes(key) + " has an entry without an object.");
            archive_->visitObject(*target, std::array{className}, [&](Cursor& object) {
                KeyedUnarchiver unarchiver(*archive_, object);
                body(unarchiver);
            });
        }
    });
    return true;
}

}  // namespace velamo
