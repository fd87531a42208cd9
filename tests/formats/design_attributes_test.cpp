#include "velamo/formats/design_attributes.h"

#include <gtest/gtest.h>

#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using namespace velamo::test;

TEST(DesignAttributes, AreTheFileS) {
    const TemporaryFolder folder;
    const auto wide = folder.write("Wide.DST", dstFile(bytes(0x05, 0x00, 0x03, 0x05, 0x00, 0x03)));  // +10, +10
    EXPECT_EQ(attributesOfFile(wide), (DesignAttributes{1.0F, 0.0F, 2.0F, 1.0F}));
}

TEST(DesignAttributes, AreNotThereWithoutADesign) {
    const TemporaryFolder folder;
    for (const auto& file : {folder.write("poem.dst", bytes('r', 'o', 's', 'e')), folder.write("rose.png", dstFile({})),
                             folder.path() / "absent.dst"})
        EXPECT_EQ(attributesOfFile(file), std::nullopt) << file;
}

}  // namespace
}  // namespace velamo
