// The sample designs of the repository are what our own program makes, and what a person expects of samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::TemporaryFolder;

const std::filesystem::path samplesFolder = std::filesystem::path(VELAMO_SOURCE_FOLDER) / "samples";

/// The designs, and their thread side files.
std::set<std::string> samplesIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (formatWithExtension(extensionOf(entry.path())) != nullptr || entry.path().extension() == ".threads")
            names.insert(entry.path().filename());
    return names;
}

/// A sample's bytes but for the thumbnails, whose pixels the graphics library decides on.
std::string comparable(const std::filesystem::path& file) {
    constexpr std::size_t thumbnailSize = 228;
    std::string bytes = TemporaryFolder::read(file);
    const std::size_t thumbnails = file.extension() == ".pes" ? 2 : file.extension() == ".pec" ? 1 : 0;
    bytes.resize(bytes.size() - std::min(bytes.size(), thumbnails * thumbnailSize));
    return bytes;
}

TEST(Samples, AreMadeByOurProgram) {
    const TemporaryFolder folder;
    ASSERT_EQ(std::system((std::string(VELAMO_MAKE_SAMPLES) + " " + folder.path().native()).c_str()), 0);
    EXPECT_EQ(samplesIn(folder.path()), samplesIn(samplesFolder));
    for (const auto& name : samplesIn(folder.path()))
        EXPECT_TRUE(comparable(folder.path() / name) == comparable(samplesFolder / name)) << name;
}

TEST(Samples, AreReadWithTheirColours) {
    std::size_t designs = 0;
    for (const auto& name : samplesIn(samplesFolder)) {
        if (std::filesystem::path(name).extension() == ".threads") continue;
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

TEST(Samples, AreThereInEveryFormatThatWeWrite) {
    const auto samples = samplesIn(samplesFolder);
    for (const Format& format : allFormats())
        EXPECT_EQ(samples.contains("letter-f." + std::string(format.extension)), format.writer != nullptr)
            << format.extension;
}

}  // namespace
}  // namespace velamo
