// Writes the seeds from which fuzzing starts: make_corpus FOLDER puts them into FOLDER/<target>/.
#include <array>
#include <bit>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>

#include "fuzz/import_input.h"
#include "tests/support/archives.h"
#include "tests/support/samples.h"
#include "velamo/formats/format.h"
#include "velamo/model/design.h"
#include "velamo/model/failure.h"
#include "velamo/platform/plist/property_list.h"
#include "velamo/platform/system/files.h"

namespace velamo::fuzz {
namespace {

using test::Bytes;
using test::sampleFile;

/// The target of each format: formats that share a reader share it, and have the name of the first of them.
std::map<std::string_view, std::string_view> targetsOfFormats() {
    std::map<std::string_view, std::string_view> targets;
    for (const Format& format : allFormats())
        for (const Format& first : allFormats())
            if (first.reader == format.reader) {
                targets.emplace(format.extension, first.extension);
                break;
            }
    return targets;
}

/// A side file of two threads, as it is written today and as it once was.
PropertyList sideFile(bool isCurrent) {
    PropertyList::Array threads;
    for (const char* name : {"Red", "Blue"}) {
        PropertyList::Dictionary thread;
        const auto put = [&](const char* key, PropertyList::Value value) {
            thread.emplace(key, PropertyList(std::move(value)));
        };
        for (const char* key : {"name", "key", "palette", "paletteName"}) put(key, std::string(name));
        if (isCurrent) put("threadfileversion", std::int64_t{2});
        for (const char* key : {"red", "green", "blue"}) put(key, 0.5);
        put("color", PropertyList::Data{4, 11, 's', 't', 'r', 'e', 'a', 'm', 't', 'y', 'p', 'e', 'd'});
        threads.emplace_back(std::move(thread));
    }
    return PropertyList(std::move(threads));
}

/// Inputs that only the target's own reader understands, besides the format's sample.
std::vector<Bytes> furtherSeeds(std::string_view target) {
    if (target == "dst") return {test::bytes(0x81, 0, 0x03, 0, 0, 0xC3, 0x84, 1, 0x83), test::dstEnd};
    if (target == "ksm") return {test::bytes(5, 10, 0x98, 5, 5, 0x80, 0, 0, 0x8C, 9, 20, 0xB8, 4, 4, 0xE0, 0, 0, 0x88)};
    if (target == "sew") {
        const Bytes whole = sampleFile("sew");
        return {test::bytes(Bytes(whole.begin(), whole.begin() + 26), test::janomeSample)};
    }
    if (target == "pec") return {test::pecSegment(), test::pecSegment({.surplusHeader = 1})};
    if (target == "pes") return {test::pesFileOf("0060", test::pecSegment())};
    if (target == "vp3") return {test::vp3File()};
    return {};
}

class Corpus {
public:
    explicit Corpus(std::filesystem::path folder) : folder_(std::move(folder)) {}

    bool write(std::string_view target, const Bytes& seed) {
        const auto folder = folder_ / target;
        std::filesystem::create_directories(folder);
        return !replaceFile(folder / ("seed" + std::to_string(++written_)), seed);
    }

private:
    std::filesystem::path folder_;
    int written_ = 0;
};

bool writeImportSeeds(Corpus& corpus) {
    const auto formats = allFormats();
    bool isWritten = true;
    for (std::size_t i = 0; i < formats.size(); ++i) {
        const Bytes file = sampleFile(formats[i].extension);
        for (const char* target : {"import", "export"})
            isWritten = corpus.write(target, bytesOf(i, {}, file)) && isWritten;
        isWritten = corpus.write("import", bytesOf(i, xmlPropertyList(sideFile(true)), file)) && isWritten;
    }
    const Bytes exp = sampleFile("exp");
    const auto isExp = [](const Format& format) { return format.extension == "exp"; };
    const auto place = static_cast<std::size_t>(std::find_if(formats.begin(), formats.end(), isExp) - formats.begin());
    for (const bool isCurrent : {true, false})
        for (const auto& encoded : {xmlPropertyList(sideFile(isCurrent)), binaryPropertyList(sideFile(isCurrent))})
            isWritten = corpus.write("import", bytesOf(place, encoded, exp)) && isWritten;
    return isWritten;
}

/// A look, then moves as they stand in memory and their flags: a stitch, a jump, a colour change, a selected stitch.
bool writeDrawingSeeds(Corpus& corpus) {
    const std::array<std::array<float, 2>, 6> moves{
        {{20, 20}, {10, 30}, {1e9F, 1e30F}, {-1e9F, -1e30F}, {5, -20}, {9, 9}}};
    bool isWritten = true;
    for (std::uint8_t look = 0; look < 16; ++look) {
        Bytes seed{look};
        for (std::size_t i = 0; i < moves.size(); ++i) {
            const auto deltas = std::bit_cast<std::array<std::uint8_t, sizeof moves[0]>>(moves[i]);
            seed.insert(seed.end(), deltas.begin(), deltas.end());
            seed.push_back(static_cast<std::uint8_t>(i % 5));
        }
        isWritten = corpus.write("drawing", seed) && isWritten;
    }
    return isWritten;
}

Bytes bytesOfText(std::string_view text) {
    return {text.begin(), text.end()};
}

bool writeTexts(Corpus& corpus, std::string_view target, std::initializer_list<std::string_view> texts) {
    bool isWritten = true;
    for (const std::string_view text : texts) isWritten = corpus.write(target, bytesOfText(text)) && isWritten;
    return isWritten;
}

/// A design of two threads in a hoop, with all that an archive may hold.
VLMDesign archivedDesign() {
    VLMDesign design;
    for (const char* key : {"1", "2"}) design.threads().push_back(VLMThread::initWithKeyofPalette(key, "Janome"));
    design.stitches().push_back({10, -20.5F, true, false});
    design.stitches().push_back({0, 0, true, true, true});
    design.setDesignName("rose.dst");
    design.setDesignType("DST");
    design.setDesignHoop(VLMDesign::hoops().front());
    design.setDesignLocation("/a/rose.dst");
    return design;
}

bool writeListSeeds(Corpus& corpus) {
    bool isWritten = true;
    const auto archive = archiveDesign(archivedDesign());
    for (const auto& seed : {archive, binaryPropertyList(*parsePropertyList(archive)), archiveDesign(VLMDesign())})
        isWritten = corpus.write("archive", seed) && isWritten;
    const PropertyList preference(PropertyList::Dictionary{{"MeasurementUnit", PropertyList(std::int64_t{2})}});
    for (const auto write : {xmlPropertyList, binaryPropertyList}) {
        for (const bool isCurrent : {true, false})
            for (const char* target : {"side_file", "property_list"})
                isWritten = corpus.write(target, write(sideFile(isCurrent))) && isWritten;
        isWritten = corpus.write("preferences", write(preference)) && isWritten;
    }
    return isWritten;
}

bool writeTextSeeds(Corpus& corpus) {
    const bool hasTables =
        writeTexts(corpus, "string_table",
                   {"/* a */ \"ERROR_1\" = \"No \\\"file\\\"\";\n// b\n\"k\"=\"\\U00e4\\UD83E\\UDDF5\\n\";",
                    "\xEF\xBB\xBF\"a\" = \"b\";\n\"a\" = \"\xFF\";"});
    const bool hasColors =
        writeTexts(corpus, "color_list", {"9\n0 1.0 0.5 0.25 1 001\n1,0,1,0,1,x2\r\n2\t+1\t0\t0\t1\t001\n3 .5.5.5.5k"});
    const bool hasLengths =
        writeTexts(corpus, "preferences", {"12.5 mm", "2 in", "0,5\"", "1 1/2", "-3/4\"", "1.234,5", "nan", "1/0 mm"});
    const bool hasScripts =
        writeTexts(corpus, "edit_script",
                   {"select-all\nrotate 45\nresize 1.5\nflip V\nmove 50 -20\ncenter\n",
                    "select-rect -100 -100 200 100\ndelete\njumps on\nsplit-thread\ninvert\ntrim\n",
                    "select-stitch 5 5 4\nselect-block 5 5 40 unselect\nthread-at 0 0 4\nstitch-at 0 0 4\n",
                    "delete-thread 1\nmove-thread 1 0\ninsert-jump 10 0 2\noptimize JEF\nbaste 5 3\n",
                    "recolor 0 1 0.5 0 Janome\nshow-thread 0 off\nhoop Janome 28\nfits Pfaff 3\noutside Janome 4\n",
                    "type PES\nversion 10\nrange 0 1000\nthread-file on\nfind-hoop Janome\nselection-rect\n"});
    return hasTables && hasColors && hasLengths && hasScripts;
}

/// "rose" in "a.dst", as 7z packs it.
const Bytes small7z{0x37, 0x7A, 0xBC, 0xAF, 0x27, 0x1C, 0x00, 0x04, 0xD5, 0x13, 0x61, 0x08, 0x08, 0x00, 0x00,
                    0x00, 0x00, 0x00, 0x00, 0x00, 0x3E, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x66, 0x32,
                    0xCF, 0x59, 0x01, 0x00, 0x03, 0x72, 0x6F, 0x73, 0x65, 0x00, 0x01, 0x04, 0x06, 0x00, 0x01,
                    0x09, 0x08, 0x00, 0x07, 0x0B, 0x01, 0x00, 0x01, 0x21, 0x21, 0x01, 0x00, 0x0C, 0x04, 0x00,
                    0x08, 0x0A, 0x01, 0xF4, 0x84, 0x33, 0x9A, 0x00, 0x00, 0x05, 0x01, 0x19, 0x0C, 0x00, 0x00,
                    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x11, 0x0D, 0x00, 0x61, 0x00,
                    0x2E, 0x00, 0x64, 0x00, 0x73, 0x00, 0x74, 0x00, 0x00, 0x00, 0x00, 0x00};

/// The bytes as a deflated piece that leaves them as they are.
Bytes deflated(const Bytes& plain) {
    const auto size = static_cast<std::int64_t>(plain.size());
    return test::bytes(1, test::le16(size), test::le16(~size), plain);
}

bool writePackedSeeds(Corpus& corpus) {
    const Bytes rose = test::bytes("rose");
    const std::vector<test::PackedFile> files{{.name = "5x7/Gr\x81n.dst", .bytes = rose},
                                              {.name = "Gr\xC3\xBCn.dst", .bytes = rose, .flags = 0x800},
                                              {.name = "../\x82\xB3\x82\xAD.pes", .bytes = rose}};
    const std::vector<test::PackedFile> packed{
        {.name = "a.dst", .bytes = deflated(rose), .method = 8, .claimedSize = 4, .sum = test::crc32Of(rose)},
        {.name = "b.dst", .bytes = rose, .flags = 1}};
    const Bytes tar = test::tarOf(files);
    const Bytes gzip = test::bytes(0x1F, 0x8B, 8, test::repeated(7, 0), deflated(tar), test::le32(test::crc32Of(tar)),
                                   test::le32(static_cast<std::int64_t>(tar.size())));
    bool isWritten = true;
    for (const Bytes& seed :
         {test::zipOf(files), test::zipOf(packed), tar, gzip, test::rar4Of(files), test::rar5Of(files), small7z})
        isWritten = corpus.write("packed", seed) && isWritten;
    return isWritten;
}

bool writeSeeds(Corpus& corpus) {
    bool isWritten = writeImportSeeds(corpus);
    isWritten = writeDrawingSeeds(corpus) && isWritten;
    isWritten = writeListSeeds(corpus) && isWritten;
    isWritten = writeTextSeeds(corpus) && isWritten;
    isWritten = writePackedSeeds(corpus) && isWritten;
    for (const auto& [extension, target] : targetsOfFormats()) {
        if (target != "pec") isWritten = corpus.write(target, sampleFile(extension)) && isWritten;
        if (target != extension) continue;
        for (const Bytes& seed : furtherSeeds(target)) isWritten = corpus.write(target, seed) && isWritten;
    }
    return isWritten;
}

}  // namespace
}  // namespace velamo::fuzz

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    const bool isDone = velamo::operation(nullptr, [&] {
        velamo::fuzz::Corpus corpus(arguments[1]);
        return velamo::fuzz::writeSeeds(corpus);
    });
    return isDone ? 0 : 1;
}
