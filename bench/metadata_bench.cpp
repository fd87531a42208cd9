#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/beside.h"
#include "bench/dst_file.h"
#include "platform/shared_module.h"
#include "plugin/host.h"
#include "plugin/importer.h"
#include "plugin/owned.h"

namespace velamo {
namespace {

/// A file in a temporary folder of its own, gone at the end of the scope.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::vector<std::uint8_t>& bytes) {
        std::string folder = (std::filesystem::temp_directory_path() / "velamo-bench-XXXXXX").native();
        if (::mkdtemp(folder.data()) == nullptr) std::abort();
        path_ = std::filesystem::path(folder) / "design.dst";
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove_all(path_.parent_path(), ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
};

/// The least that reading the file whole takes.
void readBarely(const char* path) {
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    ::fstat(descriptor, &status);
    std::vector<char> bytes(static_cast<std::size_t>(status.st_size));
    benchmark::DoNotOptimize(::read(descriptor, bytes.data(), bytes.size()));
    ::close(descriptor);
}

/// The importer's entry on a file of about 30 kB, beside a bare read of the same file.
void getMetadata(benchmark::State& state) {
    constexpr std::size_t stitchesOf30Kilobytes = 9829;
    const TemporaryFile file(bench::dstFileOfStitches(stitchesOf30Kilobytes));
    const SharedModule module(PluginHost::findModule());
    const auto entry = reinterpret_cast<decltype(&GetMetadataForFile)>(module.symbol("GetMetadataForFile"));
    const auto path = own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, file.path().c_str()));
    const auto attributes = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                          &kCFTypeDictionaryValueCallBacks));
    const auto import = [&] {
        if (!entry(nullptr, attributes.get(), nullptr, path.get())) std::abort();
    };
    const auto read = [&] { readBarely(file.path().c_str()); };
    bench::measureBeside(state, import, read);
}
BENCHMARK(getMetadata)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace velamo

BENCHMARK_MAIN();
