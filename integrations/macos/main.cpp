// Writes Info.plist and schema.xml into a bundle: describe_bundle CONTENTS VERSION OLDEST_SYSTEM.
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "integrations/macos/bundle_description.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/program_start.h"

namespace {

bool writeDescription(const std::filesystem::path& contents, const std::string& version, const std::string& system) {
    using namespace velamo;
    const std::string schema = importerSchema();
    return !replaceFile(contents / "Info.plist", xmlPropertyList(importerBundleProperties(version, system))) &&
           !replaceFile(contents / "Resources" / "schema.xml",
                        {reinterpret_cast<const std::uint8_t*>(schema.data()), schema.size()});
}

}  // namespace

int main(int argumentCount, char** arguments) {
    velamo::startProgram();
    if (argumentCount != 4) {
        std::cerr << "usage: " << arguments[0] << " CONTENTS VERSION OLDEST_SYSTEM\n";
        return EXIT_FAILURE;
    }
    const bool isDone =
        velamo::operation(nullptr, [&] { return writeDescription(arguments[1], arguments[2], arguments[3]); });
    if (!isDone) std::cerr << arguments[0] << ": cannot write into " << arguments[1] << '\n';
    return isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
