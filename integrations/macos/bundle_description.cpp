#include "integrations/macos/bundle_description.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "velamo/formats/format.h"

namespace velamo {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

/// As in the importer's code.
constexpr const char* factoryID = "C20CFE66-83A9-45E7-AF23-7190DE4548C4";
constexpr const char* factoryFunction = "MetadataImporterPluginFactory";
constexpr std::array attributes{"de_velamo_embroidery_width", "de_velamo_embroidery_height",
                                "de_velamo_embroidery_stitches", "de_velamo_embroidery_colors"};
/// The kind of plug-in that the system's indexer looks for.
constexpr const char* importerTypeID = "8B08C4BF-415B-11D8-B3F9-0003936726FC";

/// A type of file to the system: formats with one reader are one type, which the first of them names.
struct FileType {
    Format format;
    Array extensions;
};

std::vector<FileType> fileTypes() {
    std::vector<FileType> types;
    for (const Format& format : allFormats()) {
        const auto isSame = [&](const FileType& type) { return type.format.reader == format.reader; };
        auto type = std::find_if(types.begin(), types.end(), isSame);
        if (type == types.end()) type = types.insert(type, {format, {}});
        type->extensions.emplace_back(std::string(format.extension));
    }
    return types;
}

std::string identifierOf(const FileType& type) {
    return "de.velamo.embroidery." + std::string(type.format.extension);
}

/// What the system itself takes files named ".exp" for. Those named ".jpx" are pictures to it, which are not ours.
constexpr const char* systemsTypeOfExp = "com.apple.symbol-export";

Array identifiers() {
    Array identifiers;
    for (const FileType& type : fileTypes()) identifiers.emplace_back(identifierOf(type));
    identifiers.emplace_back(std::string(systemsTypeOfExp));
    return identifiers;
}

PropertyList text(const char* text) {
    return PropertyList(std::string(text));
}

PropertyList declarationOf(const FileType& type) {
    const auto mimeType = "application/x-embroidery-" + std::string(type.format.extension);
    return PropertyList(Dictionary{
        {"UTTypeIdentifier", PropertyList(identifierOf(type))},
        {"UTTypeDescription", PropertyList(std::string(type.format.type) + " embroidery design")},
        {"UTTypeConformsTo", PropertyList(Array{text("public.data"), text("public.content")})},
        {"UTTypeTagSpecification", PropertyList(Dictionary{{"public.filename-extension", PropertyList(type.extensions)},
                                                           {"public.mime-type", PropertyList(mimeType)}})}});
}

/// The formats are other makers', so they are imported; a maker's own declaration would go before ours.
Array declarations() {
    Array declarations;
    for (const FileType& type : fileTypes()) declarations.push_back(declarationOf(type));
    return declarations;
}

/// The attributes, a line each.
std::string attributeLines() {
    std::string lines;
    for (const char* attribute : attributes) lines += std::string("        ") + attribute + '\n';
    return lines;
}

std::string schemaOf(const FileType& type) {
    return "    <type name=\"" + identifierOf(type) + "\">\n      <allattrs>\n" + attributeLines() +
           "      </allattrs>\n      <displayattrs>\n" + attributeLines() + "      </displayattrs>\n    </type>\n";
}

}  // namespace

PropertyList importerBundleProperties(const std::string& version, const std::string& system) {
    return PropertyList(
        Dictionary{{"CFBundleDevelopmentRegion", text("en")},
                   {"CFBundleDocumentTypes",
                    PropertyList(Array{PropertyList(Dictionary{{"CFBundleTypeRole", text("MDImporter")},
                                                               {"LSItemContentTypes", PropertyList(identifiers())}})})},
                   {"CFBundleExecutable", text("Velamo")},
                   {"CFBundleIdentifier", text("de.velamo.importer")},
                   {"CFBundleInfoDictionaryVersion", text("6.0")},
                   {"CFBundleName", text("Velamo")},
                   {"CFBundlePackageType", text("BNDL")},
                   {"CFBundleShortVersionString", PropertyList(version)},
                   {"CFBundleVersion", PropertyList(version)},
                   {"LSMinimumSystemVersion", PropertyList(system)},
                   {"CFPlugInDynamicRegistration", text("NO")},
                   {"CFPlugInFactories", PropertyList(Dictionary{{factoryID, text(factoryFunction)}})},
                   {"CFPlugInTypes", PropertyList(Dictionary{{importerTypeID, PropertyList(Array{text(factoryID)})}})},
                   {"UTImportedTypeDeclarations", PropertyList(declarations())}});
}

std::string importerSchema() {
    std::string schema = R"(<?xml version="1.0" encoding="UTF-8"?>
<schema version="1.0" xmlns="http://www.apple.com/metadata"
        xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
        xsi:schemaLocation="http://www.apple.com/metadata file:///System/Library/Frameworks/CoreServices.framework/Frameworks/Metadata.framework/Resources/MetadataSchema.xsd">
  <attributes>
)";
    for (const char* attribute : attributes)
        schema += std::string("    <attribute name=\"") + attribute + "\" multivalued=\"false\" type=\"CFNumber\"/>\n";
    schema += "  </attributes>\n  <types>\n";
    for (const FileType& type : fileTypes()) schema += schemaOf(type);
    return schema + "  </types>\n</schema>\n";
}

}  // namespace velamo
