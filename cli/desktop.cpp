#include "cli/desktop.h"

#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <ostream>
#include <set>
#include <system_error>

#include "catalogue/indexer.h"
#include "cli/catalogue_file.h"
#include "cli/commands.h"
#include "cli/json.h"
#include "integrations/desktops/desktop_hosts.h"
#include "integrations/desktops/failed_thumbnails.h"
#include "velamo/platform/system/user_data.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

constexpr const char* thumbnails = "Thumbnails";

std::vector<fs::path> designsOf(const RefreshRequest& request) {
    std::vector<fs::path> files;
    for (FoundDesign& design : Catalogue::openForSearching(request.catalogue).search({.folder = request.folder})) {
        std::error_code error;
        // What cannot be looked at may be there: the host looks for itself.
        if (fs::exists(design.file, error) || error) files.push_back(std::move(design.file));
    }
    return files;
}

HostOutcome refreshThumbnails(std::span<const fs::path> files) {
    const fs::path failed = userCacheFolder() / "thumbnails" / "fail";
    std::error_code failure;
    HostOutcome outcome{.host = thumbnails, .state = HostOutcome::State::refreshed};
    outcome.count = forgetFailedThumbnails(failed, {files.begin(), files.end()}, failure);
    if (failure) outcome.state = HostOutcome::State::failed;
    if (failure) outcome.problem = failure.message();
    return outcome;
}

std::string sentenceOf(const HostOutcome& outcome) {
    if (outcome.state == HostOutcome::State::absent) return outcome.host + ": not there";
    if (outcome.host == thumbnails) return outcome.host + ": " + counted(outcome.count, "failure") + " forgotten";
    return outcome.host + ": " + counted(outcome.count, "design") + " refreshed";
}

Json jsonOf(const HostOutcome& outcome) {
    constexpr std::array<const char*, 3> states{"absent", "refreshed", "failed"};
    Json json{{"host", outcome.host}, {"state", states[static_cast<std::size_t>(outcome.state)]}};
    if (outcome.state == HostOutcome::State::refreshed) json["count"] = outcome.count;
    if (outcome.state == HostOutcome::State::failed) json["problem"] = outcome.problem;
    return json;
}

ExitStatus print(std::span<const HostOutcome> outcomes, bool isJson, const Console& console) {
    auto status = ExitStatus::success;
    Json list = Json::array();
    for (const HostOutcome& outcome : outcomes) {
        const bool hasFailed = outcome.state == HostOutcome::State::failed;
        if (hasFailed) status = ExitStatus::failure;
        if (hasFailed) console.problems << "velamo: " << outcome.host << ": " << outcome.problem << '\n';
        if (isJson) list.push_back(jsonOf(outcome));
        if (!isJson && !hasFailed) console.out << sentenceOf(outcome) << '\n';
    }
    if (isJson) console.out << listTextOf(list);
    return status;
}

}  // namespace

ExitStatus refreshDesktop(const RefreshRequest& request, const Console& console) {
    return withCatalogue(request.catalogue, console, [&] {
        const auto files = designsOf(request);
        auto outcomes = refreshHosts(files);
        outcomes.push_back(refreshThumbnails(files));
        return print(outcomes, request.isJson, console);
    });
}

void describeDesktop(CLI::App& program, Action& chosen) {
    struct Options {
        std::string catalogue = catalogueOfUser();
        std::string folder;
        bool isJson = false;
    };
    auto* desktop = program.add_subcommand("desktop", "Tell the searches of the desktops of designs");
    desktop->require_subcommand(1);
    auto* command = desktop->add_subcommand(
        "refresh", "Have them look again at designs that they knew before velamo was installed");
    const auto options = std::make_shared<Options>();
    command->add_option("--folder", options->folder, "Only designs in this folder or below it");
    command->add_flag("--json", options->isJson, "Print a JSON list with an object for each: host, state, count");
    command->add_option("--catalogue", options->catalogue, "The catalogue's file")->capture_default_str();
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) {
            RefreshRequest request{.catalogue = options->catalogue, .folder = {}, .isJson = options->isJson};
            if (!options->folder.empty()) request.folder = catalogueName(options->folder);
            return refreshDesktop(request, console);
        };
    });
}

}  // namespace velamo
