#include "reading/facts_bytes.h"

#include <cerrno>
#include <cmath>
#include <cstring>

#include "reading/value_writer.h"
#include "velamo/platform/archives/member_names.h"

namespace velamo {
namespace {

enum class Kind : std::uint8_t { facts, failure, refusal };

/// Calls `take` with each value, in the order in which they travel.
template <class Facts, class Take>
void eachValue(Facts& facts, const Take& take) {
    take(facts.attributes.widthInMillimetres);
    take(facts.attributes.heightInMillimetres);
    take(facts.attributes.stitches);
    take(facts.attributes.colors);
    take(facts.format);
    take(facts.version);
    take(facts.jumps);
    take(facts.trims);
    take(facts.blocks);
    take(facts.length);
    take(facts.threads);
    take(facts.hoop);
}
template <class Thread, class Take>
void eachValueOfThread(Thread& thread, const Take& take) {
    take(thread.color);
    take(thread.name);
    take(thread.palette);
    take(thread.stitches);
    take(thread.length);
}
template <class Hoop, class Take>
void eachValueOfHoop(Hoop& hoop, const Take& take) {
    take(hoop.vendor);
    take(hoop.name);
    take(hoop.width);
    take(hoop.height);
}

template <class Member, class Take>
void eachValueOfMember(Member& member, const Take& take) {
    take(member.location);
    take(member.name);
    take(member.modified);
    take(member.size);
}

class FactsWriter {
public:
    void put(const FileFacts& facts) {
        const auto* failure = std::get_if<DesignFailure>(&facts.content);
        putKind(failure == nullptr ? Kind::facts : Kind::failure);
        putFlag(facts.hash.has_value());
        if (facts.hash)
            writer_.putRaw(std::string(reinterpret_cast<const char*>(facts.hash->data()), facts.hash->size()));
        if (failure == nullptr)
            eachValue(std::get<DesignFacts>(facts.content), [this](const auto& value) { put(value); });
        else
            put(*failure);
    }
    void put(const std::error_code& reason) {
        putKind(Kind::refusal);
        writer_.put(reason.value());
    }
    void put(const ArchiveFacts& archive) {
        writer_.put(std::uint64_t{archive.members.size()});
        for (const MemberFacts& member : archive.members) {
            eachValueOfMember(member, [this](const auto& value) { writer_.put(value); });
            put(member.facts);
        }
        putFlag(archive.failure.has_value());
        if (archive.failure) put(*archive.failure);
    }
    [[nodiscard]] std::string take() && noexcept { return std::move(writer_).take(); }

private:
    void putKind(Kind kind) { writer_.put(static_cast<std::uint8_t>(kind)); }
    void putFlag(bool flag) { writer_.put(std::uint8_t{flag}); }
    void put(const DesignFailure& failure) {
        writer_.put(failure.domain);
        writer_.put(failure.code);
        writer_.put(failure.message);
    }
    template <class Value>
    void put(const Value& value) {
        writer_.put(value);
    }
    void put(const std::optional<std::uint32_t>& number) {
        putFlag(number.has_value());
        if (number) writer_.put(*number);
    }
    void put(const std::vector<ThreadFacts>& threads) {
        writer_.put(std::uint64_t{threads.size()});
        for (const ThreadFacts& thread : threads) eachValueOfThread(thread, [this](const auto& value) { put(value); });
    }
    void put(const std::optional<HoopFacts>& hoop) {
        putFlag(hoop.has_value());
        if (hoop) eachValueOfHoop(*hoop, [this](const auto& value) { put(value); });
    }

    ValueWriter writer_;
};

class FactsParser {
public:
    explicit FactsParser(std::string_view bytes) noexcept : bytes_(bytes) {}

    FileOutcome takeOutcome() {
        const auto kind = taken<std::uint8_t>();
        if (kind == static_cast<std::uint8_t>(Kind::refusal))
            return std::error_code(taken<int>(), std::generic_category());
        return takeFile(kind);
    }
    ArchiveFacts takeArchive() {
        ArchiveFacts archive;
        for (auto count = taken<std::uint64_t>(); isWhole_ && count > 0; --count) {
            MemberFacts& member = archive.members.emplace_back();
            eachValueOfMember(member, [this](auto& value) { take(value); });
            // It must not lead elsewhere.
            isWhole_ = isWhole_ && !member.location.empty() && locationOf(member.location) == member.location;
            member.facts = takeFile(taken<std::uint8_t>());
        }
        if (takeFlag()) archive.failure = takeFailure();
        return archive;
    }
    /// Whether all that was taken was there, and nothing is left.
    [[nodiscard]] bool isWhole() const noexcept { return isWhole_ && bytes_.empty(); }

private:
    std::string_view takeBytes(std::size_t size) noexcept {
        isWhole_ = isWhole_ && size <= bytes_.size();
        if (!isWhole_) return {};
        const auto taken = bytes_.substr(0, size);
        bytes_.remove_prefix(size);
        return taken;
    }
    template <class Value>
    void take(Value& value) noexcept {
        static_assert(std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>);
        const auto bytes = takeBytes(sizeof(Value));
        if (!bytes.empty()) std::memcpy(&value, bytes.data(), sizeof(Value));
    }
    template <class Value>
    Value taken() noexcept {
        Value value{};
        take(value);
        return value;
    }
    bool takeFlag() noexcept {
        const auto flag = taken<std::uint8_t>();
        isWhole_ = isWhole_ && flag <= 1;
        return isWhole_ && flag == 1;
    }
    void take(std::string& text) { text = takeBytes(taken<std::uint64_t>()); }
    void take(Text& text) {
        if (takeFlag()) take(text.emplace());
    }
    void take(std::optional<std::uint32_t>& number) noexcept {
        if (takeFlag()) take(number.emplace());
    }
    void take(std::vector<ThreadFacts>& threads) {
        for (auto count = taken<std::uint64_t>(); isWhole_ && count > 0; --count)
            eachValueOfThread(threads.emplace_back(), [this](auto& value) { take(value); });
    }
    void take(std::optional<HoopFacts>& hoop) {
        if (takeFlag()) eachValueOfHoop(hoop.emplace(), [this](auto& value) { take(value); });
    }
    FileFacts takeFile(std::uint8_t kind) {
        FileFacts facts{DesignFailure{}, takeHash()};
        if (kind == static_cast<std::uint8_t>(Kind::facts))
            facts.content = takeFacts();
        else if (kind == static_cast<std::uint8_t>(Kind::failure))
            facts.content = takeFailure();
        else
            isWhole_ = false;
        return facts;
    }
    std::optional<Sha256> takeHash() noexcept {
        if (!takeFlag()) return std::nullopt;
        Sha256 hash{};
        const auto bytes = takeBytes(hash.size());
        if (!bytes.empty()) std::memcpy(hash.data(), bytes.data(), hash.size());
        return hash;
    }
    DesignFacts takeFacts() {
        DesignFacts facts;
        eachValue(facts, [this](auto& value) { take(value); });
        return facts;
    }
    DesignFailure takeFailure() {
        DesignFailure failure;
        take(failure.domain);
        take(failure.code);
        take(failure.message);
        return failure;
    }

    std::string_view bytes_;
    bool isWhole_ = true;
};

}  // namespace

std::string bytesOf(const FileOutcome& outcome) {
    FactsWriter writer;
    std::visit([&writer](const auto& value) { writer.put(value); }, outcome);
    return std::move(writer).take();
}

std::string bytesOf(const ArchiveFacts& archive) {
    FactsWriter writer;
    writer.put(archive);
    return std::move(writer).take();
}

FileOutcome outcomeOf(std::string_view bytes) {
    FactsParser parser(bytes);
    FileOutcome outcome = parser.takeOutcome();
    if (!parser.isWhole()) return std::make_error_code(std::errc::bad_message);
    return outcome;
}

std::optional<ArchiveFacts> archiveFactsOf(std::string_view bytes) {
    FactsParser parser(bytes);
    ArchiveFacts archive = parser.takeArchive();
    return parser.isWhole() ? std::optional(std::move(archive)) : std::nullopt;
}

}  // namespace velamo
