#include "reading/archive_designs.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "tests/support/archives.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::Bytes;
using test::bytes;

std::string textOf(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

/// What is made of "rose.dst" with "red" inside and "blue" in its side file: "rose.dst: red, blue".
struct Made {
    std::vector<std::string> lines;
    std::string error;
    int calls = 0;
};
Made madeOf(const std::vector<test::PackedFile>& files, std::size_t cut = 0) {
    const test::TemporaryFolder folder;
    Bytes tar = test::tarOf(files);
    tar.resize(tar.size() - cut);
    Made made;
    const auto found = designsOfArchive(folder.write("x.tar", tar),
                                        [&made](const ArchivedDesign&, const auto file, const auto sideFile) {
                                            ++made.calls;
                                            return textOf(file) + (sideFile.empty() ? "" : ", " + textOf(sideFile));
                                        });
    for (const ArchivedDesign& design : found.designs) {
        made.lines.push_back(design.name + ": " + (design.error ? std::string(design.error.words) : design.made));
        EXPECT_EQ(design.modified, 1'500'000'000'000'000'000);
        EXPECT_TRUE(design.error || design.made.starts_with(design.made.substr(0, design.size)));
    }
    made.error = found.error.words;
    return made;
}

using Lines = std::vector<std::string>;

TEST(DesignsOfArchives, ComeInTheirOrder) {
    const Made made = madeOf({{.name = "rose.dst", .bytes = bytes("red")},
                              {.name = "notes.txt", .bytes = bytes("text")},
                              {.name = "sub/", .bytes = {}},
                              {.name = "inner.zip", .bytes = bytes("archive")},
                              {.name = "sub/leaf.PES", .bytes = bytes("green")},
                              {.name = "empty.exp", .bytes = {}}});
    EXPECT_EQ(made.lines, (Lines{"rose.dst: red", "sub/leaf.PES: green", "empty.exp: "}));
    EXPECT_EQ(made.calls, 3);
}

TEST(DesignsOfArchives, HaveTheirSideFilesFromBeforeAndBehind) {
    const Made made = madeOf({{.name = "a.threads", .bytes = bytes("side a")},
                              {.name = "a.dst", .bytes = bytes("a")},
                              {.name = "b.dst", .bytes = bytes("b")},
                              {.name = "b.pes", .bytes = bytes("bb")},
                              {.name = "c.dst", .bytes = bytes("c")},
                              {.name = "sub/c.threads", .bytes = bytes("side sub/c")},
                              {.name = "b.threads", .bytes = bytes("side b")}});
    EXPECT_EQ(made.lines, (Lines{"a.dst: a, side a", "b.dst: b, side b", "b.pes: bb, side b", "c.dst: c"}));
    EXPECT_EQ(made.calls, 6);  // twice for what a side file came behind
}

TEST(DesignsOfArchives, SayWhatIsWrongWithThem) {
    const Made made = madeOf({{.name = "../a.dst", .bytes = bytes("a")},
                              {.name = "link.dst", .bytes = {}, .method = '2'},
                              {.name = "b.dst", .bytes = bytes("b")},
                              {.name = "cut.dst", .bytes = test::repeated(3000, 'c')}},
                             1024 + 1024);
    const std::string isDamaged = "the archive is damaged here, or packed in a way that cannot be read";
    EXPECT_EQ(made.lines,
              (Lines{"../a.dst: its name leads out of the archive",
                     "link.dst: it is a link to another file of the archive", "b.dst: b", "cut.dst: " + isDamaged}));
    EXPECT_EQ(made.error, isDamaged);
}

TEST(DesignsOfArchives, AreNoneOfWhatIsNoArchive) {
    const test::TemporaryFolder folder;
    const DesignMaker make = [](const ArchivedDesign&, const auto, const auto) { return std::string(); };
    EXPECT_EQ(designsOfArchive(folder.path() / "none.zip", make).error.reason.value(), ENOENT);
    EXPECT_EQ(designsOfArchive(folder.write("x.zip", std::string("text")), make).error.reason.value(), EBADMSG);
}

TEST(DesignsOfArchives, PassOnWhatIsThrown) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("x.tar", test::tarOf({{.name = "a.dst", .bytes = bytes("a")}}));
    const DesignMaker make = [](const ArchivedDesign&, const auto, const auto) -> std::string {
        throw std::runtime_error("thrown");
    };
    EXPECT_THROW(static_cast<void>(designsOfArchive(file, make)), std::runtime_error);
}

}  // namespace
}  // namespace velamo
