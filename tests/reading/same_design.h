#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "velamo/model/design.h"

namespace velamo::test {

/// Every field but the location, which is where a design was read from.
inline void expectSame(const VLMDesign& one, const VLMDesign& other) {
    EXPECT_EQ(one.designName(), other.designName());
    EXPECT_EQ(one.designType(), other.designType());
    EXPECT_EQ(one.designVersion(), other.designVersion());
    EXPECT_EQ(one.useThreadFile(), other.useThreadFile());
    EXPECT_EQ(one.selectionActive(), other.selectionActive());
    EXPECT_EQ(one.displayRange(), other.displayRange());
    for (const auto bound : {&VLMDesign::xMin, &VLMDesign::yMin, &VLMDesign::xMax, &VLMDesign::yMax}) {
        EXPECT_EQ((one.*bound)(), (other.*bound)());
        EXPECT_EQ(std::signbit((one.*bound)()), std::signbit((other.*bound)()));
    }
    ASSERT_EQ(one.designHoop() == nullptr, other.designHoop() == nullptr);
    if (const auto& hoop = one.designHoop()) {
        EXPECT_EQ(*hoop, *other.designHoop());
        EXPECT_EQ(hoop->code(), other.designHoop()->code());
        EXPECT_EQ(hoop->isMultiHoop(), other.designHoop()->isMultiHoop());
        EXPECT_EQ(hoop->isRounded(), other.designHoop()->isRounded());
        EXPECT_EQ(hoop->isWritable(), other.designHoop()->isWritable());
    }
    EXPECT_EQ(one.threads(), other.threads());
    EXPECT_EQ(one.stitches(), other.stitches());
}

}  // namespace velamo::test
