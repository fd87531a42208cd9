#include "catalogue/sewing_field.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

struct FieldRow {
    const char* name;
    const char* text;
    std::optional<SewingField> field;
};
class Fields : public testing::TestWithParam<FieldRow> {};
TEST_P(Fields, AreReadAsPeopleWriteThem) {
    EXPECT_EQ(parseField(GetParam().text), GetParam().field);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Fields,
    testing::Values(FieldRow{"Size", "100x120", SewingField{100, 120}},
                    FieldRow{"Sign", "130.5×180", SewingField{130.5, 180}},
                    FieldRow{"Capital", "5X7", SewingField{5, 7}}, FieldRow{"Hoop", "Janome A", SewingField{110, 110}},
                    FieldRow{"AnyCase", "jANOME sq23", SewingField{230, 230}},
                    FieldRow{"OneOfItsNames", "Janome RE", SewingField{140, 200}},
                    FieldRow{"AllItsNames", "Janome B/RE", SewingField{140, 200}},
                    FieldRow{"Code", "Janome 2", SewingField{140, 200}}, FieldRow{"NoVendor", "B", {}},
                    FieldRow{"VendorAlone", "Janome", {}}, FieldRow{"VendorAndSpace", "Janome ", {}},
                    FieldRow{"NoSuchHoop", "Janome ZZ", {}}, FieldRow{"Nothing", "", {}},
                    FieldRow{"OneSide", "100x", {}}, FieldRow{"Zero", "0x100", {}}, FieldRow{"Negative", "-5x100", {}},
                    FieldRow{"Words", "axb", {}}, FieldRow{"NotANumber", "nanxinf", {}}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
