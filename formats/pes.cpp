#include "formats/pes.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "formats/pec.h"
#include "platform/files.h"

namespace velamo {
namespace {

constexpr std::size_t versionOffset = 4;
constexpr std::size_t versionSize = 4;
constexpr std::size_t pesHeaderSize = 8;
constexpr std::size_t pecHeaderSize = 11;  // with the section's mark
constexpr std::string_view sectionMark = "LA:";

constexpr std::array<int, 13> pesVersions{1, 20, 25, 30, 40, 50, 55, 56, 60, 70, 71, 80, 90};
constexpr std::array<int, 1> pecVersions{1};

enum Failure : int { noHeader = 30, unsupportedVersion = 31, noSection = 32, severalSections = 33 };
// 30 and 31 have one number and two texts: a string table, whose keys are the numbers, cannot hold them, so they are in
// English everywhere.
constexpr std::array<ErrorText, 4> pesErrorTexts{{
    {noHeader, "Unable to import PES file (missing header)."},
    {unsupportedVersion, "Unable to import PES file (unsupported version)."},
    {noSection, "Unable to import PES file (PEC part missing)."},
    {severalSections, "Unable to import PES file (PEC multiparts not supported by PES file version)."},
}};
constexpr std::array<ErrorText, 3> pecErrorTexts{{
    {noHeader, "Unable to import PES/PEC file (missing header)."},
    {unsupportedVersion, "Unable to import PES/PEC file (unsupported version)."},
    {noSection, "Unable to import PES file (PEC part missing)."},
}};

std::string_view textOf(std::span<const std::uint8_t> file) noexcept {
    return {reinterpret_cast<const char*>(file.data()), file.size()};
}

/// The whole number that the text starts with: spaces, a sign, digits. 0 when it starts with none.
int leadingNumber(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const bool isNegative = text.substr(0, 1) == "-";
    if (isNegative || text.substr(0, 1) == "+") text.remove_prefix(1);
    int number = 0;
    for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1))
        number = number * 10 + (text[0] - '0');
    return isNegative ? -number : number;
}

/// Keeps the version in the design, refused or not; version 1 has always been kept in tenths.
bool takeVersion(VLMDesign& design, std::string_view file, std::span<const int> accepted) {
    const int version = leadingNumber(file.substr(versionOffset, versionSize));
    const bool isAccepted = std::find(accepted.begin(), accepted.end(), version) != accepted.end();
    design.setDesignVersion(isAccepted && version == 1 ? 10 : version);
    return isAccepted;
}

bool readSection(VLMDesign& design, std::span<const std::uint8_t> segment, VLMError* error) {
    design.resetBounds();
    return importPecSegmentFromDataerror(design, segment, error);
}

}  // namespace

bool readPes(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    const std::string_view text = textOf(file);
    if (text.size() < pesHeaderSize || text.substr(0, versionOffset) != "#PES")
        return fail(pesErrorTexts, noHeader, error);
    if (!takeVersion(design, text, pesVersions)) return fail(pesErrorTexts, unsupportedVersion, error);
    const std::size_t mark = text.find(sectionMark);
    if (mark == text.npos) return fail(pesErrorTexts, noSection, error);
    const std::size_t section = mark + sectionMark.size();
    if (text.find(sectionMark, section) != text.npos)
        return fail(pesErrorTexts, severalSections, error, ErrorTextKey::failureReason);
    return readSection(design, file.subspan(section), error);
}

bool readPec(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    const std::string_view text = textOf(file);
    if (text.size() < pecHeaderSize || text.substr(0, versionOffset) != "#PEC")
        return fail(pecErrorTexts, noHeader, error);
    if (!takeVersion(design, text, pecVersions)) return fail(pecErrorTexts, unsupportedVersion, error);
    if (text.substr(pesHeaderSize, sectionMark.size()) != sectionMark) return fail(pecErrorTexts, noSection, error);
    return readSection(design, file.subspan(pecHeaderSize), error);
}

bool importPesDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] {
        design.setDesignType("PES");
        return readPes(design, readWholeFile(url), error);
    });
}

bool importPecDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept {
    return operation(error, [&] {
        design.setDesignType("PEC");
        return readPec(design, readWholeFile(url), error);
    });
}

}  // namespace velamo
