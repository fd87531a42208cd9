#include "cli/forget.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <memory>
#include <ostream>
#include <vector>

#include "catalogue/indexer.h"
#include "catalogue/places.h"
#include "cli/catalogue_file.h"
#include "cli/commands.h"
#include "cli/index.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

ExitStatus forgetOne(Catalogue& catalogue, const std::string& given, const Console& console) {
    const auto place = catalogueName(given);
    const auto removed = catalogue.forget(place);
    if (!removed) {
        reportProblem(console, given, "the catalogue knows nothing of it", ENOENT);
        return ExitStatus::failure;
    }
    console.out << console.shown(place.native()) << ": " << counted(*removed, "design") << " forgotten\n";
    const auto roots = catalogue.roots();
    const auto around =
        std::find_if(roots.begin(), roots.end(), [&](const auto& root) { return isWithin(place, root); });
    if (around != roots.end() && isThere(place))
        reportNote(console, given, "the next 'velamo index' finds it again, in " + around->native());
    return ExitStatus::success;
}

}  // namespace

ExitStatus forget(const std::filesystem::path& catalogue, std::span<const std::string> places, const Console& console) {
    return withCatalogue(catalogue, console, [&] {
        static_cast<void>(Catalogue::openForSearching(catalogue));  // one that is not there is not made
        Catalogue opened = openToChange(catalogue, console);
        auto status = ExitStatus::success;
        for (const std::string& place : places) status = std::max(status, forgetOne(opened, place, console));
        return status;
    });
}

void describeForget(CLI::App& program, Action& chosen) {
    struct Options {
        std::vector<std::string> places;
        std::string catalogue = catalogueOfUser();
    };
    auto* command = program.add_subcommand("forget", "Remove folders from the catalogue");
    const auto options = std::make_shared<Options>();
    command
        ->add_option("FOLDER", options->places,
                     "Folders with all that lies below them, or single designs, also such as are away; files stay as "
                     "they are")
        ->required();
    command->add_option("--catalogue", options->catalogue, "The catalogue's file")->capture_default_str();
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) { return forget(options->catalogue, options->places, console); };
    });
}

}  // namespace velamo
