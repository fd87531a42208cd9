#include "integrations/recoll/recoll_handler.h"

#include <algorithm>
#include <array>
#include <istream>
#include <optional>
#include <ostream>
#include <utility>

#include "integrations/attribute_words.h"
#include "reading/reader_failures.h"
#include "velamo/platform/text/plain_number.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::size_t longestHead = 256;
/// Much more than a path may have. A longer field is none, so nobody waits for data that never come.
constexpr std::size_t longestData = 65536;

/// A line without its end; nothing when the input ends before the line does, or the line is too long for a head.
std::optional<std::string> readLine(std::istream& in) {
    std::string line;
    for (char letter = 0; line.size() <= longestHead && in.get(letter); line.push_back(letter))
        if (letter == '\n') return line;
    return std::nullopt;
}

std::optional<std::string> readData(std::istream& in, std::size_t length) {
    if (length > longestData) return std::nullopt;
    std::string data(length, '\0');
    return in.read(data.data(), static_cast<std::streamsize>(length)) ? std::optional(data) : std::nullopt;
}

struct FieldHead {
    std::string name;  // lower case
    std::size_t length = 0;
};

std::optional<FieldHead> parseFieldHead(const std::string& line) {
    const std::size_t colon = line.find(": ");
    if (colon == std::string::npos) return std::nullopt;
    FieldHead head{.name = line.substr(0, colon)};
    std::transform(head.name.begin(), head.name.end(), head.name.begin(), lowerCase);
    const auto length = plainNumber<decltype(head.length)>(std::string_view(line).substr(colon + 2));
    if (!length) return std::nullopt;
    head.length = *length;
    return head;
}

/// The file name that a request asks for, empty when it asks for none; nothing when it is no request.
std::optional<std::string> readRequest(std::istream& in) {
    std::string fileName;
    for (auto line = readLine(in); line; line = readLine(in)) {
        if (line->empty()) return fileName;
        const auto head = parseFieldHead(*line);
        if (!head) return std::nullopt;
        auto data = readData(in, head->length);
        if (!data) return std::nullopt;
        if (head->name == "filename") fileName = std::move(*data);
    }
    return std::nullopt;
}

struct Field {
    const char* name;
    std::string data;
};

std::array<Field, 4> numbersOf(const DesignAttributes& design) {
    const auto number = [](float value) { return std::to_string(nearestWhole(value)); };
    return {{{"designwidth", number(design.widthInMillimetres)},
             {"designheight", number(design.heightInMillimetres)},
             {"stitches", number(design.stitches)},
             {"threadcolors", number(design.colors)}}};
}

std::string sentenceOf(const DesignAttributes& design) {
    return "Embroidery design " + attributesInWords(design);
}

void append(std::string& message, const Field& field) {
    message += std::string(field.name) + ": " + std::to_string(field.data.size()) + '\n' + field.data;
}

/// A file name with a zero byte would open another file than it names.
std::optional<DesignAttributes> attributesOf(const std::filesystem::path& file, ConfinedReader& reader,
                                             std::ostream& problems) {
    if (file.native().find('\0') != std::string::npos) return std::nullopt;
    VLMError error;
    const auto attributes = reader.attributesOfFile(file, &error);
    if (!attributes) problems << problemLine("velamo-recoll", file, error);
    return attributes;
}

}  // namespace

std::string recollAnswerFor(const std::filesystem::path& file, ConfinedReader& reader, std::ostream& problems) {
    const auto design = attributesOf(file, reader, problems);
    if (!design) return "Document: 0\nFileerror: 0\n\n";
    std::string answer;
    append(answer, {"Document", sentenceOf(*design) + '\n'});
    append(answer, {"Mimetype", "text/plain"});
    append(answer, {"Charset", "utf-8"});
    for (const Field& field : numbersOf(*design)) append(answer, field);
    append(answer, {"Eofnext", ""});
    return answer + '\n';
}

std::string recollPageOf(const std::filesystem::path& file, ConfinedReader& reader, std::ostream& problems) {
    const auto design = attributesOf(file, reader, problems);
    if (!design) return "";
    std::string page = "<html><head>\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\n";
    for (const auto& [name, data] : numbersOf(*design))
        page += "<meta name=\"" + std::string(name) + "\" content=\"" + data + "\">\n";
    return page + "</head><body>\n<p>" + sentenceOf(*design) + "</p>\n</body></html>\n";
}

bool answerRecollRequests(std::istream& in, std::ostream& out, ConfinedReader& reader, std::ostream& problems) {
    while (out && in.peek() != std::istream::traits_type::eof()) {
        const auto fileName = readRequest(in);
        if (!fileName) return false;
        out << recollAnswerFor(*fileName, reader, problems) << std::flush;
    }
    return out.good();
}

}  // namespace velamo
