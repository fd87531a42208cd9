#include "reading/facts_bytes.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace velamo {
namespace {

const FileFacts sound{
    DesignFacts{
        .attributes = {1, 2, 3, 4},
        .format = "PES",
        .version = 10,
        .jumps = 5,
        .trims = 6,
        .blocks = 7,
        .length = 8.5,
        .threads = {{.color = 0xED171F, .name = "Red", .palette = "Brother", .stitches = 9, .length = 10.5}, {}},
        .hoop = HoopFacts{"Janome", {}, 140, 200}},
    Sha256{std::byte{1}, std::byte{2}}};

struct OutcomeRow {
    const char* name;
    FileOutcome outcome;
};
class Outcomes : public testing::TestWithParam<OutcomeRow> {};
TEST_P(Outcomes, ComeBackAsTheyWere) {
    EXPECT_EQ(outcomeOf(bytesOf(GetParam().outcome)), GetParam().outcome);
}
TEST_P(Outcomes, AreRefusedWhereBytesAreMissingOrTooMany) {
    const FileOutcome refused = std::make_error_code(std::errc::bad_message);
    const std::string bytes = bytesOf(GetParam().outcome);
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_EQ(outcomeOf(bytes.substr(0, size)), refused) << size;
    EXPECT_EQ(outcomeOf(bytes + '\0'), refused);
}
/// Whatever a worker answers, it is an outcome or none.
TEST_P(Outcomes, OfOtherBytesDoNoHarm) {
    const std::string bytes = bytesOf(GetParam().outcome);
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        for (const char value : {'\0', '\1', '\x7F', '\xFF'}) {
            std::string other = bytes;
            other[place] = value;
            const FileOutcome outcome = outcomeOf(other);
            const auto* facts = std::get_if<FileFacts>(&outcome);
            if (facts == nullptr || std::holds_alternative<DesignFailure>(facts->content)) continue;
            EXPECT_LE(std::get<DesignFacts>(facts->content).threads.size(), bytes.size());
        }
    }
}
const ArchiveFacts archive{{{"a/rose.pes", "a/rose.pes", 5, 6, sound},
                            {"\x81.dst", "ü.dst", 0, 0, {DesignFailure{"domain", 123, "too short"}}}},
                           DesignFailure{"domain", 74, "damaged"}};

TEST(ArchiveFactsBytes, ComeBackAsTheyWere) {
    EXPECT_EQ(archiveFactsOf(bytesOf(archive)), archive);
    EXPECT_EQ(archiveFactsOf(bytesOf(ArchiveFacts{})), ArchiveFacts{});
}
TEST(ArchiveFactsBytes, AreRefusedWhereBytesAreMissingOrTooMany) {
    const std::string bytes = bytesOf(archive);
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_EQ(archiveFactsOf(bytes.substr(0, size)), std::nullopt) << size;
    EXPECT_EQ(archiveFactsOf(bytes + '\0'), std::nullopt);
}

class LocationsThatLeadOut : public testing::TestWithParam<const char*> {};
TEST_P(LocationsThatLeadOut, AreRefused) {
    const ArchiveFacts lying{{{GetParam(), "rose.pes", 5, 6, sound}}};
    EXPECT_EQ(archiveFactsOf(bytesOf(lying)), std::nullopt);
}
INSTANTIATE_TEST_SUITE_P(Rows, LocationsThatLeadOut,
                         testing::Values("/etc/rose.pes", "../rose.pes", "a/../../rose.pes", "", "a//rose.pes"));

INSTANTIATE_TEST_SUITE_P(
    Rows, Outcomes,
    testing::Values(OutcomeRow{"Facts", sound}, OutcomeRow{"FactsOfLittle", FileFacts{DesignFacts{}}},
                    OutcomeRow{"Failure", FileFacts{DesignFailure{"domain", 123, "too short"}, Sha256{}}},
                    OutcomeRow{"FailureWithoutHash", FileFacts{DesignFailure{"domain", 123, "too short"}}},
                    OutcomeRow{"Refusal", std::error_code(EIO, std::generic_category())}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
