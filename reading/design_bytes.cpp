#include "reading/design_bytes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "reading/value_writer.h"

namespace velamo {
namespace {

constexpr std::array errorDomains{std::string_view(), designErrorDomain, systemErrorDomain};

/// Reads what a ValueWriter wrote. What is not there, or no value of its type, is zero and makes ok() false from then
/// on.
class ValueReader {
public:
    explicit ValueReader(const ByteSource& source) : source_(source), buffer_(bufferSize) {}

    [[nodiscard]] bool ok() const noexcept { return ok_; }
    [[nodiscard]] std::uint64_t remaining() const noexcept { return source_.size - offset_ + (end_ - begin_); }

    template <class Value>
    Value take() {
        static_assert(std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>);
        Value value{};
        const auto bytes = takeBytes(sizeof(Value));
        if (!bytes.empty()) std::memcpy(&value, bytes.data(), sizeof(Value));
        return value;
    }
    bool takeBool() {
        const auto byte = take<std::uint8_t>();
        ok_ = ok_ && byte <= 1;
        return ok_ && byte == 1;
    }
    std::string takeString() {
        auto rest = takeCount(1);
        std::string text;
        text.reserve(rest);
        while (ok_ && rest > 0) {
            const auto bytes = takeBytes(std::min<std::size_t>(rest, bufferSize));
            text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
            rest -= bytes.size();
        }
        return text;
    }
    Text takeText() { return takeBool() ? Text(takeString()) : Text(); }
    /// A number of elements of at least so many bytes each, which must be there.
    std::size_t takeCount(std::size_t bytesOfEach) {
        const auto count = take<std::uint64_t>();
        ok_ = ok_ && count <= remaining() / bytesOfEach;
        return ok_ ? count : 0;
    }
    /// So many bytes, at most a buffer's; none when they are not there. They stay until the next call.
    std::span<const std::byte> takeBytes(std::size_t count) {
        if (end_ - begin_ < count) fill(count);
        if (!ok_) return {};
        const auto bytes = std::span(buffer_).subspan(begin_, count);
        begin_ += count;
        return bytes;
    }
    /// As many bytes as there is room for.
    void takeInto(std::span<std::byte> room) {
        const auto buffered = takeBytes(std::min(room.size(), end_ - begin_));
        std::copy(buffered.begin(), buffered.end(), room.begin());
        const auto rest = room.subspan(buffered.size());
        ok_ = ok_ && rest.size() <= source_.size - offset_ && !source_.read(rest, offset_);
        if (ok_) offset_ += rest.size();
    }
    void refuse() noexcept { ok_ = false; }

private:
    static constexpr std::size_t bufferSize = 65536;

    void fill(std::size_t count) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        const auto size = std::min<std::uint64_t>(bufferSize - end_, source_.size - offset_);
        ok_ = ok_ && end_ + size >= count && !source_.read(std::span(buffer_).subspan(end_, size), offset_);
        if (!ok_) return;
        end_ += size;
        offset_ += size;
    }

    const ByteSource& source_;
    std::vector<std::byte> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::uint64_t offset_ = 0;  // behind what is in the buffer
    bool ok_ = true;
};

void putError(ValueWriter& out, const VLMError& error) {
    const auto domain = std::find(errorDomains.begin(), errorDomains.end(), error.domain);
    out.put(static_cast<std::uint8_t>(domain - errorDomains.begin()));
    out.put(error.code);
    out.put(error.recoverySuggestion);
    out.put(error.failureReason);
}

VLMError takeError(ValueReader& in) {
    VLMError error;
    const auto domain = in.take<std::uint8_t>();
    if (domain >= errorDomains.size()) in.refuse();
    if (in.ok()) error.domain = errorDomains.at(domain);
    error.code = in.take<int>();
    error.recoverySuggestion = in.takeString();
    error.failureReason = in.takeString();
    return error;
}

void putHoop(ValueWriter& out, const HoopHandle& hoop) {
    out.put(hoop != nullptr);
    if (!hoop) return;
    out.put(hoop->name());
    out.put(hoop->vendor());
    for (const std::int32_t number : {hoop->code(), hoop->width(), hoop->height()}) out.put(number);
    for (const bool flag : {hoop->isMultiHoop(), hoop->isRounded(), hoop->isWritable()}) out.put(flag);
}

HoopHandle takeHoop(ValueReader& in) {
    if (!in.takeBool()) return nullptr;
    const Text name = in.takeText();
    const Text vendor = in.takeText();
    const auto code = in.take<std::int32_t>();
    const auto width = in.take<std::int32_t>();
    const auto height = in.take<std::int32_t>();
    const bool isMultiHoop = in.takeBool();
    const bool isRounded = in.takeBool();
    return std::make_shared<const VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        name, vendor, code, width, height, isMultiHoop, isRounded, in.takeBool()));
}

std::string lookOf(const VLMThread& thread) {
    ValueWriter out;
    for (const double part : {thread.color().red(), thread.color().green(), thread.color().blue()}) out.put(part);
    for (const Text* text : {&thread.name(), &thread.key(), &thread.palette(), &thread.paletteName()}) out.put(*text);
    return out.bytes();
}
constexpr std::size_t fewestBytesOfLook = 3 * sizeof(double) + 4;

VLMThread takeLook(ValueReader& in) {
    const auto red = in.take<double>();
    const auto green = in.take<double>();
    const auto blue = in.take<double>();
    Text name = in.takeText();
    Text key = in.takeText();
    Text palette = in.takeText();
    Text paletteName = in.takeText();
    return VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(red, green, blue),
                                                                  std::move(name), std::move(key), std::move(palette),
                                                                  std::move(paletteName));
}

std::string bytesOf(const VLMThread& thread, std::uint32_t look) {
    ValueWriter out;
    out.put(look);
    out.put(thread.length());
    out.put(thread.tension());
    out.put(thread.isShown());
    return out.bytes();
}
constexpr std::size_t bytesOfThread = sizeof(std::uint32_t) + sizeof(float) + sizeof(std::int32_t) + 1;

VLMThread takeThread(ValueReader& in, const std::vector<VLMThread>& looks) {
    const auto look = in.take<std::uint32_t>();
    if (look >= looks.size()) in.refuse();
    VLMThread thread = in.ok() ? looks[look] : VLMThread();
    thread.setLength(in.take<float>());
    thread.setTension(in.take<std::int32_t>());
    thread.setIsShown(in.takeBool());
    return thread;
}

/// Things one behind the other, each of them once.
class DifferentThings {
public:
    /// The number of the thing with the bytes.
    std::uint32_t numberOf(std::string bytes) {
        const auto [place, isNew] = numbers_.try_emplace(std::move(bytes), static_cast<std::uint32_t>(numbers_.size()));
        if (isNew) bytes_.putRaw(place->first);
        return place->second;
    }
    void putTo(ValueWriter& out) const {
        out.put(std::uint64_t{numbers_.size()});
        out.putRaw(bytes_.bytes());
    }

private:
    std::unordered_map<std::string, std::uint32_t> numbers_;
    ValueWriter bytes_;
};

/// The different colours with their texts, the different threads that have them, and for each thread which of these it
/// is: files may change between a few a million times, or keep a tension for each.
void putThreads(ValueWriter& out, const ThreadList& threads) {
    DifferentThings looks;
    DifferentThings different;
    std::vector<std::uint32_t> order;
    order.reserve(threads.size());
    for (const VLMThread& thread : threads)
        order.push_back(different.numberOf(bytesOf(thread, looks.numberOf(lookOf(thread)))));
    looks.putTo(out);
    different.putTo(out);
    out.put(std::uint64_t{order.size()});
    for (const std::uint32_t number : order) out.put(number);
}

ThreadList takeThreads(ValueReader& in) {
    std::vector<VLMThread> looks;
    const std::size_t lookCount = in.takeCount(fewestBytesOfLook);
    looks.reserve(lookCount);
    while (in.ok() && looks.size() < lookCount) looks.push_back(takeLook(in));
    std::vector<VLMThread> different;
    const std::size_t differentCount = in.takeCount(bytesOfThread);
    different.reserve(differentCount);
    while (in.ok() && different.size() < differentCount) different.push_back(takeThread(in, looks));
    std::vector<VLMThread> threads;
    const std::size_t count = in.takeCount(sizeof(std::uint32_t));
    threads.reserve(count);
    while (in.ok() && threads.size() < count) {
        const auto number = in.take<std::uint32_t>();
        if (number >= different.size()) in.refuse();
        if (in.ok()) threads.push_back(different[number]);
    }
    return threads;
}

void putFields(ValueWriter& out, const VLMDesign& design) {
    out.put(design.designName());
    out.put(design.designType());
    out.put(design.designVersion());
    out.put(design.useThreadFile());
    out.put(design.selectionActive());
    for (const std::uint64_t number : {design.displayRange().location, design.displayRange().length}) out.put(number);
    for (const float bound : {design.xMin(), design.yMin(), design.xMax(), design.yMax()}) out.put(bound);
    putHoop(out, design.designHoop());
    putThreads(out, design.threads());
}

void takeFields(ValueReader& in, VLMDesign& design) {
    design.setDesignName(in.takeText());
    design.setDesignType(in.takeText());
    design.setDesignVersion(in.take<std::int32_t>());
    design.setUseThreadFile(in.takeBool());
    design.setSelectionActive(in.takeBool());
    const auto location = in.take<std::uint64_t>();
    design.setDisplayRange({location, in.take<std::uint64_t>()});
    design.setXMin(in.take<float>());
    design.setYMin(in.take<float>());
    design.setXMax(in.take<float>());
    design.setYMax(in.take<float>());
    design.setDesignHoop(takeHoop(in));
    design.setThreads(takeThreads(in));
}

// Stitches are written, and read, as they lie in memory.
static_assert(std::is_trivially_copyable_v<VLMStitch>);

/// Whether the flags of stitches whose bytes came from elsewhere are flags.
bool haveFlags(std::span<const VLMStitch> stitches) noexcept {
    constexpr std::size_t flagsPlace = 2 * sizeof(float);
    const auto bytes = std::as_bytes(stitches);
    std::byte all{};
    for (std::size_t at = flagsPlace; at < bytes.size(); at += sizeof(VLMStitch))
        all |= bytes[at] | bytes[at + 1] | bytes[at + 2];
    return all <= std::byte{1};
}

void takeStitches(ValueReader& in, std::vector<VLMStitch>& stitches) {
    stitches.resize(in.takeCount(sizeof(VLMStitch)));
    in.takeInto(std::as_writable_bytes(std::span(stitches)));
    if (!haveFlags(stitches)) in.refuse();
    if (!in.ok()) stitches.clear();  // what is no flag must not be taken for one
}

}  // namespace

std::error_code writeDesignBytes(const VLMDesign& design, const VLMError& error, const PieceSink& sink) {
    ValueWriter out;
    putError(out, error);
    putFields(out, design);
    const std::span stitches(design.stitches().all());
    out.put(std::uint64_t{stitches.size()});
    if (const auto failure = sink(std::as_bytes(std::span(out.bytes())))) return failure;
    return sink(std::as_bytes(stitches));
}

bool parseDesignBytes(const ByteSource& source, ReadDesign& read) {
    ValueReader in(source);
    read.error = takeError(in);
    takeFields(in, read.design);
    takeStitches(in, read.design.stitches().all());
    return in.ok() && in.remaining() == 0;
}

}  // namespace velamo
