#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "bench/beside.h"
#include "bench/design_files.h"
#include "plugin/host.h"
#include "plugin/importer.h"
#include "plugin/owned.h"
#include "tests/support/temporary_folder.h"
#include "velamo/platform/system/shared_module.h"

namespace velamo {
namespace {

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
    const test::TemporaryFolder folder;
    const auto file =
        folder.write("design." + std::string(format.extension), format.make(stitchesOf30Kilobytes(format)));
    const SharedModule module(PluginHost::findModule());
    const auto entry = reinterpret_cast<decltype(&GetMetadataForFile)>(module.symbol("GetMetadataForFile"));
    const auto path = own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, file.c_str()));
    const auto attributes = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                          &kCFTypeDictionaryValueCallBacks));
    const auto import = [&] {
        if (!entry(nullptr, attributes.get(), nullptr, path.get())) std::abort();
    };
    const auto read = [&] { readBarely(file.c_str()); };
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
