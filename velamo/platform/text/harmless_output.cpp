#include "velamo/platform/text/harmless_output.h"
#include "velamo/platform/text/harmless_text.h"

#include <algorithm>
#include <cstddef>

namespace velamo {
namespace {

/// How many bytes a character has that begins with this one.
std::size_t sizeOfCharacter(char first) noexcept {
    const auto byte = static_cast<unsigned char>(first);
    return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
}

/// The number of bytes at the end that may be the start of a character.
std::size_t unfinishedSize(std::string_view text) noexcept {
    constexpr std::size_t most = 3;
    for (std::size_t size = 1; size <= std::min(most, text.size()); ++size) {
        const char byte = text[text.size() - size];
        const bool isContinued = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
        if (!isContinued) return sizeOfCharacter(byte) > size ? size : 0;
    }
    return 0;
}

bool put(std::streambuf& target, std::string_view text) {
    const auto size = static_cast<std::streamsize>(text.size());
    return target.sputn(text.data(), size) == size;
}

}  // namespace

HarmlessOutput::HarmlessOutput(std::ostream& stream, TerminalEncoding encoding)
    : stream_(stream), target_(stream.rdbuf()), encoding_(encoding) {
    putInto(this);
}

HarmlessOutput::~HarmlessOutput() {
    if (!writePending()) stream_.setstate(std::ios::badbit);
    putInto(target_);
}

/// An exchange of its buffer would make a failed stream a good one.
void HarmlessOutput::putInto(std::streambuf* buffer) {
    const auto state = stream_.rdstate();
    stream_.rdbuf(buffer);
    stream_.clear(state);
}

bool HarmlessOutput::write(std::string_view text) {
    pending_ += text;
    const std::size_t kept = unfinishedSize(pending_);
    const auto whole = std::string_view(pending_).substr(0, pending_.size() - kept);
    const bool isWritten = put(*target_, linesForTerminal(whole, encoding_));
    pending_.erase(0, pending_.size() - kept);
    return isWritten;
}

bool HarmlessOutput::writePending() {
    const bool isWritten = put(*target_, linesForTerminal(pending_, encoding_));
    pending_.clear();
    return isWritten;
}

HarmlessOutput::int_type HarmlessOutput::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const char letter = traits_type::to_char_type(character);
    return write({&letter, 1}) ? character : traits_type::eof();
}

std::streamsize HarmlessOutput::xsputn(const char* text, std::streamsize size) {
    return write({text, static_cast<std::size_t>(size)}) ? size : 0;
}

int HarmlessOutput::sync() {
    return writePending() && target_->pubsync() == 0 ? 0 : -1;
}

void writeAsIs(std::ostream& stream, std::string_view text) {
    auto* harmless = dynamic_cast<HarmlessOutput*>(stream.rdbuf());
    if (harmless == nullptr) {
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    } else if (!harmless->writePending() || !put(*harmless->target_, text)) {
        stream.setstate(std::ios::badbit);
    }
}

}  // namespace velamo
