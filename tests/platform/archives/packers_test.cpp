// What other programs pack comes out whole, whatever locale the program runs in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <map>

#include "tests/support/archives.h"
#include "tests/support/temporary_folder.h"
#include "velamo/platform/archives/archive_reader.h"

namespace velamo {
namespace {

using test::Bytes;
using Members = std::map<std::string, Bytes>;

/// A program, run in the folder of what is packed, that packs all of it as $OUT.
struct Packer {
    const char* name;
    std::string file;
    std::string command;
};

/// The locale of the process for a while.
class Locale {
public:
    explicit Locale(const char* name) : former_(std::setlocale(LC_ALL, nullptr)) { std::setlocale(LC_ALL, name); }
    ~Locale() { std::setlocale(LC_ALL, former_.c_str()); }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

private:
    std::string former_;
};

const Members packed{{"rose.dst", test::repeated(5000, 'r')},
                     {"5x7/Grüße.dst", test::repeated(3000, 'g')},
                     {"5x7/花.dst", test::bytes("flower")},
                     {"empty.dst", {}}};

Members membersOf(const std::filesystem::path& file) {
    ArchiveReader archive(file);
    Members members;
    while (const auto member = archive.next()) {
        ArchiveError error;
        if (member->isFolder) continue;
        EXPECT_GE(member->modified, std::int64_t{1'500'000'000} * 1'000'000'000) << member->name;
        members[member->name] = archive.read(error).value_or(test::bytes("unreadable"));
        EXPECT_FALSE(error) << error.words;
    }
    EXPECT_FALSE(archive.error()) << archive.error().words;
    return members;
}

class Packers : public testing::TestWithParam<Packer> {};
TEST_P(Packers, AreUnderstoodInAnyLocale) {
    const test::TemporaryFolder folder;
    for (const auto& [name, bytes] : packed) folder.write("packed/" + name, bytes);
    const auto file = folder.path() / GetParam().file;
    const std::string command = "cd '" + (folder.path() / "packed").native() + "' && OUT='" + file.native() +
                                "' && export LC_ALL=C.UTF-8 && " + GetParam().command + " >'" +
                                (folder.path() / "log").native() + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << test::TemporaryFolder::read(folder.path() / "log");
    for (const char* locale : {"C", "POSIX", "C.UTF-8"}) {
        const Locale current(locale);
        EXPECT_EQ(membersOf(file), packed) << locale;
    }
}

std::string pythonZip(const std::string& method) {
    return "/usr/bin/python3 -c \"import os, zipfile; z = zipfile.ZipFile(os.environ['OUT'], 'w', zipfile.ZIP_" +
           method + "); [z.write(os.path.join(f, n)) for f, _, names in os.walk('.') for n in names]; z.close()\"";
}
std::string pythonTar(const std::string& compression, const std::string& kind) {
    return "/usr/bin/python3 -c \"import os, tarfile; t = tarfile.open(os.environ['OUT'], 'w:" + compression +
           "', format=tarfile." + kind + "_FORMAT); t.add('.'); t.close()\"";
}

INSTANTIATE_TEST_SUITE_P(Each, Packers,
                         testing::Values(Packer{"Zip", "x.zip", "zip -r \"$OUT\" ."},
                                         Packer{"ZipStored", "x.zip", "zip -0 -r \"$OUT\" ."},
                                         Packer{"ZipAsAStream", "x.zip", "(zip -r - . | cat >\"$OUT\")"},
                                         Packer{"ZipBzip2", "x.zip", "zip -Z bzip2 -r \"$OUT\" ."},
                                         Packer{"SevenZip", "x.7z", "7z a \"$OUT\" ."},
                                         Packer{"SevenZipEachAlone", "x.7z", "7z a -ms=off \"$OUT\" ."},
                                         Packer{"SevenZipPpmd", "x.7z", "7z a -m0=PPMd \"$OUT\" ."},
                                         Packer{"SevenZipLzma1", "x.7z", "7z a -m0=LZMA \"$OUT\" ."},
                                         Packer{"SevenZipBzip2", "x.7z", "7z a -m0=BZip2 \"$OUT\" ."},
                                         Packer{"SevenZipStored", "x.7z", "7z a -mx=0 \"$OUT\" ."},
                                         Packer{"SevenZipMakesZip", "x.zip", "7z a -tzip \"$OUT\" ."},
                                         Packer{"SevenZipMakesTar", "x.tar", "7z a -ttar \"$OUT\" ."},
                                         Packer{"PythonZip", "x.zip", "export OUT && " + pythonZip("DEFLATED")},
                                         Packer{"PythonZipStored", "x.zip", "export OUT && " + pythonZip("STORED")},
                                         Packer{"SevenZipMakesZipLzma", "x.zip", "7z a -tzip -mm=LZMA \"$OUT\" ."},
                                         Packer{"PythonTar", "x.tar", "export OUT && " + pythonTar("", "PAX")},
                                         Packer{"PythonTarGz", "x.tgz", "export OUT && " + pythonTar("gz", "GNU")},
                                         Packer{"PythonTarXz", "x.txz", "export OUT && " + pythonTar("xz", "USTAR")},
                                         Packer{"Tar", "x.tar", "tar cf \"$OUT\" ."},
                                         Packer{"TarGz", "x.tar.gz", "tar czf \"$OUT\" ."},
                                         Packer{"TarBzip2", "x.tar.bz2", "tar cjf \"$OUT\" ."},
                                         Packer{"TarXz", "x.tar.xz", "tar cJf \"$OUT\" ."},
                                         Packer{"TarLzma", "x.tar.lzma", "tar --lzma -cf \"$OUT\" ."},
                                         Packer{"TarZstd", "x.tar.zst", "tar --zstd -cf \"$OUT\" ."}),
                         [](const auto& row) { return row.param.name; });

/// Only programs that are for sale make such archives.
class RarNames : public testing::TestWithParam<const char*> {};
TEST_P(RarNames, AreWholeInAnyLocale) {
    const Locale current(GetParam());
    const test::TemporaryFolder folder;
    std::vector<test::PackedFile> files;
    for (const auto& [name, bytes] : packed) files.push_back({.name = name, .bytes = bytes});
    for (const auto& rar : {test::rar4Of(files), test::rar5Of(files)})
        EXPECT_EQ(membersOf(folder.write("x.rar", rar)), packed);
}
INSTANTIATE_TEST_SUITE_P(Locales, RarNames, testing::Values("C", "POSIX", "C.UTF-8"),
                         [](const auto& row) { return "Locale" + std::to_string(row.index); });

struct Protection {
    const char* name;
    std::string file;
    std::string command;
    bool isNameToldFirst;  // what the archive holds can be seen
};
class ProtectedArchives : public testing::TestWithParam<Protection> {};
TEST_P(ProtectedArchives, SayThatTheyAre) {
    const test::TemporaryFolder folder;
    folder.write("rose.dst", test::repeated(1000, 'r'));
    const auto file = folder.path() / GetParam().file;
    ASSERT_EQ(std::system(("cd '" + folder.path().native() + "' && " + GetParam().command + " >/dev/null").c_str()), 0);
    ArchiveReader archive(file);
    const auto member = archive.next();
    EXPECT_EQ(member.has_value(), GetParam().isNameToldFirst);
    ArchiveError error;
    if (member) {
        EXPECT_FALSE(archive.read(error));
    } else {
        error = archive.error();
    }
    EXPECT_EQ(error.words, "it is protected by a password");
}
INSTANTIATE_TEST_SUITE_P(
    Each, ProtectedArchives,
    testing::Values(Protection{"Zip", "x.zip", "zip -P secret x.zip rose.dst", true},
                    Protection{"ZipAes", "x.zip", "7z a -tzip -psecret -mem=AES256 x.zip rose.dst", true},
                    Protection{"SevenZip", "x.7z", "7z a -psecret x.7z rose.dst", true},
                    Protection{"SevenZipWithItsNames", "x.7z", "7z a -psecret -mhe=on x.7z rose.dst", false}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
