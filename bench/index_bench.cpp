// Indexing ten thousand designs of 1 to 100 kB, new and again with nothing changed, and what a process takes to get at
// its first file.
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "bench/beside.h"
#include "bench/dst_file.h"
#include "catalogue/indexer.h"
#include "plugin/host.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/folder_walk.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t designs = 10'000;
constexpr std::size_t folders = 100;
constexpr std::size_t jobs = 2;

/// The designs, in a folder that is gone at the end of the program.
class Designs {
public:
    Designs() {
        for (std::size_t i = 0; i < designs; ++i) write(i);
    }

    [[nodiscard]] fs::path folder() const { return top_.path() / "designs"; }
    [[nodiscard]] fs::path catalogue() const { return top_.path() / "catalogue.sqlite"; }
    [[nodiscard]] const std::vector<fs::path>& files() const noexcept { return files_; }

private:
    void write(std::size_t number) {
        constexpr std::size_t fewestStitches = 170;   // 1 kB
        constexpr std::size_t mostStitches = 33'000;  // 100 kB
        const fs::path folder = this->folder() / std::to_string(number % folders);
        files_.push_back(
            top_.write(folder / (std::to_string(number) + ".dst"),
                       bench::dstFileOfStitches(fewestStitches + number * 7919 % (mostStitches - fewestStitches))));
    }
    test::TemporaryFolder top_;
    std::vector<fs::path> files_;
};

const Designs& allDesigns() {
    static const Designs made;
    return made;
}

void removeCatalogue() {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) fs::remove(allDesigns().catalogue().native() + suffix);
}

void runIndexer() {
    auto readers = factsReaders(jobs);
    auto catalogue = Catalogue::openForIndexing(allDesigns().catalogue());
    const auto summary = indexFolders(catalogue, {{allDesigns().folder()}}, std::move(readers.readers), 1, {});
    if (summary.designs() != designs) std::abort();
}

/// The files are read by as many threads as there are jobs.
void readAll() {
    std::vector<std::thread> threads;
    threads.reserve(jobs);
    for (std::size_t first = 0; first < jobs; ++first)
        threads.emplace_back([first] {
            for (std::size_t i = first; i < designs; i += jobs) {
                auto bytes = readWholeFile(allDesigns().files()[i]);
                benchmark::DoNotOptimize(bytes.data());
            }
        });
    for (std::thread& thread : threads) thread.join();
}

/// What is asked of the system when nothing has changed: the folders' names, each file's state and its side file's.
void walkAll() {
    FolderWalk walk([](const std::string& name) { return formatWithExtension(extensionOf(name)) != nullptr; });
    walk.enter(allDesigns().folder());
    while (const auto listing = walk.next())
        for (const FolderEntry& entry : listing->entries) {
            std::error_code error;
            benchmark::DoNotOptimize(stateOfFile(threadFileOf(listing->folder / entry.name), error));
        }
}

void indexNew(benchmark::State& state) {
    bench::measureBeside(state, runIndexer, removeCatalogue, readAll);
}
BENCHMARK(indexNew)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(4);

void indexAgain(benchmark::State& state) {
    removeCatalogue();
    runIndexer();
    bench::measureBeside(state, runIndexer, walkAll);
}
BENCHMARK(indexAgain)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(6);

/// A process of its own that loads the module and reads a file, beside one that does nothing.
template <class Body>
void inFreshProcess(Body body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
}

void firstFile(benchmark::State& state) {
    const auto load = [] {
        PluginHost host(PluginHost::findModule());
        benchmark::DoNotOptimize(host.attributesOf(allDesigns().files().front()));
    };
    allDesigns();
    bench::measureBeside(
        state, [&] { inFreshProcess(load); }, [] { inFreshProcess([] {}); });
}
BENCHMARK(firstFile)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velamo

BENCHMARK_MAIN();
