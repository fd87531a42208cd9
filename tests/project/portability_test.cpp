// The library, the importer and their tests are built on Apple's systems too, whose compilers we do not have here: what
// those systems do not have, or have otherwise, stays out, or in the files that know better.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

struct Row {
    const char* name;
    std::vector<const char*> words;
    std::set<std::string> files;  // that may have one of them
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

/// What Apple's branch of the build compiles, and what of it belongs to other systems.
constexpr std::array builtFolders{"velamo",
                                  "plugin",
                                  "integrations/macos",
                                  "samples",
                                  "tests/editing",
                                  "tests/faults",
                                  "tests/arithmetic",
                                  "tests/formats",
                                  "tests/measure",
                                  "tests/model",
                                  "tests/integrations/macos",
                                  "tests/platform",
                                  "tests/plugin",
                                  "tests/render",
                                  "tests/support"};
constexpr std::array otherSystems{"velamo/platform/archives/",       "tests/platform/archives/",
                                  "velamo/platform/processes/",      "velamo/platform/corefoundation/",
                                  "tests/platform/processes/",       "tests/platform/corefoundation/",
                                  "tests/support/child_processes.h", "tests/support/without_filters.h"};

bool isBuilt(const fs::path& name) {
    const auto isOf = [&](const char* other) { return name.native().starts_with(other); };
    return (name.extension() == ".cpp" || name.extension() == ".h") &&
           std::none_of(otherSystems.begin(), otherSystems.end(), isOf);
}

/// The files that have one of the words, by their names below the source folder.
std::set<std::string> filesWith(const std::vector<const char*>& words, const fs::path& sourceFolder) {
    std::set<std::string> found;
    for (const char* folder : builtFolders)
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder / folder)) {
            const auto name = entry.path().lexically_relative(sourceFolder);
            if (!entry.is_regular_file() || !isBuilt(name)) continue;
            const std::string text = test::TemporaryFolder::read(entry.path());
            const auto isThere = [&](const char* word) { return text.find(word) != text.npos; };
            if (std::any_of(words.begin(), words.end(), isThere)) found.insert(name.native());
        }
    return found;
}

class Portability : public testing::TestWithParam<Row> {};

TEST_P(Portability, IsBrokenNowhereElse) {
    EXPECT_EQ(filesWith(GetParam().words, VELAMO_SOURCE_FOLDER), GetParam().files);
}

/// That the test above can fail.
TEST_P(Portability, IsSeenToBeBroken) {
    const test::TemporaryFolder folder;
    for (const char* built : builtFolders) folder.write(fs::path(built) / "blameless.cpp", "int main() {}\n");
    EXPECT_EQ(filesWith(GetParam().words, folder.path()), std::set<std::string>{});
    for (const char* word : GetParam().words)
        for (const char* built : builtFolders) {
            const auto name = fs::path(built) / "deep" / "planted.h";
            const auto planted = folder.write(name, "#pragma once\n    auto x = " + std::string(word) + "1;\n");
            EXPECT_EQ(filesWith(GetParam().words, folder.path()), std::set<std::string>{name}) << word;
            fs::remove(planted);
        }
}

TEST(Portability, IsNotAskedOfOtherSystemsFiles) {
    const test::TemporaryFolder folder;
    for (const char* built : builtFolders) fs::create_directories(folder.path() / built);
    for (const char* other : otherSystems)
        folder.write(std::string(other) + (std::string_view(other).ends_with('/') ? "file.cpp" : ""), "pipe2(");
    folder.write("velamo/notes.md", "pipe2(");
    EXPECT_EQ(filesWith({"pipe2("}, folder.path()), std::set<std::string>{});
}

const std::string text = "velamo/platform/text/";
const std::string systemRoom = "velamo/platform/system/";
const std::string tests = "tests/platform/";
INSTANTIATE_TEST_SUITE_P(
    Rows, Portability,
    testing::Values(
        // It is there for whole numbers alone.
        Row{"FromChars", {"from_chars(", "from_chars<"}, {text + "plain_number.h", text + "string_table.cpp"}},
        // They stand in another header on Apple's systems.
        Row{"Locales",
            {"newlocale", "xlocale.h", "uselocale", "duplocale"},
            {text + "plain_locale.h", "velamo/platform/plist/plist.cpp"}},
        Row{"NumbersOfLocales", {"strtod_l", "strtof_l", "strtold_l"}, {text + "plain_number.cpp"}},
        Row{"Proc",
            {"\"/proc", "\"/sys/"},
            {systemRoom + "files.cpp", systemRoom + "shared_module.cpp", "tests/plugin/metadata_test.cpp",
             "tests/support/unreadable_file.h"}},
        Row{"FullDevice", {"\"/dev/full"}, {tests + "output_buffer_test.cpp"}},
        Row{"LinuxHeaders",
            {"<linux/",
             "<asm/",
             "<bits/",
             "<seccomp.h>",
             "<sys/prctl.h>",
             "<sys/syscall.h>",
             "<sys/sendfile.h>",
             "<sys/inotify.h>",
             "<sys/fanotify.h>",
             "<sys/epoll.h>",
             "<sys/eventfd.h>",
             "<sys/signalfd.h>",
             "<sys/timerfd.h>",
             "<sys/sysinfo.h>",
             "<sys/vfs.h>",
             "<sys/auxv.h>",
             "<sys/personality.h>",
             "<sys/sysmacros.h>",
             "<sys/capability.h>",
             "<mntent.h>",
             "<pty.h>",
             "<endian.h>",
             "<byteswap.h>",
             "<link.h>",
             "<elf.h>"},
            {}},
        // Of the same names, with other arguments.
        Row{"OtherHeaders",
            {"<sys/xattr.h>", "<sys/mount.h>", "<sys/random.h>", "<sys/ptrace.h>"},
            {systemRoom + "file_features.cpp", tests + "files_test.cpp"}},
        Row{"GnuHeaders",
            {"<malloc.h>", "<error.h>", "<features.h>", "<gnu/", "<ext/"},
            {systemRoom + "program_start.cpp"}},
        Row{"LinuxCalls",
            {"pipe2(",
             "accept4(",
             "dup3(",
             "ppoll(",
             "epoll_",
             "eventfd(",
             "signalfd(",
             "timerfd_",
             "inotify_",
             "memfd_create(",
             "prctl(",
             "syscall(SYS_",
             "gettid(",
             "getrandom(",
             "statx(",
             "mkostemp(",
             "fdatasync(",
             "fallocate(",
             "posix_fadvise(",
             "sync_file_range(",
             "copy_file_range(",
             "::splice(",
             "sendfile(",
             "unshare(",
             "sched_setaffinity(",
             "sched_getaffinity(",
             "sigtimedwait(",
             "sigwaitinfo(",
             "euidaccess(",
             "F_OFD_",
             "O_PATH",
             "O_DIRECT |",
             "MSG_NOSIGNAL",
             "SOCK_CLOEXEC",
             "MAP_POPULATE",
             "MREMAP_"},
            {}},
        Row{"GnuCalls",
            {"sigabbrev_np(", "sigdescr_np(", "strerrorname_np(", "strerrordesc_np(", "secure_getenv(",
             "canonicalize_file_name(", "get_current_dir_name(", "program_invocation_", "malloc_trim(", "mremap(",
             "strchrnul(", "memrchr(", "mempcpy(", "qsort_r(", "feenableexcept("},
            {}},
        Row{"Memory", {"mallopt("}, {systemRoom + "program_start.cpp"}},
        // Macros there, which no "::" may stand before.
        Row{"SetsOfSignals", {"::sigemptyset(", "::sigfillset(", "::sigaddset(", "::sigdelset(", "::sigismember("}, {}},
        Row{"TimesOfFiles",
            {"st_mtim.", "st_mtim;", "st_ctim.", "st_ctim;", "st_atim.", "st_atim;"},
            {systemRoom + "file_state.cpp", tests + "file_time_test.cpp"}},
        Row{"Rename", {"renameat2"}, {systemRoom + "set_aside.cpp"}},
        Row{"NamelessFiles", {"O_TMPFILE"}, {systemRoom + "files.cpp", tests + "files_test.cpp"}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace velamo
