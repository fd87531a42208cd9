// What holds for every format: its sample imports, and no damaged file does more harm than to be refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include "tests/support/samples.h"
#include "tests/support/stitches.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::Bytes;
using test::sampleFile;

using Codes = std::set<int>;
const Codes jefCodes{20, 21, 23, 24};
const Codes pcsCodes{160, 161, 162, 163, 164, 165};
/// The errors by which each format refuses a file; any may also be found to hold no stitches or threads.
const std::map<std::string_view, Codes> codesOfFormats{
    {"dst", {110, 111, 112, 113, 114, 115, 116, 117, 118, 119, 123}},
    {"exp", {100}},
    {"jef", jefCodes},
    {"jef+", jefCodes},
    {"jpx", {210, 211, 212}},
    {"ksm", {170, 171}},
    {"pcd", pcsCodes},
    {"pcq", pcsCodes},
    {"pcs", pcsCodes},
    {"pec", {30, 31, 32, 190, 191, 192}},
    {"pes", {30, 31, 32, 33, 190, 191, 192}},
    {"sew", {90, 91}},
    {"vp3", {150, 151, 152, 153, 154}},
};
const Codes emptyDesign{11, 12};

struct Outcome {
    bool isRead = false;
    VLMDesign design;
    VLMError error;
};

/// Imports one file after the other under the same name.
class Importer {
public:
    explicit Importer(const Format& format) : format_(format) {}

    Outcome import(const Bytes& file) const {
        Outcome outcome;
        // A file that is emptied and written again goes to the disk at once; a new one can wait and be gone by then.
        std::filesystem::remove(path_);
        folder_.write(path_.filename(), file);
        outcome.isRead = importDesignFromURLerror(outcome.design, path_, &outcome.error);
        return outcome;
    }

    /// A file either imports or is refused by an error of its format, and never stands for more than its bytes can.
    void check(const Bytes& file) const {
        const Outcome outcome = import(file);
        if (!outcome.isRead) {
            const bool isKnown = codesOfFormats.at(format_.extension).contains(outcome.error.code) ||
                                 emptyDesign.contains(outcome.error.code);
            EXPECT_TRUE(isKnown) << outcome.error.code << ' ' << outcome.error.message();
            EXPECT_EQ(outcome.error.domain, designErrorDomain);
            EXPECT_FALSE(outcome.error.message().empty());
        } else {
            EXPECT_EQ(outcome.error.code, 0);
            EXPECT_EQ(outcome.design.displayRange(), (StitchRange{0, outcome.design.stitches().size()}));
        }
        // The smallest stitch takes two bytes, and one more may be made of a header; the smallest thread takes three.
        // Of a VP3 file whose sections lead backward, bytes are read more than once.
        const std::size_t bytesRead = format_.extension == "vp3" ? file.size() * 8 + (1U << 20) : file.size();
        EXPECT_LE(outcome.design.stitches().size(), bytesRead / 2 + 1);
        EXPECT_LE(outcome.design.threads().size(), bytesRead / 3 + 1);
    }

private:
    const Format& format_;
    test::TemporaryFolder folder_;
    std::filesystem::path path_ = folder_.path() / ("sample." + std::string(format_.extension));
};

/// Damages a file as broken disks and bad programs do: single bytes, whole numbers, and a lost end.
class Mutator {
public:
    explicit Mutator(unsigned seed) : random_(seed) {}

    Bytes mutated(Bytes file) {
        for (auto changes = random_() % 4 + 1; changes > 0; --changes)
            random_() % 4 == 0 ? setNumber(file) : setByte(file);
        if (random_() % 8 == 0) file.resize(random_() % (file.size() + 1));
        if (random_() % 16 == 0) file.insert(file.end(), random_() % 16, static_cast<std::uint8_t>(random_()));
        return file;
    }

private:
    /// Mostly near the ends of the file: that is where headers and stitches are, with padding between them.
    std::size_t place(const Bytes& file) {
        constexpr std::size_t near = 128;
        const std::size_t size = file.size();
        switch (random_() % 3) {
            case 0:
                return random_() % std::min(size, near);
            case 1:
                return size - 1 - random_() % std::min(size, near);
            default:
                return random_() % size;
        }
    }
    void setByte(Bytes& file) {
        constexpr std::array<unsigned, 8> telling{0, 1, 0x7F, 0x80, 0xFF, 0xFE, 0x10, 0x88};
        const auto any = static_cast<unsigned>(random_());
        file[place(file)] = static_cast<std::uint8_t>(random_() % 2 == 0 ? any : telling[any % telling.size()]);
    }
    void setNumber(Bytes& file) {
        constexpr std::array<std::uint32_t, 7> telling{0,          1,          0x7FFFFFFF, 0x80000000,
                                                       0xFFFFFFFF, 0x40000000, 0x1FFFFFFF};
        const std::uint32_t number = telling[random_() % telling.size()];
        const std::size_t start = place(file);
        for (std::size_t i = 0; i < 4 && start + i < file.size(); ++i)
            file[start + i] = static_cast<std::uint8_t>(number >> 8 * i);
    }

    std::mt19937 random_;
};

class AllFormats : public testing::TestWithParam<Format> {};

TEST_P(AllFormats, ImportTheirSample) {
    const Importer importer(GetParam());
    const Outcome outcome = importer.import(sampleFile(GetParam().extension));
    EXPECT_TRUE(outcome.isRead) << outcome.error.message();
    EXPECT_EQ(outcome.design.designType(), GetParam().type);
    EXPECT_GE(outcome.design.stitches().size(), 4U);
    EXPECT_GE(outcome.design.threads().size(), 1U);
    EXPECT_EQ(outcome.design.displayRange(), (StitchRange{0, outcome.design.stitches().size()}));
    EXPECT_LE(outcome.design.xMin(), outcome.design.xMax());
    EXPECT_LE(outcome.design.yMin(), outcome.design.yMax());
}

TEST_P(AllFormats, ImportOverAnotherDesign) {
    const Importer importer(GetParam());
    const Bytes file = sampleFile(GetParam().extension);
    const Outcome outcome = importer.import(file);
    const test::TemporaryFolder folder;
    const auto path = folder.write("sample." + std::string(GetParam().extension), file);
    VLMDesign design;
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(importDesignFromURLerror(design, path, nullptr));
        EXPECT_EQ(design.stitches(), outcome.design.stitches());
        EXPECT_EQ(design.threads(), outcome.design.threads());
        EXPECT_EQ(test::boundsOf(design), test::boundsOf(outcome.design));
    }
}

TEST_P(AllFormats, RefuseAnEmptyFile) {
    const Outcome outcome = Importer(GetParam()).import({});
    EXPECT_FALSE(outcome.isRead);
    const int code = outcome.error.code;
    EXPECT_TRUE(codesOfFormats.at(GetParam().extension).contains(code) || emptyDesign.contains(code)) << code;
}

TEST_P(AllFormats, SurviveEveryPrefix) {
    const Importer importer(GetParam());
    const Bytes whole = sampleFile(GetParam().extension);
    for (std::size_t length = 0; length <= whole.size() && !HasFailure(); ++length) {
        SCOPED_TRACE(length);
        importer.check(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
    }
}

TEST_P(AllFormats, SurviveTenThousandMutations) {
    const Importer importer(GetParam());
    const Bytes whole = sampleFile(GetParam().extension);
    Mutator mutator(2026);
    for (int i = 0; i < 10000 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        importer.check(mutator.mutated(whole));
    }
}

INSTANTIATE_TEST_SUITE_P(Each, AllFormats, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

TEST(Formats, HaveTheirCodes) {
    EXPECT_EQ(codesOfFormats.size(), allFormats().size());
    for (const Format& format : allFormats())
        EXPECT_TRUE(codesOfFormats.contains(format.extension)) << format.extension;
}

}  // namespace
}  // namespace velamo
