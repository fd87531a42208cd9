#include "velamo/platform/text/harmless_output.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace velamo {
namespace {

TEST(HarmlessOutput, ShowsWhatWouldBeObeyedUntilItGoes) {
    std::ostringstream stream;
    {
        HarmlessOutput harmless(stream);
        stream << "one\n\x1b[2J" << 2 << '\x07' << std::string_view("\0", 1) << std::endl;
    }
    EXPECT_EQ(stream.str(), "one\n\\x1b[2J2\\x07\\x00\n");
    stream << "\x1b";
    EXPECT_EQ(stream.str().back(), '\x1b');
}

TEST(HarmlessOutput, PutsCharactersTogetherThatComeInParts) {
    std::ostringstream stream;
    {
        HarmlessOutput harmless(stream);
        for (const char byte : std::string("Ä\u009B🌹\u202E\xc3")) stream.put(byte);
    }
    EXPECT_EQ(stream.str(), "Ä\\xc2\\x9b🌹\\xe2\\x80\\xae\\xc3");
}

TEST(HarmlessOutput, KnowsATerminalThatTakesEachByteForACharacter) {
    std::ostringstream stream;
    {
        HarmlessOutput harmless(stream, TerminalEncoding::bytes);
        stream << "ä\nś31m\xc5";
        stream << "\x9b";
    }
    EXPECT_EQ(stream.str(), "ä\n\\xc5\\x9b31m\\xc5\\x9b");
}

TEST(HarmlessOutput, HasNothingInHandOnceItIsFlushed) {
    std::ostringstream stream;
    HarmlessOutput harmless(stream);
    stream << "a\xc3" << std::flush;
    EXPECT_EQ(stream.str(), "a\\xc3");
    stream << "\xa4";
    EXPECT_EQ(stream.str(), "a\\xc3\\xa4");
}

TEST(HarmlessOutput, LetsTheProgramsOwnTextsThrough) {
    std::ostringstream stream;
    {
        HarmlessOutput harmless(stream);
        stream << "\x1b\xc3";
        writeAsIs(stream, "\r\x1b[K");
        stream << "\x1b";
    }
    EXPECT_EQ(stream.str(), "\\x1b\\xc3\r\x1b[K\\x1b");
    writeAsIs(stream, "\x1b");
    EXPECT_EQ(stream.str(), "\\x1b\\xc3\r\x1b[K\\x1b\x1b");
}

/// Takes so many bytes, as a disk that fills up does.
class FullBuffer : public std::streambuf {
public:
    explicit FullBuffer(std::streamsize room) : room_(room) {}

protected:
    std::streamsize xsputn(const char*, std::streamsize size) override {
        const std::streamsize taken = std::min(size, room_);
        room_ -= taken;
        return taken;
    }

private:
    std::streamsize room_;
};

TEST(HarmlessOutput, SaysWhatCouldNotBeWritten) {
    const auto stateAfter = [](auto write) {
        FullBuffer buffer(2);
        std::ostream stream(&buffer);
        {
            HarmlessOutput harmless(stream);
            write(stream);
        }
        return stream.good();
    };
    EXPECT_TRUE(stateAfter([](std::ostream& stream) { stream << "ab"; }));
    EXPECT_FALSE(stateAfter([](std::ostream& stream) { stream << "abc"; }));
    EXPECT_FALSE(stateAfter([](std::ostream& stream) { stream << "a\xc3"; }));  // takes four
    EXPECT_FALSE(stateAfter([](std::ostream& stream) { writeAsIs(stream, "abc"); }));
    EXPECT_FALSE(stateAfter([](std::ostream& stream) { stream.setstate(std::ios::failbit); }));
}

}  // namespace
}  // namespace velamo
