// The bundle that Spotlight loads the importer from, in the layout that it has on macOS.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include "plugin/host.h"
#include "tests/plugin/importer_module.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/platform/plist/property_list.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/text/string_table.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
using Array = PropertyList::Array;
using test::TemporaryFolder;
using testing::ElementsAre;

const fs::path contents = fs::path(VELAMO_BUNDLE) / "Contents";

std::string utf8(CFStringRef text) {
    std::string result(static_cast<std::size_t>(CFStringGetMaximumSizeOfFileSystemRepresentation(text)), '\0');
    EXPECT_TRUE(CFStringGetFileSystemRepresentation(text, result.data(), static_cast<CFIndex>(result.size())));
    return result.substr(0, result.find('\0'));
}

Owned<CFUUIDRef> uuid(const std::string& text) {
    return own(CFUUIDCreateFromString(kCFAllocatorDefault, test::pathText(text).get()));
}

std::vector<std::string> attributeNames() {
    std::vector<std::string> names;
    for (const CFStringRef key : attributeKeys()) names.push_back(utf8(key));
    return names;
}

std::multiset<std::string> textsIn(const PropertyList* list) {
    std::multiset<std::string> texts;
    if (list == nullptr || list->as<Array>() == nullptr) throw std::runtime_error("no list");
    for (const PropertyList& element : *list->as<Array>()) texts.insert(*element.as<std::string>());
    return texts;
}

/// The types by which macOS is to tell our formats apart, each with its extensions.
std::map<std::string, std::multiset<std::string>> expectedTypes() {
    std::map<Format::Reader, std::string> names;
    std::map<std::string, std::multiset<std::string>> types;
    for (const Format& format : allFormats()) {
        const auto name = names.emplace(format.reader, format.extension).first->second;
        types["de.velamo.embroidery." + name].emplace(format.extension);
    }
    return types;
}

std::multiset<std::string> expectedIdentifiers() {
    std::multiset<std::string> identifiers;
    for (const auto& [identifier, extensions] : expectedTypes()) identifiers.insert(identifier);
    return identifiers;
}

class BundleProperties : public testing::Test {
protected:
    [[nodiscard]] std::string text(const char* key) const {
        const PropertyList* value = properties_.find(key);
        const auto* text = value == nullptr ? nullptr : value->as<std::string>();
        return text == nullptr ? "no text" : *text;
    }
    [[nodiscard]] const PropertyList* find(std::initializer_list<const char*> keys) const {
        const PropertyList* found = &properties_;
        for (const char* key : keys) found = found == nullptr ? nullptr : found->find(key);
        return found;
    }
    const PropertyList properties_ = parsePropertyList(readWholeFile(contents / "Info.plist")).value();
};

TEST_F(BundleProperties, NameTheBundleAndItsModule) {
    EXPECT_EQ(text("CFBundleIdentifier"), "de.velamo.importer");
    EXPECT_EQ(text("CFBundleName"), "Velamo");
    EXPECT_EQ(text("CFBundlePackageType"), "BNDL");
    EXPECT_EQ(text("CFBundleInfoDictionaryVersion"), "6.0");
    EXPECT_EQ(text("CFPlugInDynamicRegistration"), "NO");
    EXPECT_EQ(text("CFBundleVersion"), text("CFBundleShortVersionString"));
    EXPECT_THAT(text("CFBundleVersion"), testing::MatchesRegex("[0-9]+.[0-9]+.[0-9]+"));
    EXPECT_THAT(text("LSMinimumSystemVersion"), testing::MatchesRegex("[0-9]+.[0-9]+"));
    EXPECT_TRUE(fs::is_regular_file(contents / "MacOS" / text("CFBundleExecutable")));
}

TEST_F(BundleProperties, NameTheFactoryOfTheModule) {
    const test::ImporterModule importer;
    auto* instance = static_cast<MetadataImporterPluginType*>(importer.factory(nullptr, kMDImporterTypeID));
    const auto* factories = find({"CFPlugInFactories"})->as<PropertyList::Dictionary>();
    ASSERT_EQ(factories->size(), 1U);
    const auto& [id, function] = *factories->begin();
    EXPECT_TRUE(CFEqual(uuid(id).get(), instance->factoryID)) << id;
    EXPECT_EQ(importer.module.symbol(function.as<std::string>()->c_str()), reinterpret_cast<void*>(importer.factory));
    importer.release(instance);
}

TEST_F(BundleProperties, OfferTheFactoryForImporters) {
    const auto* types = find({"CFPlugInTypes"})->as<PropertyList::Dictionary>();
    ASSERT_EQ(types->size(), 1U);
    const auto& [id, factories] = *types->begin();
    EXPECT_TRUE(CFEqual(uuid(id).get(), kMDImporterTypeID)) << id;
    const auto& [factory, function] = *find({"CFPlugInFactories"})->as<PropertyList::Dictionary>()->begin();
    EXPECT_THAT(textsIn(&factories), ElementsAre(factory));
}

TEST_F(BundleProperties, DeclareEveryExtensionOnce) {
    std::map<std::string, std::multiset<std::string>> declared;
    for (const PropertyList& declaration : *find({"UTImportedTypeDeclarations"})->as<Array>()) {
        const auto identifier = *declaration.find("UTTypeIdentifier")->as<std::string>();
        const PropertyList* tags = declaration.find("UTTypeTagSpecification");
        EXPECT_TRUE(declared.emplace(identifier, textsIn(tags->find("public.filename-extension"))).second)
            << identifier;
        const auto shortName = identifier.substr(identifier.rfind('.') + 1);
        EXPECT_EQ(*tags->find("public.mime-type")->as<std::string>(), "application/x-embroidery-" + shortName);
        EXPECT_THAT(textsIn(declaration.find("UTTypeConformsTo")), ElementsAre("public.content", "public.data"));
        EXPECT_THAT(*declaration.find("UTTypeDescription")->as<std::string>(), testing::EndsWith(" embroidery design"));
    }
    EXPECT_EQ(declared, expectedTypes());
}

TEST_F(BundleProperties, DescribeEachTypeInEnglishAndGerman) {
    for (const char* language : {"en.lproj", "de.lproj"}) {
        const auto bytes = readWholeFile(contents / "Resources" / language / "InfoPlist.strings");
        const auto table = parseStringTable({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        std::set<std::string> described;
        for (const auto& [key, value] : table) described.insert(key);
        std::set<std::string> declared;
        for (const PropertyList& declaration : *find({"UTImportedTypeDeclarations"})->as<Array>())
            declared.insert(*declaration.find("UTTypeDescription")->as<std::string>());
        EXPECT_EQ(described, declared) << language;
    }
}

TEST_F(BundleProperties, ClaimEveryType) {
    const auto* types = find({"CFBundleDocumentTypes"})->as<Array>();
    ASSERT_EQ(types->size(), 1U);
    EXPECT_EQ(*types->front().find("CFBundleTypeRole")->as<std::string>(), "MDImporter");
    auto expected = expectedIdentifiers();
    expected.insert("com.apple.symbol-export");  // what the system takes ".exp" for
    EXPECT_EQ(textsIn(types->front().find("LSItemContentTypes")), expected);
}

/// What the schema declares, a line for each attribute and each list of a type, as an XML parser sees it.
std::multiset<std::string> schemaLines() {
    const std::string script = R"(
import sys, xml.etree.ElementTree as tree
ns = '{http://www.apple.com/metadata}'
root = tree.parse(sys.argv[1]).getroot()
assert root.tag == ns + 'schema' and root.get('version') == '1.0'
for attribute in root.findall(f'{ns}attributes/{ns}attribute'): print('attribute', *sorted(attribute.attrib.values()))
for kind in root.findall(f'{ns}types/{ns}type'):
    for names in kind: print(kind.get('name'), names.tag[len(ns):], *names.text.split())
)";
    const std::string command =
        "python3 -c \"" + script + "\" '" + (contents / "Resources" / "schema.xml").native() + "'";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string output(65536, '\0');
    output.resize(std::fread(output.data(), 1, output.size(), pipe.get()));
    std::multiset<std::string> lines;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);) lines.insert(line);
    return lines;
}

TEST(BundleSchema, DeclaresTheAttributesOfEveryType) {
    std::multiset<std::string> expected;
    std::string all;
    for (const std::string& name : attributeNames()) {
        expected.insert("attribute CFNumber " + name + " false");
        all += ' ' + name;
    }
    for (const std::string& identifier : expectedIdentifiers())
        for (const char* list : {" allattrs", " displayattrs"})
            expected.insert(std::string(identifier).append(list) += all);
    EXPECT_EQ(schemaLines(), expected);
}

class BundleTexts : public testing::TestWithParam<const char*> {};
TEST_P(BundleTexts, NameAndDescribeEveryAttribute) {
    const auto file = readWholeFile(contents / "Resources" / (GetParam() + std::string(".lproj")) / "schema.strings");
    const StringTable texts = parseStringTable({reinterpret_cast<const char*>(file.data()), file.size()});
    std::set<std::string> expected;
    for (const std::string& name : attributeNames()) expected.insert({name, name + ".Description"});
    std::set<std::string> found;
    for (const auto& [key, text] : texts) {
        EXPECT_FALSE(text.empty()) << key;
        found.insert(key);
    }
    EXPECT_EQ(found, expected);
}
INSTANTIATE_TEST_SUITE_P(Languages, BundleTexts, testing::Values("en", "de"),
                         [](const auto& language) { return language.param; });

TEST(Bundle, IsLoadedAsTheIndexerLoadsIt) {
    const TemporaryFolder folder;
    PluginHost host(contents / "MacOS" / "Velamo");
    EXPECT_EQ(host.attributesOf(folder.write("rose.dst", test::smallDst())), (DesignAttributes{0, 0.1F, 2, 1}));
    EXPECT_EQ(host.attributesOf(folder.write("poem.dst", "Rose is a rose.")), std::nullopt);
    for (const Format& format : allFormats()) {
        const auto extension = std::string(format.extension);
        const auto file = folder.write("sample." + extension, test::sampleFile(extension));
        EXPECT_EQ(host.attributesOf(file), attributesOfFile(file)) << extension;
    }
}

TEST(Bundle, HasAllResources) {
    const fs::path shipped = VELAMO_SHIPPED_RESOURCES;
    std::size_t compared = 0;
    for (const auto& entry : fs::recursive_directory_iterator(shipped)) {
        if (!entry.is_regular_file()) continue;
        const auto copied = contents / "Resources" / fs::relative(entry.path(), shipped);
        EXPECT_EQ(TemporaryFolder::read(copied), TemporaryFolder::read(entry.path())) << copied;
        ++compared;
    }
    EXPECT_GE(compared, 8U);
}

/// A design's colours come from the palette in the bundle: where that is damaged, there are other ones.
TEST(Bundle, TakesItsPalettesFromItsOwnResources) {
    const TemporaryFolder folder;
    fs::copy(VELAMO_BUNDLE, folder.path() / "Damaged.mdimporter", fs::copy_options::recursive);
    folder.write("Damaged.mdimporter/Contents/Resources/Janome.clr/Janome.clr", "no palette");
    const auto design = folder.write("sample.jef", test::sampleFile("jef"));
    PluginHost whole(contents / "MacOS" / "Velamo");
    PluginHost damaged(folder.path() / "Damaged.mdimporter/Contents/MacOS/Velamo");
    EXPECT_EQ(whole.attributesOf(design).value().colors, 2);
    EXPECT_EQ(damaged.attributesOf(design).value().colors, 1);
}

}  // namespace
}  // namespace velamo
