#pragma once

#include <zlib.h>

#include <cstdint>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace velamo::test {

/// A path of a picture's file; places in its own units, from the left and the top or bottom as the file has it.
struct DrawnPath {
    std::string rule;  // what it is drawn with
    std::vector<std::pair<double, double>> points;
    friend bool operator==(const DrawnPath&, const DrawnPath&) = default;
};

/// The points of an SVG path's data, in which only m, l, h, v, c and z stand, all of them relative.
inline std::vector<std::pair<double, double>> pointsOfPathData(const std::string& data) {
    std::vector<std::pair<double, double>> points;
    static const std::regex token("[mlhvcz]|-?[0-9]*\\.?[0-9]+");
    char command = 0;
    double x = 0;
    double y = 0;
    std::vector<double> numbers;
    const std::map<char, std::size_t> sizes{{'m', 2}, {'l', 2}, {'h', 1}, {'v', 1}, {'c', 6}};
    for (std::sregex_iterator found(data.begin(), data.end(), token), end; found != end; ++found) {
        const std::string text = found->str();
        if (sizes.count(text[0]) != 0 || text == "z") {
            command = text[0];
            continue;
        }
        numbers.push_back(std::stod(text));
        if (numbers.size() < sizes.at(command)) continue;
        x += command == 'v' ? 0 : numbers[numbers.size() == 6 ? 4 : 0];
        y += command == 'v' ? numbers[0] : command == 'h' ? 0 : numbers.back();
        points.emplace_back(x, y);
        numbers.clear();
        if (command == 'm') command = 'l';
    }
    return points;
}

/// The elements of an SVG picture in their order, each with its class's rule; curves with their ends alone.
inline std::vector<DrawnPath> pathsOfSvg(const std::string& svg) {
    std::map<std::string, std::string> rules;
    static const std::regex rule("\\.([a-zA-Z]+)\\{([^}]*)\\}");
    for (std::sregex_iterator found(svg.begin(), svg.end(), rule), end; found != end; ++found)
        rules[(*found)[1]] = (*found)[2];
    static const std::regex element("<(g|path)( class=\"([a-zA-Z]+)\")?[^>]*?( d=\"([^\"]*)\")?/?>");
    std::vector<DrawnPath> paths;
    std::string group;
    for (std::sregex_iterator found(svg.begin(), svg.end(), element), end; found != end; ++found) {
        const std::string name = (*found)[3];
        if ((*found)[1] == "g" && !name.empty()) group = name;
        if ((*found)[1] == "path") paths.push_back({rules[name.empty() ? group : name], pointsOfPathData((*found)[5])});
    }
    return paths;
}

/// What stands in the one stream of a PDF picture; empty where its length is not the one that is said.
inline std::string contentOfPdf(const std::string& pdf) {
    const std::string start = "stream\n";
    const std::size_t first = pdf.find(start) + start.size();
    const std::size_t last = pdf.find("\nendstream", first);
    const std::string length = "5 0 obj\n" + std::to_string(last - first) + "\nendobj";
    if (last == std::string::npos || pdf.find(length) == std::string::npos) return {};
    std::string content(std::size_t{1} << 24, '\0');
    uLongf size = content.size();
    const int result = uncompress(reinterpret_cast<Bytef*>(content.data()), &size,
                                  reinterpret_cast<const Bytef*>(pdf.data() + first), last - first);
    content.resize(result == Z_OK ? size : 0);
    return content;
}

/// Whether each entry of the table at a PDF file's end tells where its object starts, and its last number the table.
inline bool hasTrueTable(const std::string& pdf) {
    const std::size_t table = pdf.rfind("\nxref\n") + 1;
    std::istringstream lines(pdf.substr(table));
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);
    std::getline(lines, line);
    int number = 0;
    while (std::getline(lines, line) && line.size() == 19 && line.substr(10) == " 00000 n ") {
        const std::string object = std::to_string(++number) + " 0 obj\n";
        if (pdf.compare(std::stoul(line), object.size(), object) != 0) return false;
    }
    return number > 0 && pdf.find("startxref\n" + std::to_string(table) + "\n%%EOF\n") != std::string::npos;
}

}  // namespace velamo::test
