// The sample designs of the repository are what our own program makes, and what a person expects of samples.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "formats/import.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::TemporaryFolder;

const std::filesystem::path samplesFolder = std::filesystem::path(VELAMO_SOURCE_FOLDER) / "samples";

std::set<std::string> designsIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".dst" || entry.path().extension() == ".threads")
            names.insert(entry.path().filename());
    return names;
}

TEST(Samples, AreMadeByOurProgram) {
    const TemporaryFolder folder;
    ASSERT_EQ(std::system((std::string(VELAMO_MAKE_SAMPLES) + " " + folder.path().native()).c_str()), 0);
    EXPECT_EQ(designsIn(folder.path()), designsIn(samplesFolder));
    for (const auto& name : designsIn(folder.path()))
        EXPECT_TRUE(TemporaryFolder::read(folder.path() / name) == TemporaryFolder::read(samplesFolder / name)) << name;
}

TEST(Samples, AreReadWithTheirColours) {
    std::size_t designs = 0;
    for (const auto& name : designsIn(samplesFolder)) {
        if (std::filesystem::path(name).extension() != ".dst") continue;
        ++designs;
        VLMDesign design;
        VLMError error;
        ASSERT_TRUE(importDesignFromURLerror(design, samplesFolder / name, &error)) << name << ": " << error.message();
        EXPECT_TRUE(design.useThreadFile()) << name;
        EXPECT_EQ(design.designPaletteName(), "Brother Embroidery") << name;
        EXPECT_EQ(design.numberOfDifferentColors(), design.numberOfThreads()) << name;
        EXPECT_LT(design.designWidth(), 1000) << name;
        EXPECT_LT(design.designHeight(), 1000) << name;
    }
    EXPECT_GE(designs, 5U);
}

}  // namespace
}  // namespace velamo
