#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "velamo/platform/system/terminal.h"
#include "velamo/private_api.h"

namespace velamo {

/// While it lives, what is written to the stream, which leads to a terminal, is shown and never obeyed: but for line
/// ends, control characters, marks that turn the direction of writing, bytes that are no UTF-8, and what the terminal's
/// encoding makes a control character of, are written as "\x1b" and its like. So no text of a design, a catalogue or a
/// library can command the terminal, whoever prints it.
class VELAMO_PRIVATE_API HarmlessOutput : public std::streambuf {
public:
    explicit HarmlessOutput(std::ostream& stream, TerminalEncoding encoding = TerminalEncoding::utf8);
    ~HarmlessOutput() override;
    HarmlessOutput(const HarmlessOutput&) = delete;
    HarmlessOutput& operator=(const HarmlessOutput&) = delete;

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;

private:
    friend void writeAsIs(std::ostream& stream, std::string_view text);
    bool write(std::string_view text);
    bool writePending();
    void putInto(std::streambuf* buffer);

    std::ostream& stream_;
    std::streambuf* target_;
    TerminalEncoding encoding_;
    std::string pending_;  // the first bytes of a character whose last ones are still to come
};

/// Writes what the program itself has to tell a terminal (a picture, the clearing of a line) to any stream. Never a
/// text that came from outside.
VELAMO_PRIVATE_API void writeAsIs(std::ostream& stream, std::string_view text);

}  // namespace velamo
