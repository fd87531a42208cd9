// Indexing ten thousand designs of 1 to 100 kB, new and again with nothing changed, twenty thousand in archives, and
// what a process takes to get at its first file.
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/beside.h"
#include "bench/dst_file.h"
#include "catalogue/indexer.h"
#include "plugin/host.h"
#include "reading/facts_bytes.h"
#include "tests/support/deflated.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"
#include "velamo/platform/archives/archive_reader.h"
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

void runIndexerWith(std::vector<FactsReader> readers) {
    auto catalogue = Catalogue::openForIndexing(allDesigns().catalogue());
    const auto summary = indexFolders(catalogue, {{allDesigns().folder()}}, std::move(readers), 1, {});
    if (summary.designs() != designs) std::abort();
}

void runIndexer() {
    runIndexerWith(factsReaders(jobs).readers);
}

/// An answer with nothing but what the desktop's indexer asks for.
std::string attributesOnly(const std::string& file) {
    DesignFacts facts;
    facts.attributes = attributesOfFile(file).value();
    return bytesOf(FileOutcome(FileFacts{std::move(facts)}));
}

void runIndexerOfAttributes() {
    removeCatalogue();
    std::vector<FactsReader> readers;
    for (LastingWorker& worker : LastingWorker::some(jobs, WorkerTask::Service(attributesOnly)))
        readers.emplace_back(
            [own = std::make_shared<LastingWorker>(std::move(worker))](std::span<const fs::path> files) {
                const std::vector<std::string> paths(files.begin(), files.end());
                std::vector<FactsOutcome> outcomes;
                for (const auto& reply : own->ask(paths))
                    outcomes.emplace_back(std::get<FileFacts>(outcomeOf(std::get<std::string>(reply))));
                return outcomes;
            });
    runIndexerWith(std::move(readers));
    removeCatalogue();
}

/// Archives as they are bought, of eight designs each.
class Archives {
public:
    Archives() {
        for (std::size_t i = 0; i < count; ++i) write(i);
    }
    static constexpr std::size_t count = 2500;
    static constexpr std::size_t designsOfEach = 8;

    [[nodiscard]] fs::path folder() const { return top_.path() / "archives"; }
    [[nodiscard]] fs::path catalogue() const { return top_.path() / "catalogue.sqlite"; }
    [[nodiscard]] const std::vector<fs::path>& files() const noexcept { return files_; }

private:
    void write(std::size_t number) {
        constexpr std::size_t fewestStitches = 170;
        constexpr std::size_t mostStitches = 9000;
        std::vector<test::PackedFile> members;
        for (std::size_t i = 0; i < designsOfEach; ++i) {
            const std::size_t design = number * designsOfEach + i;
            const auto bytes =
                bench::dstFileOfStitches(fewestStitches + design * 7919 % (mostStitches - fewestStitches));
            members.push_back(test::deflatedFile(std::to_string(i) + ".dst", bytes));
        }
        files_.push_back(top_.write(folder() / (std::to_string(number) + ".zip"), test::zipOf(members)));
    }
    test::TemporaryFolder top_;
    std::vector<fs::path> files_;
};

const Archives& allArchives() {
    static const Archives made;
    return made;
}

void removeCatalogueOfArchives() {
    for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(allArchives().catalogue().native() + suffix);
}

void indexAllArchives() {
    auto catalogue = Catalogue::openForIndexing(allArchives().catalogue());
    const auto summary = indexFolders(catalogue, {{allArchives().folder()}}, factsReaders(jobs).readers, 1, {});
    if (summary.designs() != Archives::count * Archives::designsOfEach) std::abort();
}

/// The archives are gone through in as many processes as there are jobs, and their designs go nowhere.
void unpackAllArchives() {
    std::vector<pid_t> children;
    for (std::size_t first = 0; first < jobs; ++first) {
        const pid_t child = ::fork();
        if (child != 0) {
            children.push_back(child);
            continue;
        }
        for (std::size_t i = first; i < Archives::count; i += jobs) {
            ArchiveReader archive(allArchives().files()[i]);
            ArchiveError error;
            while (archive.next()) benchmark::DoNotOptimize(archive.read(error));
        }
        ::_exit(0);
    }
    for (const pid_t child : children) ::waitpid(child, nullptr, 0);
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

void indexWithFacts(benchmark::State& state) {
    bench::measureBeside(state, runIndexer, removeCatalogue, runIndexerOfAttributes);
}
BENCHMARK(indexWithFacts)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(4);

void indexArchives(benchmark::State& state) {
    bench::measureBeside(state, indexAllArchives, removeCatalogueOfArchives, unpackAllArchives);
}
BENCHMARK(indexArchives)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(4);

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
