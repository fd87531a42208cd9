// A table of ten thousand designs for a person, beside the same search as JSON.
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "bench/beside.h"
#include "catalogue/catalogue.h"
#include "cli/command_line.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

constexpr int designs = 10'000;
constexpr int folders = 100;

/// A catalogue of designs that are nowhere else, gone at the end of the program.
DesignFacts factsOf(const DesignAttributes& attributes) {
    DesignFacts facts;
    facts.attributes = attributes;
    return facts;
}

class KnownDesigns {
public:
    KnownDesigns() {
        std::string folder = (fs::temp_directory_path() / "velamo-bench-XXXXXX").native();
        if (::mkdtemp(folder.data()) == nullptr) std::abort();
        top_ = folder;
        auto catalogue = Catalogue::openForIndexing(file());
        for (int i = 0; i < designs; ++i) {
            const auto number = static_cast<float>(i);
            const std::string name = "designs/" + std::to_string(i % folders);
            catalogue.putDesign(catalogue.putFolder("/home/rose/" + name, name), std::to_string(i) + ".dst", {},
                                {.content = factsOf({number / 10, number / 7, number * 3, number / folders})});
        }
        catalogue.commit();
    }
    ~KnownDesigns() {
        std::error_code ignored;
        fs::remove_all(top_, ignored);
    }
    KnownDesigns(const KnownDesigns&) = delete;
    KnownDesigns& operator=(const KnownDesigns&) = delete;

    [[nodiscard]] fs::path file() const { return top_ / "catalogue.sqlite"; }

private:
    fs::path top_;
};

void search(std::vector<std::string> options) {
    static const KnownDesigns known;
    options.insert(options.begin(), {"search", "--catalogue", known.file().native()});
    std::ostringstream out;
    if (runCommandLine(std::move(options), {.out = out, .problems = out}) != 0) std::abort();
    benchmark::DoNotOptimize(out.str().data());
}

void textTableBesideJson(benchmark::State& state) {
    search({});
    bench::measureBeside(
        state, [] { search({}); }, [] { search({"--json"}); });
}
BENCHMARK(textTableBesideJson)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velamo

BENCHMARK_MAIN();
