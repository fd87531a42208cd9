#include "velamo/platform/processes/worker_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "velamo/platform/processes/confinement.h"
#include "velamo/platform/system/signals.h"
#include "velamo/platform/system/system_call.h"

namespace velamo {
namespace {

constexpr std::size_t longestMessage = 65536;
constexpr int placeOfSocket = 3;  // the first behind the standard streams
constexpr int placeOfAttachment = 4;
constexpr std::chrono::seconds graceOfOwner{2};

enum class Kind : char { request, answer, death, ready };

/// What passes the socket: a header, and a text behind it. Numbers tell to which request an answer belongs: the death
/// of a worker that had answered already belongs to none that is still waited for.
struct Header {
    std::uint64_t number = 0;
    std::uint64_t attached = 0;  // bytes of an answer's attachment: the file may hold more, from earlier ones
    Kind kind = Kind::request;
    bool isConfined = false;  // of a worker that is ready
    int signal = 0;           // of a death
};

struct Message {
    Header header;
    std::string text;
};

std::system_error lastError(const char* what) {
    return {errno, std::generic_category(), what};
}

/// One message, whole; false, with errno, when it is too long or the other side is gone.
bool send(int socket, const Message& message) {
    if (message.text.size() > longestMessage - sizeof(Header)) {
        errno = EMSGSIZE;
        return false;
    }
    std::string bytes(reinterpret_cast<const char*>(&message.header), sizeof(Header));
    bytes += message.text;
    const ssize_t sent = uninterrupted([&] { return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL); });
    return sent == static_cast<ssize_t>(bytes.size());
}

/// Nothing, and ECONNRESET, when the other side is gone; the system's reason where it does not tell.
std::optional<Message> receive(int socket) {
    const auto bytes = std::make_unique_for_overwrite<char[]>(longestMessage);  // too large for a small stack
    const ssize_t count = uninterrupted([&] { return ::recv(socket, bytes.get(), longestMessage, 0); });
    if (count >= 0 && count < static_cast<ssize_t>(sizeof(Header))) errno = ECONNRESET;
    if (count < static_cast<ssize_t>(sizeof(Header))) return std::nullopt;
    Message message;
    std::memcpy(&message.header, bytes.get(), sizeof(Header));
    message.text.assign(bytes.get() + sizeof(Header), static_cast<std::size_t>(count) - sizeof(Header));
    return message;
}

using Clock = std::chrono::steady_clock;

/// Whether a message, or the end of the other side, comes before the deadline.
bool comesBefore(int socket, Clock::time_point deadline) {
    pollfd socketInput{.fd = socket, .events = POLLIN, .revents = 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return false;
        const int count = ::poll(&socketInput, 1, static_cast<int>(std::min<std::int64_t>(left, INT_MAX)));
        if (count > 0) return true;
        if (count < 0 && errno != EINTR) return true;  // receiving tells why
    }
}

/// Tells the other side that this one has gone, also where closing fails: nobody is to be waited for in vain.
void hangUp(int socket) noexcept {
    ::shutdown(socket, SHUT_RDWR);
    ::close(socket);
}

/// How the process ended, as waitpid tells; 0 where there is none. Whatever else breaks the waiting off does not last.
int waitFor(pid_t process) noexcept {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno != ECHILD) continue;
    return status;
}

/// The number of the request that the worker has taken last, where its guardian can see it, too.
using SharedNumber = std::atomic<std::uint64_t>;
static_assert(SharedNumber::is_always_lock_free);

SharedNumber* makeSharedNumber() {
    void* const memory =
        ::mmap(nullptr, sizeof(SharedNumber), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) SharedNumber(0);
}

/// The next request. Its number is noted before it is taken: a request that a worker had taken and not noted when it
/// was killed would be waited for in vain.
std::optional<Message> takeRequest(SharedNumber& current) {
    Header header;
    const ssize_t count = uninterrupted([&header] { return ::recv(placeOfSocket, &header, sizeof(Header), MSG_PEEK); });
    if (count < static_cast<ssize_t>(sizeof(Header))) return std::nullopt;
    current = header.number;
    return receive(placeOfSocket);
}

void setTimer(std::chrono::milliseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const itimerval timer{
        .it_interval = {},
        .it_value = {.tv_sec = seconds.count(), .tv_usec = std::chrono::microseconds(time - seconds).count()}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

/// Ends this process with the one that made it, which may be gone already.
void endWith(pid_t maker) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != maker) ::_exit(0);
}

/// A session, and so a group of processes, of its own, or none at all: what ends the group must not end its maker's.
void beginSession() noexcept {
    if (::setsid() < 0) ::_exit(0);
}

/// Takes from this process what it got from its maker: how signals are taken, and all open files but the socket and the
/// attachment (-1: none), which get their places. Sockets of other guardians would else never close.
void breakAway(int socket, int attachment) noexcept {
    constexpr int aboveAllPlaces = placeOfAttachment + 1;
    restoreUsualSignals();
    ::signal(SIGXFSZ, SIG_IGN);  // a full attachment is an error
    const int movedSocket = ::fcntl(socket, F_DUPFD, aboveAllPlaces);
    const int movedAttachment = attachment < 0 ? -1 : ::fcntl(attachment, F_DUPFD, aboveAllPlaces);
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (nowhere != stream && ::dup2(nowhere, stream) < 0) ::close(stream);
    ::dup2(movedSocket, placeOfSocket);
    if (movedAttachment >= 0) ::dup2(movedAttachment, placeOfAttachment);
    ::closefrom(movedAttachment < 0 ? placeOfAttachment : placeOfAttachment + 1);
}

/// The worker: serves until its owner is gone. The alarm's signal, which nobody catches, ends it.
[[noreturn]] void serve(const WorkerTask& task, SharedNumber& current, pid_t guardian) noexcept {
    endWith(guardian);
    const int attachment = task.hasAttachment ? placeOfAttachment : -1;
    const Confinement confinement =
        confineToReading({.memory = task.limits.memory, .socket = placeOfSocket, .attachment = attachment});
    const bool isConfined = confinement.areCallsRefused && confinement.isLimited;
    if (!send(placeOfSocket, {.header = {.kind = Kind::ready, .isConfined = isConfined}, .text = {}})) ::_exit(0);
    if (task.limits.isConfinedOnly && !isConfined) ::_exit(0);
    while (auto request = takeRequest(current)) {
        setTimer(task.limits.time);
        AttachmentWriter writer(attachment);
        Message answer{.header = {.number = request->header.number, .kind = Kind::answer},
                       .text = task.service(request->text, writer)};
        setTimer(std::chrono::milliseconds(0));
        answer.header.attached = writer.size();
        if (!send(placeOfSocket, answer)) break;
    }
    ::_exit(0);
}

/// The guardian: one worker after the other, until one ends because the owner is gone. One that dies before it took
/// another request would go on dying.
[[noreturn]] void guard(const WorkerTask& task) noexcept {
    SharedNumber* const current = makeSharedNumber();
    const pid_t self = ::getpid();
    std::uint64_t buried = 0;
    while (current != nullptr) {
        const pid_t worker = ::fork();
        if (worker == 0) serve(task, *current, self);
        const int status = worker > 0 ? waitFor(worker) : 0;
        if (worker < 0 || status == 0 || *current == buried) break;
        buried = *current;
        const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        if (!send(placeOfSocket, {.header = {.number = buried, .kind = Kind::death, .signal = signal}, .text = {}}))
            break;
    }
    ::_exit(0);
}

}  // namespace

bool WorkerDeath::isTimeout() const noexcept {
    return signal == SIGALRM;
}

bool WorkerDeath::isFromOutside() const noexcept {
    constexpr std::array ownEnds{0, SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGSYS, SIGTRAP, SIGALRM};
    return std::find(ownEnds.begin(), ownEnds.end(), signal) == ownEnds.end();
}

std::string WorkerDeath::description() const {
    const char* const words = signal == 0 ? nullptr : ::sigdescr_np(signal);
    return words == nullptr ? "ended" : words;
}

std::error_code AttachmentWriter::append(std::span<const std::byte> bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t count = uninterrupted([&] { return ::pwrite(file_, bytes.data(), bytes.size(), size_); });
        if (count < 0) return lastSystemError();
        size_ += count;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

WorkerTask::WorkerTask(Service answer, const WorkerLimits& bounds)
    : service([answer = std::move(answer)](const std::string& request, AttachmentWriter&) { return answer(request); }),
      limits(bounds),
      hasAttachment(false) {}

WorkerTask::WorkerTask(AttachingService attach, const WorkerLimits& bounds)
    : service(std::move(attach)), limits(bounds), hasAttachment(true) {}

/// What an owner and a guardian have in common: both ends of a socket, and a file without a name.
struct WorkerProcess::Ends {
    explicit Ends(bool hasAttachment) {
        std::array<int, 2> sockets{};
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) throw lastError("socketpair");
        own = sockets[0];
        guardians = sockets[1];
        if (!hasAttachment) return;
        attachment = ::memfd_create("velamo", MFD_CLOEXEC);
        if (attachment < 0) throw closed("memfd_create");
    }
    /// Closes all, and makes an exception of the last failure.
    [[nodiscard]] std::system_error closed(const char* what) const {
        const std::system_error failure = lastError(what);
        for (const int descriptor : {own, guardians, attachment})
            if (descriptor >= 0) ::close(descriptor);
        return failure;
    }

    int own = -1;
    int guardians = -1;
    int attachment = -1;
};

WorkerProcess::WorkerProcess(const Ends& ends, std::chrono::milliseconds time) noexcept
    : socket_(ends.own), attachment_(ends.attachment), time_(time) {}

WorkerProcess::WorkerProcess(const WorkerTask& task) : time_(task.limits.time) {
    const Ends ends(task.hasAttachment);
    const pid_t self = ::getpid();
    guardian_ = ::fork();
    if (guardian_ < 0) throw ends.closed("fork");
    if (guardian_ == 0) {
        breakAway(ends.guardians, ends.attachment);
        beginSession();
        endWith(self);
        guard(task);
    }
    ::close(ends.guardians);
    socket_ = ends.own;
    attachment_ = ends.attachment;
}

WorkerProcess::~WorkerProcess() {
    hangUp(socket_);
    if (attachment_ >= 0) ::close(attachment_);
    if (guardian_ > 0) waitFor(guardian_);
}

bool WorkerProcess::isConfined() {
    if (!isConfined_) {
        const bool isInTime = comesBefore(socket_, Clock::now() + time_ + graceOfOwner);
        const auto message = isInTime ? receive(socket_) : std::nullopt;
        errno = ECONNRESET;
        if (!message || message->header.kind != Kind::ready) throw lastError("worker");
        isConfined_ = message->header.isConfined;
    }
    return *isConfined_;
}

/// False when the other side is gone.
bool WorkerProcess::sendRequest(const std::string& request) {
    const bool isSent = send(socket_, {.header = {.number = number_ + 1}, .text = request});
    if (!isSent && errno == EMSGSIZE) throw lastError("worker");
    if (isSent) ++number_;
    return isSent;
}

/// Takes the socket from a worker that does not keep to its time, which ends it, or leaves it with nobody to talk to.
void WorkerProcess::abandon() noexcept {
    ::shutdown(socket_, SHUT_RDWR);
    if (guardian_ > 0) ::kill(guardian_, SIGKILL);  // the worker ends with it
}

std::optional<WorkerProcess::Reply> WorkerProcess::receiveReply(std::uint64_t number) {
    // A worker ends itself in time, but one that a file has taken over may not.
    const auto deadline = Clock::now() + time_ + graceOfOwner;
    while (true) {
        if (!comesBefore(socket_, deadline)) {
            abandon();
            return WorkerDeath{SIGALRM};
        }
        auto message = receive(socket_);
        if (!message) {
            hasSocketFailed_ = errno != ECONNRESET;
            return std::nullopt;
        }
        if (message->header.kind == Kind::ready) isConfined_ = message->header.isConfined;
        if (message->header.kind == Kind::ready || message->header.number != number) continue;
        if (message->header.kind == Kind::death) return WorkerDeath{message->header.signal};
        attached_ = message->header.attached;
        return std::move(message->text);
    }
}

std::vector<WorkerProcess::Reply> WorkerProcess::ask(std::span<const std::string> requests) {
    constexpr std::size_t mostAhead = 16;
    std::vector<Reply> replies;
    replies.reserve(requests.size());
    const std::uint64_t before = number_;
    std::size_t sizeAhead = 0;
    while (replies.size() < requests.size()) {
        // No more than the socket holds: else both sides might wait for each other. What was answered before a loss can
        // still be had.
        for (std::size_t sent = number_ - before; sent < requests.size() && sent - replies.size() < mostAhead; ++sent) {
            if (sizeAhead > 0 && sizeAhead + requests[sent].size() > longestMessage) break;
            if (!sendRequest(requests[sent])) break;
            sizeAhead += requests[sent].size();
        }
        if (number_ - before == replies.size()) {  // not even one could be sent
            abandon();
            break;
        }
        sizeAhead -= requests[replies.size()].size();
        auto reply = receiveReply(before + replies.size() + 1);
        if (!reply) break;
        replies.push_back(std::move(*reply));
    }
    return replies;
}

std::error_code WorkerProcess::readAttachment(std::span<std::byte> bytes, std::uint64_t offset) const noexcept {
    if (offset > attached_ || bytes.size() > attached_ - offset) return std::make_error_code(std::errc::io_error);
    while (!bytes.empty()) {
        const ssize_t count =
            uninterrupted([&] { return ::pread(attachment_, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
        if (count <= 0) return {count < 0 ? errno : EIO, std::generic_category()};
        offset += static_cast<std::uint64_t>(count);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

std::uint64_t WorkerProcess::sizeOfAttachment() const noexcept {
    struct stat status = {};
    const bool isThere = ::fstat(attachment_, &status) == 0;
    return isThere ? std::min(attached_, static_cast<std::uint64_t>(status.st_size)) : 0;
}

void WorkerProcess::clearAttachment() noexcept {
    static_cast<void>(::ftruncate(attachment_, 0));
}

namespace {

/// A message to the nursery: descriptors travel beside a byte.
union DescriptorRoom {
    cmsghdr alignment;
    std::array<char, CMSG_SPACE(2 * sizeof(int))> bytes;
};

bool sendDescriptors(int socket, std::span<const int> descriptors) noexcept {
    char byte = 0;
    iovec content{.iov_base = &byte, .iov_len = 1};
    DescriptorRoom room{.bytes = {}};
    msghdr message = {};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = room.bytes.data();
    message.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(descriptors.size_bytes());
    std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size_bytes());
    return uninterrupted([&] { return ::sendmsg(socket, &message, MSG_NOSIGNAL); }) == 1;
}

/// False when the owner is gone.
bool receiveDescriptors(int socket, std::span<int> descriptors) noexcept {
    char byte = 0;
    iovec content{.iov_base = &byte, .iov_len = 1};
    DescriptorRoom room{.bytes = {}};
    msghdr message = {};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = room.bytes.data();
    message.msg_controllen = room.bytes.size();
    const ssize_t count = uninterrupted([&] { return ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC); });
    const cmsghdr* const header = count == 1 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (header == nullptr || header->cmsg_len != CMSG_LEN(descriptors.size_bytes())) return false;
    std::memcpy(descriptors.data(), CMSG_DATA(header), descriptors.size_bytes());
    return true;
}

/// The nursery: a guardian for each pair of descriptors that arrive, until the owner is gone. Then all of them end,
/// whatever they do: they are the nursery's group of processes. They do not end with the nursery itself, so that its
/// loss is no loss of workers.
[[noreturn]] void nurse(const WorkerTask& task) noexcept {
    std::array<int, 2> descriptors{-1, -1};
    const std::span<int> used = std::span(descriptors).first(task.hasAttachment ? 2 : 1);
    ::signal(SIGCHLD, SIG_IGN);  // nobody waits for guardians
    while (receiveDescriptors(placeOfSocket, used)) {
        const pid_t guardian = ::fork();
        const int failure = guardian < 0 ? errno : 0;
        if (guardian == 0) {
            breakAway(descriptors[0], descriptors[1]);
            guard(task);
        }
        for (const int descriptor : used) ::close(descriptor);
        Message answer{.header = {.kind = Kind::answer, .signal = failure}, .text = {}};
        if (!send(placeOfSocket, answer)) break;
    }
    ::kill(0, SIGKILL);
    ::_exit(0);
}

}  // namespace

WorkerNursery::WorkerNursery(const WorkerTask& task) : hasAttachment_(task.hasAttachment), time_(task.limits.time) {
    constexpr bool withoutAttachment = false;
    const WorkerProcess::Ends ends(withoutAttachment);
    process_ = ::fork();
    if (process_ < 0) throw ends.closed("fork");
    if (process_ == 0) {
        breakAway(ends.guardians, ends.attachment);
        beginSession();
        nurse(task);
    }
    ::close(ends.guardians);
    socket_ = ends.own;
}

WorkerNursery::~WorkerNursery() {
    hangUp(socket_);
    waitFor(process_);
}

std::unique_ptr<WorkerProcess> WorkerNursery::makeWorker() {
    const WorkerProcess::Ends ends(hasAttachment_);
    const std::array descriptors{ends.guardians, ends.attachment};
    const std::lock_guard lock(mutex_);
    const bool isAsked = sendDescriptors(socket_, std::span(descriptors).first(hasAttachment_ ? 2 : 1));
    const auto answer = isAsked ? receive(socket_) : std::nullopt;
    errno = answer ? answer->header.signal : ECONNRESET;
    if (errno != 0) throw ends.closed("fork");
    ::close(ends.guardians);
    return std::unique_ptr<WorkerProcess>(new WorkerProcess(ends, time_));
}

}  // namespace velamo
