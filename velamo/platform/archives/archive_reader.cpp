#include "velamo/platform/archives/archive_reader.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "velamo/platform/archives/member_names.h"
#include "velamo/platform/system/descriptor.h"
#include "velamo/platform/system/system_call.h"

namespace velamo {
namespace {

constexpr std::size_t bytesOfBlock = 65536;

/// Within it the library has names as UTF-8: it passes those that archives keep in Unicode through the locale's own
/// encoding, and in the C locale only ASCII is left of them.
class UnicodeNames {
public:
    UnicodeNames() noexcept : before_(::uselocale(locale())) {}
    ~UnicodeNames() { ::uselocale(before_); }
    UnicodeNames(const UnicodeNames&) = delete;
    UnicodeNames& operator=(const UnicodeNames&) = delete;

private:
    /// Null, which changes nothing, where the system has no such locale. It belongs to the process.
    static locale_t locale() noexcept {
        static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;
    }
    locale_t before_;
};

using Support = int (*)(archive*);
constexpr std::array<Support, 10> kinds{archive_read_support_format_zip,   archive_read_support_format_7zip,
                                        archive_read_support_format_rar,   archive_read_support_format_rar5,
                                        archive_read_support_format_tar,   archive_read_support_filter_gzip,
                                        archive_read_support_filter_bzip2, archive_read_support_filter_xz,
                                        archive_read_support_filter_lzma,  archive_read_support_filter_zstd};

using Handle = std::unique_ptr<archive, decltype(&archive_read_free)>;

Handle makeHandle() {
    Handle handle(archive_read_new(), archive_read_free);
    if (!handle) throw std::bad_alloc();
    return handle;
}

/// A handle for the kinds that the library reads by itself. For those it was built without it would start a program,
/// which it says only once it is too late.
Handle makeReader() {
    Handle reader = makeHandle();
    for (const Support support : kinds)
        if (support(makeHandle().get()) == ARCHIVE_OK) support(reader.get());
    return reader;
}

/// The system's reason, or what the library found wrong with the bytes.
ArchiveError reasonOf(archive* handle, ArchiveFault fault) {
    constexpr int faultOfBytes = EILSEQ;  // as the library uses these two
    constexpr int faultOfUse = EINVAL;
    const int code = archive_errno(handle);
    if (code == ENOMEM) throw std::bad_alloc();
    const bool isSystems = code > 0 && code != faultOfBytes && code != faultOfUse;
    return isSystems ? ArchiveError{{code, std::generic_category()}, {}} : errorOf(fault);
}

std::int64_t modifiedOf(archive_entry* entry) noexcept {
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / nanoseconds - 1;
    const std::int64_t seconds = archive_entry_mtime_is_set(entry) != 0 ? archive_entry_mtime(entry) : 0;
    const std::int64_t rest = std::clamp<std::int64_t>(archive_entry_mtime_nsec(entry), 0, nanoseconds - 1);
    return seconds >= -most && seconds <= most ? seconds * nanoseconds + rest : 0;
}

bool isLink(archive_entry* entry) noexcept {
    return archive_entry_filetype(entry) == AE_IFLNK || archive_entry_hardlink(entry) != nullptr;
}

/// Pipes and devices; some archives do not tell what a file is.
bool isNoFile(archive_entry* entry) noexcept {
    const auto kind = archive_entry_filetype(entry);
    return kind != AE_IFREG && kind != AE_IFDIR && kind != AE_IFLNK && kind != 0;
}

std::error_code openRegularFile(const std::filesystem::path& file, int& descriptor, std::uint64_t& size) noexcept {
    descriptor = uninterrupted([&] { return ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); });
    struct stat status = {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) return lastSystemError();
    size = static_cast<std::uint64_t>(status.st_size);
    if (S_ISREG(status.st_mode)) return {};
    return {S_ISDIR(status.st_mode) ? EISDIR : EINVAL, std::generic_category()};
}

}  // namespace

class ArchiveReader::Pass {
public:
    Pass(const std::filesystem::path& file, const ArchiveLimits& limits) : limits_(limits) {
        int number = -1;
        error_.reason = openRegularFile(file, number, size_);
        file_.emplace(number);
        if (!error_) open();
    }
    Pass(std::span<const std::uint8_t> bytes, const ArchiveLimits& limits)
        : limits_(limits), bytes_(bytes), size_(bytes.size()) {
        open();
    }

    std::optional<ArchiveMember> next() {
        const UnicodeNames names;
        if (isStuck_) startAgain();
        while (!isAtEnd_ && !error_) {
            if (!isRead_) passOver();
            archive_entry* entry = error_ ? nullptr : nextEntry();
            if (entry == nullptr) break;
            if (auto member = memberOf(entry)) return member;
        }
        return std::nullopt;
    }

    std::optional<std::vector<std::uint8_t>> read(ArchiveError& error) {
        error = memberError_;
        if (error) return std::nullopt;
        isRead_ = true;
        std::vector<std::uint8_t> bytes;
        std::array<std::uint8_t, bytesOfBlock> block;
        for (;;) {
            const auto count = archive_read_data(handle_.get(), block.data(), block.size());
            if (count == 0) return bytes;
            isStuck_ = count == ARCHIVE_FATAL;
            error = count < 0 ? reasonOf(handle_.get(), ArchiveFault::unreadable)
                              : errorOfCount(static_cast<std::size_t>(count), bytes.size());
            if (error) return std::nullopt;
            bytes.insert(bytes.end(), block.begin(), block.begin() + count);
        }
    }

    [[nodiscard]] const ArchiveError& error() const noexcept { return error_; }

private:
    void open() {
        const int result = file_ ? archive_read_open_fd(handle_.get(), file_->number(), bytesOfBlock)
                                 : archive_read_open_memory(handle_.get(), bytes_.data(), bytes_.size());
        if (result != ARCHIVE_OK) endWithFault();
    }

    /// The library gives an archive up at the first member that it cannot unpack, although those behind it may be
    /// whole. So it is asked for those anew.
    void startAgain() {
        constexpr int mostStarts = 100;
        isStuck_ = false;
        if (isCompressedWhole() || ++starts_ > mostStarts || (file_ && ::lseek(file_->number(), 0, SEEK_SET) != 0))
            return end(errorOf(ArchiveFault::unreadable));
        handle_ = makeReader();
        open();
        archive_entry* entry = nullptr;
        for (std::size_t i = 0; i < members_ && !error_; ++i)
            if (archive_read_next_header(handle_.get(), &entry) == ARCHIVE_FATAL) endWithFault();
    }

    void end(const ArchiveError& error) {
        error_ = error;
        isRead_ = true;
    }

    void endWithFault() {
        const bool isKnown = archive_format(handle_.get()) != 0;
        // Of what it does not know the library must not be asked that.
        const bool isProtected = isKnown && archive_read_has_encrypted_entries(handle_.get()) > 0;
        end(isProtected ? errorOf(ArchiveFault::protectedByPassword)
                        : reasonOf(handle_.get(), isKnown ? ArchiveFault::unreadable : ArchiveFault::unknownFormat));
    }

    archive_entry* nextEntry() {
        archive_entry* entry = nullptr;
        const int result = archive_read_next_header(handle_.get(), &entry);
        isAtEnd_ = result == ARCHIVE_EOF;
        if (isAtEnd_) return nullptr;
        isReadable_ = result >= ARCHIVE_WARN;
        if (result == ARCHIVE_FATAL)
            endWithFault();
        else if (++members_ > limits_.members)
            end(errorOf(ArchiveFault::tooManyMembers));
        isRead_ = false;
        memberError_ = {};
        return error_ ? nullptr : entry;
    }

    /// Nothing where it is none that is shown.
    std::optional<ArchiveMember> memberOf(archive_entry* entry) {
        const char* bytes = archive_entry_pathname(entry);
        const std::string_view name = bytes == nullptr ? std::string_view() : bytes;
        const bool isNamed = !name.empty() && name.size() <= mostBytesOfMemberName;
        const auto location = isNamed ? locationOf(name) : std::string();
        ArchiveMember member;
        member.location = location.value_or(std::string(name));
        member.modified = modifiedOf(entry);
        member.isFolder = archive_entry_filetype(entry) == AE_IFDIR;
        if (isNamed && (member.location.empty() || isNoFile(entry) || (location && isHidden(*location))))
            return std::nullopt;
        if (!remember(member.location)) return std::nullopt;
        member.name = textOfName(member.location);
        member.error = errorOfEntry(entry, isNamed, location.has_value());
        memberError_ = member.error;
        return member;
    }

    ArchiveError errorOfEntry(archive_entry* entry, bool isNamed, bool isInside) const noexcept {
        if (!isNamed) return errorOf(ArchiveFault::nameUnreadable);
        if (!isInside) return errorOf(ArchiveFault::nameLeadsOut);
        if (archive_entry_is_encrypted(entry) != 0) return errorOf(ArchiveFault::protectedByPassword);
        if (isLink(entry)) return errorOf(ArchiveFault::isLink);
        return isReadable_ ? ArchiveError() : errorOf(ArchiveFault::unreadable);
    }

    /// False where it was there before, or where there are too many.
    bool remember(const std::string& location) {
        if (!locations_.insert(location).second) return false;
        bytesOfNames_ += location.size();
        if (bytesOfNames_ > limits_.bytesOfNames) end(errorOf(ArchiveFault::tooManyMembers));
        return !error_;
    }

    [[nodiscard]] bool isCompressedWhole() const noexcept { return archive_filter_count(handle_.get()) > 1; }

    /// Counts bytes of a member that has had some already.
    ArchiveError errorOfCount(std::size_t count, std::size_t before) {
        countUnpacked(count);
        if (error_) return error_;
        return before + count > limits_.bytesOfMember ? errorOf(ArchiveFault::tooLarge) : ArchiveError();
    }

    void countUnpacked(std::uint64_t count) {
        unpacked_ += count;
        // Where the archive is compressed as a whole, what lies between the members counts as well.
        const std::int64_t stream = isCompressedWhole() ? archive_filter_bytes(handle_.get(), 0) : 0;
        const std::uint64_t most = size_ > limits_.bytesUnpacked / limits_.timesUnpacked
                                       ? limits_.bytesUnpacked
                                       : std::max(size_ * limits_.timesUnpacked, limits_.alwaysUnpacked);
        if (std::max(unpacked_, static_cast<std::uint64_t>(stream)) > most)
            end(errorOf(ArchiveFault::unpacksToTooMuch));
    }

    /// What has to be unpacked to come to the next member is counted as it comes, where the library unpacks it all:
    /// in solid archives. Elsewhere it leaps.
    void passOver() {
        isRead_ = true;
        if (memberError_ || !(isCompressedWhole() || archive_format(handle_.get()) == ARCHIVE_FORMAT_7ZIP)) return;
        const void* block = nullptr;
        std::size_t count = 0;
        la_int64_t offset = 0;
        while (!error_ && archive_read_data_block(handle_.get(), &block, &count, &offset) == ARCHIVE_OK)
            countUnpacked(count);
    }

    ArchiveLimits limits_;
    Handle handle_ = makeReader();
    std::optional<Descriptor> file_;
    std::span<const std::uint8_t> bytes_;
    std::uint64_t size_ = 0;
    std::uint64_t unpacked_ = 0;
    std::size_t members_ = 0;
    std::size_t bytesOfNames_ = 0;
    std::unordered_set<std::string> locations_;
    ArchiveError memberError_;
    ArchiveError error_;
    int starts_ = 0;
    bool isReadable_ = true;
    bool isStuck_ = false;
    bool isRead_ = true;  // the last member, or there is none
    bool isAtEnd_ = false;
};

ArchiveReader::ArchiveReader(const std::filesystem::path& file, const ArchiveLimits& limits)
    : pass_(std::make_unique<Pass>(file, limits)) {}
ArchiveReader::ArchiveReader(std::span<const std::uint8_t> bytes, const ArchiveLimits& limits)
    : pass_(std::make_unique<Pass>(bytes, limits)) {}
ArchiveReader::~ArchiveReader() = default;

std::optional<ArchiveMember> ArchiveReader::next() {
    return pass_->next();
}

std::optional<std::vector<std::uint8_t>> ArchiveReader::read(ArchiveError& error) {
    return pass_->read(error);
}

const ArchiveError& ArchiveReader::error() const noexcept {
    return pass_->error();
}

}  // namespace velamo
