#include "velamo/platform/archives/archive_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include "tests/support/archives.h"
#include "tests/support/deflated.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::Bytes;
using test::bytes;
using test::PackedFile;
using testing::ElementsAre;

/// "rose.dst: 4" for four bytes, "sub/" for a folder, "rose.dst! error" where there are none; at the end "! error"
/// where the archive ends before its end.
std::vector<std::string> shown(ArchiveReader& archive) {
    std::vector<std::string> lines;
    while (const auto member = archive.next()) {
        ArchiveError error;
        const auto content = member->isFolder ? std::nullopt : archive.read(error);
        if (member->isFolder)
            lines.push_back(member->name + '/');
        else if (content)
            lines.push_back(member->name + ": " + std::to_string(content->size()));
        else
            lines.push_back(member->name + "! " + std::string(error.words));
    }
    if (archive.error()) lines.push_back("! " + std::string(archive.error().words));
    return lines;
}
std::vector<std::string> shown(const Bytes& archive, const ArchiveLimits& limits = {}) {
    ArchiveReader reader(archive, limits);
    return shown(reader);
}

const std::string isDamaged = "the archive is damaged here, or packed in a way that cannot be read";
const std::string isProtected = "it is protected by a password";
const std::string isLink = "it is a link to another file of the archive";
const std::string leadsOut = "its name leads out of the archive";
const std::string isTooMuch = "the archive unpacks to far more than it could hold";
const std::string areTooMany = "the archive holds too many files";
const std::string isTooLarge = "it is too large for a design";

Bytes cutBy(Bytes archive, std::size_t count) {
    archive.resize(archive.size() - count);
    return archive;
}

const Bytes four = bytes("four");

struct Row {
    const char* name;
    Bytes archive;
    std::vector<std::string> members;
};
class Archives : public testing::TestWithParam<Row> {};
TEST_P(Archives, GiveTheirMembers) {
    EXPECT_EQ(shown(GetParam().archive), GetParam().members);
}
TEST_P(Archives, GiveTheSameFromAFile) {
    const test::TemporaryFolder folder;
    ArchiveReader archive(folder.write("x.zip", GetParam().archive));
    EXPECT_EQ(shown(archive), GetParam().members);
}
TEST_P(Archives, NeedNotBeUnpacked) {
    ArchiveReader archive(GetParam().archive);
    std::size_t count = 0;
    while (archive.next()) ++count;
    EXPECT_EQ(count + (archive.error() ? 1 : 0), GetParam().members.size());
}

const std::vector<PackedFile> two{{.name = "rose.dst", .bytes = four}, {.name = "5x7/leaf.dst", .bytes = four}};
const std::vector<std::string> both{"rose.dst: 4", "5x7/leaf.dst: 4"};

INSTANTIATE_TEST_SUITE_P(
    Kinds, Archives,
    testing::Values(Row{"Zip", test::zipOf(two), both}, Row{"Tar", test::tarOf(two), both},
                    Row{"TarGz", test::deflated(test::tarOf(two), true), both}, Row{"Rar4", test::rar4Of(two), both},
                    Row{"Rar5", test::rar5Of(two), both},
                    Row{"ZipWithAFolder",
                        test::zipOf({{.name = "5x7/", .bytes = {}}, {.name = "5x7/a", .bytes = four}}),
                        {"5x7/", "5x7/a: 4"}},
                    Row{"EmptyZip", test::zipOf({}), {}},
                    Row{"NoArchive", bytes("no archive"), {"! this is no archive that can be read"}},
                    Row{"NoBytes", {}, {"! this is no archive that can be read"}}),
    [](const auto& row) { return row.param.name; });

const std::vector<PackedFile> oddlyNamed{
    {.name = "/abs.dst", .bytes = four},         {.name = "../up.dst", .bytes = four},
    {.name = "a/../b.dst", .bytes = four},       {.name = "__MACOSX/rose.dst", .bytes = four},
    {.name = ".hidden/rose.dst", .bytes = four}, {.name = ".rose.dst", .bytes = four},
    {.name = "./a//b.dst", .bytes = four},       {.name = "inner.zip", .bytes = four},
    {.name = "last.dst", .bytes = four}};
const std::vector<std::string> oddlyNamedMembers{"/abs.dst! " + leadsOut,
                                                 "../up.dst! " + leadsOut,
                                                 "a/../b.dst! " + leadsOut,
                                                 "a/b.dst: 4",
                                                 "inner.zip: 4",
                                                 "last.dst: 4"};

Bytes damagedZip() {
    PackedFile middle = test::deflatedFile("b.dst", test::repeated(500, 'b'));
    for (std::uint8_t& byte : middle.bytes) byte = 0xFF;
    return test::zipOf({test::deflatedFile("a.dst", test::repeated(500, 'a')), middle,
                        test::deflatedFile("c.dst", test::repeated(500, 'c'))});
}

INSTANTIATE_TEST_SUITE_P(
    Oddities, Archives,
    testing::Values(
        Row{"NamesInZip", test::zipOf(oddlyNamed), oddlyNamedMembers},
        Row{"NamesInTar", test::tarOf(oddlyNamed), oddlyNamedMembers},
        Row{"NamesInRar5", test::rar5Of(oddlyNamed), oddlyNamedMembers},
        Row{"OldNames", test::zipOf({{.name = "Gr\x81n.dst", .bytes = four}}), {"Grün.dst: 4"}},
        Row{"LongName",
            test::zipOf({{.name = std::string(mostBytesOfMemberName + 1, 'x'), .bytes = four},
                         {.name = "a", .bytes = four}}),
            {"! its name cannot be read", "a: 4"}},
        // The first one has been handed over already when the second one comes.
        Row{"OneNameTwice",
            test::zipOf({{.name = "a", .bytes = four},
                         {.name = "./a", .bytes = bytes("fourfour")},
                         {.name = "b", .bytes = four}}),
            {"a: 4", "b: 4"}},
        Row{"LinksAndPipes",
            test::tarOf({{.name = "link.dst", .bytes = {}, .method = '2'},
                         {.name = "hard.dst", .bytes = {}, .method = '1'},
                         {.name = "pipe.dst", .bytes = {}, .method = '6'},
                         {.name = "a", .bytes = four}}),
            {"link.dst! " + isLink, "hard.dst! " + isLink, "a: 4"}},
        Row{"ProtectedInZip",
            test::zipOf({{.name = "a", .bytes = test::repeated(20, 1), .flags = 1}, {.name = "b", .bytes = four}}),
            {"a! " + isProtected, "b: 4"}},
        Row{"ProtectedInRar4",
            test::rar4Of({{.name = "a", .bytes = test::repeated(16, 1), .flags = 4}, {.name = "b", .bytes = four}}),
            {"a! " + isProtected, "b: 4"}},
        Row{"DamagedMember", damagedZip(), {"a.dst: 500", "b.dst! " + isDamaged, "c.dst: 500"}},
        Row{"WrongSum",
            test::zipOf({{.name = "a", .bytes = four, .sum = 1}, {.name = "b", .bytes = four}}),
            {"a! " + isDamaged, "b: 4"}},
        Row{"UnknownMethod",
            test::zipOf({{.name = "a", .bytes = four, .method = 77}, {.name = "b", .bytes = four}}),
            {"a! " + isDamaged, "b: 4"}},
        Row{"CutDirectory", cutBy(test::zipOf(two), 30), both}),
    [](const auto& row) { return row.param.name; });

TEST(ArchiveReading, KeepsWhatCameBeforeACut) {
    const Bytes tar = test::tarOf({{.name = "a", .bytes = four}, {.name = "b", .bytes = test::repeated(2000, 'b')}});
    EXPECT_THAT(shown(cutBy(tar, 2048)), ElementsAre("a: 4", "b! " + isDamaged, "! " + isDamaged));
    const Bytes zip = test::zipOf(two);
    EXPECT_THAT(shown(cutBy(zip, zip.size() - 12)), ElementsAre("! " + isDamaged));
}

/// Each time it has to be looked for from the start, so there is an end of it.
TEST(ArchiveReading, GivesUpWhereTooMuchIsDamaged) {
    std::vector<PackedFile> files;
    for (int i = 0; i < 200; ++i)
        files.push_back({.name = std::to_string(i), .bytes = test::repeated(20, 0xFF), .method = 8});
    const auto lines = shown(test::zipOf(files));
    EXPECT_EQ(lines.size(), 102U);
    EXPECT_EQ(lines.back(), "! " + isDamaged);
}

TEST(ArchiveReading, TellsLocationsAndTimes) {
    const Bytes tar = test::tarOf({{.name = "./sub//Gr\x81n.dst", .bytes = four}});
    ArchiveReader archive(tar);
    const auto member = archive.next();
    ASSERT_TRUE(member);
    EXPECT_EQ(member->location, "sub/Gr\x81n.dst");
    EXPECT_EQ(member->name, "sub/Grün.dst");
    EXPECT_EQ(member->modified, 1'500'000'000'000'000'000);
    ArchiveError error;
    EXPECT_EQ(archive.read(error), four);
}

TEST(ArchiveReading, SaysWhyAFileCannotBeRead) {
    const test::TemporaryFolder folder;
    for (const auto& [path, code] : {std::pair{folder.path(), EISDIR},
                                     {folder.path() / "none.zip", ENOENT},
                                     {std::filesystem::path("/dev/null"), EINVAL}}) {
        ArchiveReader archive(path);
        EXPECT_FALSE(archive.next());
        EXPECT_EQ(archive.error().reason.value(), code) << path;
        EXPECT_EQ(archive.error().words, "");
    }
}

/// Whatever is cut off, members are whole or refused.
TEST(ArchiveReading, SurvivesEveryPrefix) {
    for (const Bytes& whole : {test::zipOf(two), test::tarOf(two), test::rar4Of(two), test::rar5Of(two), damagedZip(),
                               test::deflated(test::tarOf(two), true)})
        for (std::size_t size = 0; size < whole.size(); ++size)
            for (const std::string& line : shown(cutBy(whole, whole.size() - size)))
                EXPECT_THAT(line, testing::AnyOf(testing::EndsWith(": 4"), testing::EndsWith(": 500"),
                                                 testing::HasSubstr("! ")));
}

TEST(ArchiveLimit, OfMembers) {
    EXPECT_EQ(ArchiveLimits().members, 100'000U);
    std::vector<PackedFile> files(4, {.name = "x", .bytes = {}});
    for (std::size_t i = 0; i < files.size(); ++i) files[i].name = std::to_string(i);
    EXPECT_THAT(shown(test::zipOf(files), {.members = 4}), ElementsAre("0: 0", "1: 0", "2: 0", "3: 0"));
    EXPECT_THAT(shown(test::zipOf(files), {.members = 3}), ElementsAre("0: 0", "1: 0", "2: 0", "! " + areTooMany));
    // Those with one name count as well.
    for (PackedFile& file : files) file.name = "x";
    EXPECT_THAT(shown(test::zipOf(files), {.members = 3}), ElementsAre("x: 0", "! " + areTooMany));
}

TEST(ArchiveLimit, OfNames) {
    const Bytes zip = test::zipOf({{.name = "12345", .bytes = four}, {.name = "123456", .bytes = four}});
    EXPECT_THAT(shown(zip, {.bytesOfNames = 11}), ElementsAre("12345: 4", "123456: 4"));
    EXPECT_THAT(shown(zip, {.bytesOfNames = 10}), ElementsAre("12345: 4", "! " + areTooMany));
}

TEST(ArchiveLimit, OfAMember) {
    EXPECT_EQ(ArchiveLimits().bytesOfMember, std::uint64_t{256} << 20);
    const Bytes zip = test::zipOf({test::deflatedFile("large", test::repeated(100'001, 0)),
                                   test::deflatedFile("last", test::repeated(100'000, 0))});
    EXPECT_THAT(shown(zip, {.bytesOfMember = 100'000}), ElementsAre("large! " + isTooLarge, "last: 100000"));
}

/// What comes counts, not what the header says: memory is taken for that alone.
TEST(ArchiveReading, DoesNotTrustSizes) {
    PackedFile lying = test::deflatedFile("lying", test::repeated(200'000, 0));
    for (const std::int64_t size : {std::int64_t{10}, std::int64_t{0xFFFFFF00}}) {
        lying.claimedSize = size;
        EXPECT_THAT(shown(test::zipOf({lying, {.name = "last", .bytes = four}})),
                    ElementsAre("lying! " + isDamaged, "last: 4"));
    }
    EXPECT_THAT(shown(test::tarOf({{.name = "lying", .bytes = four, .claimedSize = 077777777777}})),
                ElementsAre("lying! " + isDamaged, "! " + isDamaged));
}

TEST(ArchiveLimit, OfAllThatIsUnpacked) {
    EXPECT_EQ(ArchiveLimits().bytesUnpacked, std::uint64_t{4} << 30);
    const Bytes zip = test::zipOf(
        {{.name = "a", .bytes = test::repeated(1000, 'a')}, {.name = "b", .bytes = test::repeated(1000, 'b')}});
    EXPECT_THAT(shown(zip, {.bytesUnpacked = 2000}), ElementsAre("a: 1000", "b: 1000"));
    EXPECT_THAT(shown(zip, {.bytesUnpacked = 1999}), ElementsAre("a: 1000", "b! " + isTooMuch, "! " + isTooMuch));
}

TEST(ArchiveLimit, OfTimesUnpacked) {
    EXPECT_EQ(ArchiveLimits().timesUnpacked, 1000U);
    EXPECT_EQ(ArchiveLimits().alwaysUnpacked, std::uint64_t{64} << 20);
    const Bytes zip = test::zipOf({test::deflatedFile("a", test::repeated(100'000, 0))});
    EXPECT_THAT(shown(zip, {.timesUnpacked = 10, .alwaysUnpacked = 100'000}), ElementsAre("a: 100000"));
    EXPECT_THAT(shown(zip, {.timesUnpacked = 10, .alwaysUnpacked = 99'999}),
                ElementsAre("a! " + isTooMuch, "! " + isTooMuch));
}

/// Many entries of a zip may share one piece of packed bytes: they are one.
TEST(ArchiveLimit, IsNotPassedByEntriesThatShareBytes) {
    std::vector<PackedFile> files{test::deflatedFile("a", test::repeated(100'000, 0))};
    for (int i = 0; i < 50; ++i)
        files.push_back({.name = std::to_string(i), .bytes = {}, .method = 8, .claimedSize = 100'000});
    for (PackedFile& file : files) file.claimedOffset = 0;
    const auto lines = shown(test::zipOf(files), {.timesUnpacked = 10, .alwaysUnpacked = 200'000});
    EXPECT_LE(lines.size(), 4U);
}

/// What is passed over is unpacked, too, where the archive is compressed as a whole: here twice.
TEST(ArchiveLimit, OfWhatIsPassedOver) {
    const Bytes tar = test::tarOf(
        {{.name = "large", .bytes = test::repeated(std::size_t{80} << 20, 0)}, {.name = "last", .bytes = four}});
    const Bytes bomb = test::deflated(test::deflated(tar, true), true);
    ArchiveReader archive(bomb);
    ASSERT_TRUE(archive.next());
    EXPECT_FALSE(archive.next());
    EXPECT_EQ(archive.error().words, isTooMuch);
}

}  // namespace
}  // namespace velamo
