#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "integrations/kde/extractor.h"
#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using namespace velamo::test;
using Json = nlohmann::json;

ExtractorAnswer answerTo(const std::string& request) {
    std::istringstream in(request);
    ConfinedReader reader;
    return answerExtractorRequest(in, reader);
}

std::string requestFor(const std::string& path) {
    return Json{{"path", path}, {"mimetype", "application/x-embroidery-dst"}}.dump();
}

const char* const noSuchFile = R"({"properties":{},"status":"ERROR","error":"No such file or directory"})";
const char* const noRequest = R"({"properties":{},"status":"ERROR","error":"The request names no file."})";

TEST(KdeExtractor, DescribesADesign) {
    const TemporaryFolder folder;
    const auto design = folder.write("Näh \"probe\"\n.dst", dstFile(bytes(0x05, 0x00, 0x03, 0x05, 0x00, 0x03)));
    const auto answer = answerTo(requestFor(design));
    EXPECT_TRUE(answer.isDesign);
    EXPECT_EQ(answer.json,
              R"({"properties":{"width":1,"height":0,"description":"1.0 x 0.0 mm, 2 stitches, 1 colour",)"
              R"("typeInfo":"Image","text":"1.0 mm 0.0 mm 2 stitches 1 colour"},"status":"OK","error":""})");
}

TEST(KdeExtractor, TakesAPathInEscapes) {
    const TemporaryFolder folder;
    const auto design = folder.write("Näh.dst", dstFile(bytes(0x05, 0x00, 0x03, 0x05, 0x00, 0x03)));
    constexpr bool inAscii = true;
    EXPECT_TRUE(answerTo(Json{{"path", design}}.dump(-1, ' ', inAscii)).isDesign);
}

TEST(KdeExtractor, SaysWhyAFileIsNoDesign) {
    const TemporaryFolder folder;
    const std::string poem = folder.write("poem.dst", "Rose is a rose is a rose.\n");
    for (const auto& [file, reason] :
         {std::pair<std::string, std::string>{poem, "Unable to import DST file (missing header)."},
          {folder.path().native(), "Is a directory"},
          {"/absent.dst", "No such file or directory"},
          {"", "No such file or directory"}}) {
        const auto answer = answerTo(requestFor(file));
        EXPECT_FALSE(answer.isDesign) << file;
        EXPECT_EQ(answer.json, R"({"properties":{},"status":"ERROR","error":")" + reason + R"("})") << file;
    }
}

TEST(KdeExtractor, OpensNoOtherFileThanTheRequestNames) {
    const TemporaryFolder folder;
    const auto design = folder.write("rose.dst", dstFile(bytes(0x05, 0x00, 0x03, 0x05, 0x00, 0x03)));
    EXPECT_EQ(answerTo(requestFor(design.native() + std::string("\0.dst", 5))).json, noRequest);
}

struct Row {
    const char* name;
    std::string request;
    const char* answer = noRequest;
};
class KdeRequests : public testing::TestWithParam<Row> {};
TEST_P(KdeRequests, GetTheRowS) {
    const auto answer = answerTo(GetParam().request);
    EXPECT_FALSE(answer.isDesign);
    EXPECT_EQ(answer.json, GetParam().answer);
}

std::string repeated(std::size_t count, const std::string& text) {
    std::string whole;
    for (std::size_t i = 0; i < count; ++i) whole += text;
    return whole;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, KdeRequests,
    testing::Values(Row{"Empty", ""}, Row{"NoJson", "/tmp/rose.dst"}, Row{"Unfinished", R"({"path": "/tmp/ro)"},
                    Row{"NoObject", R"(["path"])"}, Row{"Null", "null"}, Row{"WithoutAPath", R"({"mimetype": "a/b"})"},
                    Row{"APathThatIsNoText", R"({"path": 7})"}, Row{"APathInAnArray", R"({"path": ["/tmp/rose.dst"]})"},
                    Row{"NoUtf8", "{\"path\": \"\xFF\"}"}, Row{"TwoObjects", R"({"path": "a"}{"path": "b"})"},
                    Row{"DeepArrays", std::string(65536, '[')},
                    Row{"DeepArraysThatEnd", std::string(32768, '[') + std::string(32768, ']')},
                    Row{"DeepObjects", repeated(10000, R"({"a":)")},
                    Row{"ADeepPath", R"({"path":)" + std::string(30000, '[') + std::string(30000, ']') + "}"},
                    Row{"Bytes", std::string("\0\1\2\3", 4)},
                    Row{"AsLongAsARequestMayBe", R"({"path":"x"})" + std::string(65536 - 12, ' '), noSuchFile},
                    Row{"Longer", R"({"path":"x"})" + std::string(65537 - 12, ' ')},
                    Row{"MuchLonger", repeated(1'000'000, "          ")}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
