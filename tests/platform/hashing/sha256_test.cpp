#include "velamo/platform/hashing/sha256.h"

#include <gtest/gtest.h>

#include <string>

namespace velamo {
namespace {

std::string hexadecimal(const Sha256& hash) {
    std::string text;
    for (const std::byte byte : hash)
        for (const std::byte half : {byte >> 4, byte & std::byte{0xF}})
            text += "0123456789abcdef"[std::to_integer<int>(half)];
    return text;
}

struct HashRow {
    const char* name;
    std::string bytes;
    const char* hash;
};
class Sha256Hashes : public testing::TestWithParam<HashRow> {};
TEST_P(Sha256Hashes, AreThePublishedOnes) {
    const std::string& bytes = GetParam().bytes;
    EXPECT_EQ(hexadecimal(sha256Of({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()})),
              GetParam().hash);
}
INSTANTIATE_TEST_SUITE_P(Rows, Sha256Hashes,
                         testing::Values(HashRow{"OfNothing", "",
                                                 "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
                                         HashRow{"OfThreeLetters", "abc",
                                                 "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
                                         HashRow{"OfAMillionLetters", std::string(1'000'000, 'a'),
                                                 "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
