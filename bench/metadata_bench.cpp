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
#include "bench/design_files.h"
#include "platform/shared_module.h"
#include "plugin/host.h"
#include "plugin/importer.h"
#include "plugin/owned.h"

namespace velamo {
namespace {

/// A file in a temporary folder of its own, gone at the end of the scope.
class TemporaryFile {
public:
    TemporaryFile(const std::vector<std::uint8_t>& bytes, std::string_view extension) {
        std::string folder = (std::filesystem::temp_directory_path() / "velamo-bench-XXXXXX").native();
        if (::mkdtemp(folder.data()) == nullptr) std::abort();
        path_ = std::filesystem::path(folder) / ("design." + std::string(extension));
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

/// The stitches of a file of about 30 kB.
std::size_t stitchesOf30Kilobytes(const bench::DesignFile& format) {
    constexpr std::size_t some = 1000;
    const std::size_t head = format.make(0).size();
    return 30000 * some / (format.make(some).size() - head) - head * some / (format.make(some).size() - head);
}

/// The importer's entry on a file of about 30 kB, beside a bare read of the same file.
void getMetadata(benchmark::State& state, const bench::DesignFile& format) {
    const TemporaryFile file(format.make(stitchesOf30Kilobytes(format)), format.extension);
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

void registerFile(const bench::DesignFile& format) {
    const std::string name = "getMetadata/" + std::string(format.extension);
    benchmark::RegisterBenchmark(name.c_str(), [&format](benchmark::State& state) { getMetadata(state, format); })
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace
}  // namespace velamo

int main(int argc, char** argv) {
    for (const auto& format : velamo::bench::designFiles) velamo::registerFile(format);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
