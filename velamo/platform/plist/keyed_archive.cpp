#include "velamo/platform/plist/keyed_archive.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

#include "velamo/platform/plist/plist.h"
#include "velamo/platform/text/text.h"
#include "velamo/platform/text/url_text.h"

namespace velamo {
namespace {

// The time of libplist's other writer grows with the square of the number of objects: minutes for a large design.
constexpr PlistForm form = PlistForm::xml;

constexpr std::string_view archiverName = "NSKeyedArchiver";
constexpr std::uint64_t archiveVersion = 100000;
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

}  // namespace

/// The table of objects that an archive is.
class KeyedArchiver::Table {
public:
    Table() { append(PlistOwner(plist_new_string(std::string(nullText).c_str()))); }

    static void put(plist_t object, std::string_view key, PlistOwner value) {
        plist_dict_set_item(object, std::string(key).c_str(), value.release());
    }

    PlistOwner addText(std::string_view text) {
        return append(PlistOwner(plist_new_string(plistText(text, form).c_str())));
    }

    // An object stands before what it refers to, its class behind all of that.
    PlistOwner addObject(std::string_view className, const Body& body) {
        const plist_t object = plist_new_dict();
        PlistOwner reference = append(PlistOwner(object));
        KeyedArchiver archiver(*this, object);
        body(archiver);
        put(object, classKey, addClass(className));
        return reference;
    }

    PlistOwner addList(std::string_view className, std::size_t count,
                       const std::function<void(KeyedArchiver&, std::size_t)>& body) {
        return addObject(listClass, [&](KeyedArchiver& list) {
            PlistOwner references(plist_new_array());
            for (std::size_t i = 0; i < count; ++i) {
                const auto element = [&](KeyedArchiver& object) { body(object, i); };
                plist_array_append_item(references.get(), addObject(className, element).release());
            }
            put(list.object_, listKey, std::move(references));
        });
    }

    std::vector<std::uint8_t> finish(PlistOwner root) {
        PlistOwner top(plist_new_dict());
        put(top.get(), "root", std::move(root));
        PlistOwner archive(plist_new_dict());
        put(archive.get(), "$version", PlistOwner(plist_new_uint(archiveVersion)));
        put(archive.get(), "$archiver", PlistOwner(plist_new_string(std::string(archiverName).c_str())));
        put(archive.get(), "$top", std::move(top));
        put(archive.get(), "$objects", std::move(objects_));
        return plistBytes(std::move(archive), form);
    }

private:
    /// The reference to the object, which is put behind the others.
    PlistOwner append(PlistOwner object) {
        plist_array_append_item(objects_.get(), object.release());
        return PlistOwner(plist_new_uid(count_++));
    }

    PlistOwner addClass(std::string_view name) {
        if (const auto known = classes_.find(name); known != classes_.end())
            return PlistOwner(plist_new_uid(known->second));
        PlistOwner chain(plist_new_array());
        const auto appendName = [&](std::string_view className) {
            plist_array_append_item(chain.get(), plist_new_string(std::string(className).c_str()));
        };
        appendName(name);
        for (const std::string_view superclass : superclassesOf(name)) appendName(superclass);
        PlistOwner description(plist_new_dict());
        put(description.get(), "$classname", PlistOwner(plist_new_string(std::string(name).c_str())));
        put(description.get(), "$classes", std::move(chain));
        classes_.emplace(name, count_);
        return append(std::move(description));
    }

    PlistOwner objects_{plist_new_array()};
    std::uint64_t count_ = 0;
    std::map<std::string, std::uint64_t, std::less<>> classes_;  // where in the table each class is
};

std::vector<std::uint8_t> KeyedArchiver::archiveRoot(std::string_view className, const Body& body) {
    Table table;
    return table.finish(table.addObject(className, body));
}

void KeyedArchiver::encodeFloat(std::string_view key, float value) {
    // libplist writes the negative zero without its sign; the smallest negative number becomes it again as a float.
    constexpr double negativeZero = -std::numeric_limits<double>::denorm_min();
    const bool isNegativeZero = value == 0 && std::signbit(value);
    Table::put(object_, key, PlistOwner(plist_new_real(isNegativeZero ? negativeZero : static_cast<double>(value))));
}

void KeyedArchiver::encodeInteger(std::string_view key, std::int32_t value) {
    Table::put(object_, key, PlistOwner(plist_new_uint(static_cast<std::uint64_t>(std::int64_t{value}))));
}

void KeyedArchiver::encodeBool(std::string_view key, bool value) {
    Table::put(object_, key, PlistOwner(plist_new_bool(value ? 1 : 0)));
}

void KeyedArchiver::encodeText(std::string_view key, const std::optional<std::string>& text) {
    if (!text) return encodeNothing(key);
    Table::put(object_, key, table_->addText(*text));
}

void KeyedArchiver::encodeLocation(std::string_view key, const std::optional<std::filesystem::path>& location) {
    if (!location) return encodeNothing(key);
    encodeObject(key, locationClass, [&](KeyedArchiver& url) {
        url.encodeNothing(locationBaseKey);
        url.encodeText(locationKey, locationText(*location));
    });
}

void KeyedArchiver::encodeObject(std::string_view key, std::string_view className, const Body& body) {
    Table::put(object_, key, table_->addObject(className, body));
}

void KeyedArchiver::encodeNothing(std::string_view key) {
    Table::put(object_, key, PlistOwner(plist_new_uid(0)));
}

void KeyedArchiver::encodeList(std::string_view key, std::string_view className, std::size_t count,
                               const std::function<void(KeyedArchiver&, std::size_t)>& body) {
    Table::put(object_, key, table_->addList(className, count, body));
}

namespace {

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

bool isOfKind(plist_t node, plist_type kind) {
    return node != nullptr && plist_get_node_type(node) == kind;
}

plist_t valueOf(plist_t object, std::string_view key) {
    return plist_dict_get_item(object, std::string(key).c_str());
}

/// An integer, or a boolean as 0 or 1.
std::optional<std::int64_t> integerOf(plist_t node) {
    if (!isOfKind(node, PLIST_BOOLEAN)) return integerOfNode(node);
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value;
}

}  // namespace

class KeyedUnarchiver::Archive {
public:
    explicit Archive(std::span<const std::uint8_t> archive)
        : root_(parsePlist(archive)), allowance_(leastWork + workPerByte * archive.size()) {
        if (!root_) refuse("it is damaged or no property list.");
        if (!isOfKind(root_.get(), PLIST_DICT)) refuse("it is no keyed archive.");
        checkHeader();
        table_ = childrenOf(required("$objects", PLIST_ARRAY));
        active_.resize(table_.size());
    }

    [[nodiscard]] plist_t top() const { return required("$top", PLIST_DICT); }

    /// The place in the table that a value refers to; nothing for no value and for "$null".
    [[nodiscard]] std::optional<std::size_t> target(plist_t value, std::string_view key) const {
        if (value == nullptr) return std::nullopt;
        const auto place = referenceOfNode(value);
        if (!place) refuseKind(key, "reference");
        if (*place >= table_.size())
            refuse("the value of " + inQuotes(key) + " refers to an object that is not there.");
        return *place == 0 ? std::nullopt : std::optional(static_cast<std::size_t>(*place));
    }

    /// The text at a place of the table: a text itself, or an object that stands for a changeable one.
    std::string text(std::size_t place, std::string_view key) {
        plist_t content = table_[place];
        if (isOfKind(content, PLIST_DICT)) {
            checkClass(content, std::array{mutableTextClass, textClass});
            content = valueOf(content, textKey);
        }
        if (!isOfKind(content, PLIST_STRING)) refuseKind(key, "text");
        std::string text = textOfNode(content);
        spend(text.size());
        return text;
    }

    /// Runs `visit` on the object at a place of the table, which is of one of the classes.
    template <class Visit>
    void visitObject(std::size_t place, std::span<const std::string_view> classNames, const Visit& visit) {
        if (active_[place]) refuse("an object of class " + inQuotes(classNames.front()) + " contains itself.");
        const plist_t object = table_[place];
        if (!isOfKind(object, PLIST_DICT))
            refuse("there is no " + inQuotes(classNames.front()) + " where one belongs.");
        spend(1 + plist_dict_get_size(object));
        checkClass(object, classNames);
        const Activity activity(active_, place);
        visit(object);
    }

    void spend(std::size_t work) {
        if (work > allowance_) refuse("it unfolds to more than an archive of its size can hold.");
        allowance_ -= work;
    }

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

    void checkHeader() const {
        if (textOfNode(valueOf(root_.get(), "$archiver")) != archiverName) refuse("it is no keyed archive.");
        if (integerOf(valueOf(root_.get(), "$version")) != archiveVersion) refuse("its version is not known.");
    }

    [[nodiscard]] plist_t required(std::string_view key, plist_type kind) const {
        const plist_t found = valueOf(root_.get(), key);
        if (!isOfKind(found, kind)) refuse("it has no " + inQuotes(key) + ".");
        return found;
    }

    void checkClass(plist_t object, std::span<const std::string_view> classNames) {
        const auto place = target(valueOf(object, classKey), classKey);
        if (place && place == knownClass_ && knownName_ == classNames.front()) return;
        const std::string name = place ? className(*place) : "";
        if (!isOneOf(name, classNames)) {
            refuse("there is an object of class " + inQuotes(name) + " where one of class " +
                   inQuotes(classNames.front()) + " belongs.");
        }
        knownClass_ = place;
        knownName_ = classNames.front();
    }

    std::string className(std::size_t place) {
        const plist_t description = table_[place];
        const plist_t name = isOfKind(description, PLIST_DICT) ? valueOf(description, "$classname") : nullptr;
        if (!isOfKind(name, PLIST_STRING)) refuse("an object has no class.");
        return textOfNode(name);
    }

    PlistOwner root_;
    std::vector<plist_t> table_;
    std::vector<bool> active_;  // by place in the table: being decoded
    std::size_t allowance_;
    std::optional<std::size_t> knownClass_;  // the class checked last, mostly that of the next object too
    std::string knownName_;
};

void KeyedUnarchiver::unarchiveRoot(std::span<const std::uint8_t> bytes, std::string_view className, const Body& body) {
    Archive archive(bytes);
    if (!KeyedUnarchiver(archive, archive.top()).decodeObject("root", className, body)) refuse("it holds no object.");
}

float KeyedUnarchiver::decodeFloat(std::string_view key) {
    const plist_t value = valueOf(object_, key);
    if (value == nullptr) return 0;
    if (isOfKind(value, PLIST_REAL)) {
        double real = 0;
        plist_get_real_val(value, &real);
        return static_cast<float>(real);
    }
    const auto integer = integerOf(value);
    if (!integer) refuseKind(key, "number");
    return static_cast<float>(*integer);
}

std::int32_t KeyedUnarchiver::decodeInteger(std::string_view key) {
    const plist_t value = valueOf(object_, key);
    if (value == nullptr) return 0;
    using Limits = std::numeric_limits<std::int32_t>;
    const auto integer = integerOf(value);
    if (!integer || *integer < Limits::min() || *integer > Limits::max()) refuseKind(key, "integer of 32 bits");
    return static_cast<std::int32_t>(*integer);
}

bool KeyedUnarchiver::decodeBool(std::string_view key) {
    const plist_t value = valueOf(object_, key);
    if (value == nullptr) return false;
    const auto integer = integerOf(value);
    if (!integer) refuseKind(key, "boolean");
    return *integer != 0;
}

std::optional<std::string> KeyedUnarchiver::decodeText(std::string_view key) {
    const auto place = archive_->target(valueOf(object_, key), key);
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
    const auto place = archive_->target(valueOf(object_, key), key);
    if (!place) return false;
    archive_->visitObject(*place, std::array{className}, [&](plist_t object) {
        KeyedUnarchiver unarchiver(*archive_, object);
        body(unarchiver);
    });
    return true;
}

bool KeyedUnarchiver::decodeList(std::string_view key, std::string_view className,
                                 const std::function<void(std::size_t)>& begin, const Body& body) {
    const auto place = archive_->target(valueOf(object_, key), key);
    if (!place) return false;
    archive_->visitObject(*place, std::array{listClass, plainListClass}, [&](plist_t list) {
        const plist_t references = valueOf(list, listKey);
        if (!isOfKind(references, PLIST_ARRAY)) refuseKind(listKey, "list");
        const auto entries = childrenOf(references);
        archive_->spend(entries.size());
        begin(entries.size());
        for (const plist_t entry : entries) {
            const auto target = archive_->target(entry, listKey);
            if (!target) refuse("the list of " + inQuotes(key) + " has an entry without an object.");
            archive_->visitObject(*target, std::array{className}, [&](plist_t object) {
                KeyedUnarchiver unarchiver(*archive_, object);
                body(unarchiver);
            });
        }
    });
    return true;
}

}  // namespace velamo
