#include "cli/catalogue_file.h"

#include <cerrno>
#include <system_error>

#include "catalogue/database.h"
#include "velamo/platform/system/user_data.h"

namespace velamo {

std::filesystem::path catalogueOfUser() {
    const auto folder = userDataFolder();
    return folder.empty() ? folder : folder / "velamo" / "catalogue.sqlite";
}

ExitStatus withCatalogue(const std::filesystem::path& file, const Console& console,
                         const std::function<ExitStatus()>& body) {
    if (file.empty()) {
        reportWrongUsage(console, "there is no home folder to keep the catalogue in: name a file with --catalogue");
        return ExitStatus::wrongUsage;
    }
    try {
        return body();
    } catch (const CatalogueError& error) {
        reportProblem(console, file.native(), error.what(), error.code());
    } catch (const std::system_error& error) {  // its own text would name the file twice
        reportProblem(console, file.native(), error.code().message(), error.code().value());
    }
    return ExitStatus::failure;
}

}  // namespace velamo
