#include "reading/facts_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

#include "tests/support/dst.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/platform/processes/confinement.h"

namespace velamo {
namespace {

/// A sound DST file of eleven stitches of 1 mm to the right.
test::Bytes soundDst() {
    test::Bytes records;
    for (int i = 0; i < 11; ++i) test::append(records, test::bytes(0x05, 0x00, 0x03));  // +1 +9
    return test::dstFile(records);
}

FactsOutcome readOne(const FactsReader& reader, const std::filesystem::path& file) {
    return reader({&file, 1}).at(0);
}
DesignFailure failureIn(const FactsOutcome& outcome) {
    return std::get<DesignFailure>(std::get<FileFacts>(outcome).content);
}
int reasonIn(const FactsOutcome& outcome) {
    return std::get<std::error_code>(outcome).value();
}

class Facts : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::vector<FactsReader> readers_ = factsReaders(2).readers;
};

TEST_F(Facts, AreThoseOfTheDesignAndItsBytes) {
    const auto bytes = soundDst();
    const auto file = folder_.write("rose.dst", bytes);
    for (const FactsReader& reader : readers_) {
        const auto facts = std::get<FileFacts>(readOne(reader, file));
        EXPECT_EQ(facts.hash, sha256Of(bytes));
        const auto& design = std::get<DesignFacts>(facts.content);
        EXPECT_EQ(design.attributes, (DesignAttributes{10.0F, 0.0F, 11.0F, 1.0F}));
        EXPECT_EQ(design.format, "DST");
        EXPECT_EQ(design.threads,
                  (std::vector<ThreadFacts>{{.color = {}, .name = {}, .palette = {}, .stitches = 11, .length = 10}}));
    }
}

TEST_F(Facts, OfEverySampleAreThoseOfItsDesign) {
    for (const Format& format : allFormats()) {
        const auto file = folder_.write("sample." + std::string(format.extension), test::sampleFile(format.extension));
        VLMDesign design;
        VLMError error;
        ASSERT_TRUE(importDesignFromURLerror(design, file, &error)) << file << error.message();
        EXPECT_EQ(std::get<DesignFacts>(std::get<FileFacts>(readOne(readers_[0], file)).content), factsOfDesign(design))
            << file;
    }
}

TEST_F(Facts, OfABrokenFileAreTheReason) {
    const auto file = folder_.write("torn.dst", std::string("LA:"));
    const auto outcome = readOne(readers_[0], file);
    EXPECT_EQ(failureIn(outcome),
              (DesignFailure{"de.velamo.vlmdesign.ErrorDomain", 123, "Unable to import DST file (missing header)."}));
    EXPECT_TRUE(std::get<FileFacts>(outcome).hash.has_value());
}

TEST_F(Facts, TellWhatIsNotThereFromWhatIsBroken) {
    EXPECT_EQ(reasonIn(readOne(readers_[0], folder_.path() / "nowhere.dst")), ENOENT);
}

TEST_F(Facts, TellWhatTheSystemCannotReadFromWhatIsBroken) {
    const auto huge = folder_.write("huge.dst", "");
    std::filesystem::resize_file(huge, std::uintmax_t{6} << 30);
    EXPECT_EQ(reasonIn(readOne(readers_[0], huge)), EFBIG);
    const auto failing = folder_.path() / "failing.dst";
    std::filesystem::create_symlink("/proc/self/mem", failing);
    EXPECT_EQ(reasonIn(readOne(readers_[0], failing)), EIO);
    // A design whose own colours cannot be read at the moment would seem to have others.
    const auto rose = folder_.write("rose.dst", soundDst());
    std::filesystem::create_symlink("/proc/self/mem", folder_.path() / "rose.threads");
    EXPECT_EQ(reasonIn(readOne(readers_[0], rose)), EIO);
}

/// What a reader needs memory for that it cannot have is written down as that file's failure.
TEST(LimitedReader, RefusesWhatTakesTooMuchMemory) {
    if (!canLimitMemory()) GTEST_SKIP() << "sanitizers need the address space";
    const test::TemporaryFolder folder;
    const auto file = folder.write("huge.exp", std::string());
    std::filesystem::resize_file(file, std::uintmax_t{200} << 20);  // stitches on the spot
    const auto readers = factsReaders(1, {.memory = std::uint64_t{700} << 20}).readers;
    EXPECT_EQ(failureIn(readOne(readers[0], file)).code, ENOMEM);
    const auto rose = folder.write("rose.dst", soundDst());
    EXPECT_TRUE(std::holds_alternative<DesignFacts>(std::get<FileFacts>(readOne(readers[0], rose)).content));
}

TEST(LimitedReader, RefusesWhatTakesTooLong) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("large.exp", std::string());
    std::filesystem::resize_file(file, std::uintmax_t{60} << 20);
    const auto readers = factsReaders(1, {.time = std::chrono::milliseconds(2)}).readers;
    const auto outcome = readOne(readers[0], file);
    EXPECT_EQ(failureIn(outcome), (DesignFailure{"NSPOSIXErrorDomain", ETIMEDOUT, "reading it takes too long"}));
    EXPECT_EQ(std::get<FileFacts>(outcome).hash, std::nullopt);
}

TEST(ReaderNumber, ChangesWithTheModule) {
    const test::TemporaryFolder folder;
    const auto module = folder.write("library", std::string("one"));
    const auto before = readerNumber(module);
    EXPECT_EQ(readerNumber(module), before);
    folder.write("library", std::string("another"));
    EXPECT_NE(readerNumber(module), before);
    std::filesystem::remove(module);
    EXPECT_THROW(static_cast<void>(readerNumber(module)), std::system_error);
    EXPECT_EQ(readerNumber(), readerNumber());
}

}  // namespace
}  // namespace velamo
