#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "integrations/recoll/recoll_handler.h"
#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using namespace velamo::test;

const std::string noDesign = "Document: 0\nFileerror: 0\n\n";

std::string field(const std::string& name, const std::string& data) {
    return name + ": " + std::to_string(data.size()) + "\n" + data;
}

/// A design of two stitches, one millimetre apart, and what is none.
struct Samples {
    TemporaryFolder folder;
    std::string design = folder.write("Näh probe.dst", dstFile(bytes(0x05, 0x00, 0x03, 0x05, 0x00, 0x03)));
    std::string poem = folder.write("poem.dst", "Rose is a rose is a rose.\n");
    std::string answer =
        "Document: 53\nEmbroidery design 1.0 x 0.0 mm, 2 stitches, 1 colour\n"
        "Mimetype: 10\ntext/plainCharset: 5\nutf-8"
        "designwidth: 1\n1designheight: 1\n0stitches: 1\n2threadcolors: 1\n1Eofnext: 0\n\n";
};

struct Answers {
    bool isDone;
    std::string text;
    friend bool operator==(const Answers&, const Answers&) = default;
};
void PrintTo(const Answers& answers, std::ostream* out) {
    *out << (answers.isDone ? "done: " : "broken off: ") << answers.text;
}

Answers answersTo(const std::string& requests) {
    std::istringstream in(requests);
    std::ostringstream out;
    ConfinedReader reader;
    std::ostringstream problems;
    const bool isDone = answerRecollRequests(in, out, reader, problems);
    return {isDone, out.str()};
}

TEST(RecollHandler, AnswersADesign) {
    const Samples samples;
    const auto request = field("filename", samples.design) + field("mimetype", "application/x-embroidery-dst") +
                         field("dflincs", "UTF-8") + "\n";
    EXPECT_EQ(answersTo(request), (Answers{true, samples.answer}));
}

TEST(RecollHandler, StaysAliveAfterAFailure) {
    const Samples samples;
    const auto requests = field("filename", samples.poem) + "\n" + field("filename", samples.design) + "\n" +
                          field("filename", "/absent.dst") + "\n" + field("filename", samples.design) + "\n";
    EXPECT_EQ(answersTo(requests), (Answers{true, noDesign + samples.answer + noDesign + samples.answer}));
}

TEST(RecollHandler, FlushesEveryAnswer) {
    struct CountingBuffer : std::stringbuf {
        int sync() override { return ++flushes, 0; }
        int flushes = 0;
    };
    const Samples samples;
    std::istringstream in(field("filename", samples.design) + "\n" + field("filename", samples.poem) + "\n");
    CountingBuffer buffer;
    std::ostream out(&buffer);
    ConfinedReader reader;
    std::ostringstream problems;
    EXPECT_TRUE(answerRecollRequests(in, out, reader, problems));
    EXPECT_GE(buffer.flushes, 2);
}

TEST(RecollHandler, EndsWhenNobodyTakesTheAnswers) {
    const Samples samples;
    std::istringstream in(field("filename", samples.design) + "\n" + field("filename", samples.design) + "\n");
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    ConfinedReader reader;
    std::ostringstream problems;
    EXPECT_FALSE(answerRecollRequests(in, out, reader, problems));
}

struct Row {
    const char* name;
    std::string requests;
    Answers answers;
};
class RecollRequests : public testing::TestWithParam<Row> {};
TEST_P(RecollRequests, GetTheRowS) {
    EXPECT_EQ(answersTo(GetParam().requests), GetParam().answers);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, RecollRequests,
    testing::Values(Row{"None", "", {true, ""}},                                      //
                    Row{"Empty", "\n\n", {true, noDesign + noDesign}},                //
                    Row{"WithoutAFileName", "mimetype: 3\na/b\n", {true, noDesign}},  //
                    Row{"WithAnEmptyFileName", "filename: 0\n\n", {true, noDesign}},  //
                    Row{"InCapitals", "FileName: 2\n/x\n", {true, noDesign}},         //
                    Row{"WithALineFeedInTheName", "filename: 3\na\n\n\n", {true, noDesign}},
                    Row{"WithoutAnEnd", "filename: 2\n/x", {false, ""}},
                    Row{"EndingInALength", "filename: 2", {false, ""}},
                    Row{"EndingInData", "filename: 9\n/x", {false, ""}},
                    Row{"EndingAfterAnAnswer", "\nfilename: 9\n/x", {false, noDesign}},
                    Row{"WithoutALength", "filename:\n\n", {false, ""}},
                    Row{"WithoutAColon", "filename\n\n", {false, ""}},
                    Row{"WithANegativeLength", "filename: -1\n\n", {false, ""}},
                    Row{"WithAWordForALength", "filename: two\n/x\n", {false, ""}},
                    Row{"WithMoreThanALength", "filename: 2 3\n/x\n", {false, ""}},
                    Row{"WithAnImmenseLength", "filename: 18446744073709551615\n/x\n", {false, ""}},
                    Row{"WithALengthOfManyDigits", "filename: 99999999999999999999999999\n/x\n", {false, ""}},
                    Row{"WithTheLongestData", field("dflincs", std::string(65536, 'x')) + "\n", {true, noDesign}},
                    Row{"WithLongerData", field("dflincs", std::string(65537, 'x')) + "\n", {false, ""}},
                    Row{"WithALongName", field("filename", std::string(65536, 'x')) + "\n", {true, noDesign}},
                    Row{"WithALineThatNeverEnds", std::string(100'000, 'x'), {false, ""}}),
    [](const auto& row) { return row.param.name; });

TEST(RecollRequests, OpenNoOtherFileThanTheyName) {
    const Samples samples;
    const auto request = field("filename", samples.design + std::string("\0.dst", 5)) + "\n";
    EXPECT_EQ(answersTo(request), (Answers{true, noDesign}));
}

TEST(RecollRequests, MayEndAnywhere) {
    const Samples samples;
    const auto whole = field("filename", samples.design) + field("mimetype", "a/b") + "\n";
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(answersTo(whole.substr(0, length)), (Answers{length == 0, ""})) << length;
}

TEST(RecollPage, ShowsADesign) {
    const Samples samples;
    ConfinedReader reader;
    std::ostringstream problems;
    EXPECT_EQ(recollPageOf(samples.design, reader, problems),
              "<html><head>\n"
              "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\n"
              "<meta name=\"designwidth\" content=\"1\">\n"
              "<meta name=\"designheight\" content=\"0\">\n"
              "<meta name=\"stitches\" content=\"2\">\n"
              "<meta name=\"threadcolors\" content=\"1\">\n"
              "</head><body>\n"
              "<p>Embroidery design 1.0 x 0.0 mm, 2 stitches, 1 colour</p>\n"
              "</body></html>\n");
}

TEST(RecollHandler, SaysWhatIsWrongWithAFile) {
    std::istringstream in(field("filename", "/absent\x1b.dst") + "\n");
    std::ostringstream out;
    std::ostringstream problems;
    ConfinedReader reader;
    EXPECT_TRUE(answerRecollRequests(in, out, reader, problems));
    EXPECT_EQ(problems.str(), "velamo-recoll: /absent\\x1b.dst: No such file or directory (error 2)\n");
}

TEST(RecollPage, IsEmptyForWhatIsNoDesign) {
    const Samples samples;
    ConfinedReader reader;
    std::ostringstream problems;
    for (const std::string& file : {samples.poem, samples.folder.path().native(), std::string("/absent.dst")})
        EXPECT_EQ(recollPageOf(file, reader, problems), "") << file;
}

}  // namespace
}  // namespace velamo
