#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>

namespace velamo::test {

template <class Row>
concept HasName = requires(const Row& row, std::ostream& out) {
    out << row.name;
};

/// A row of the table of formats is known by its extension.
template <class Row>
concept HasExtension = requires(const Row& row, std::ostream& out) {
    out << row.extension;
};

template <class Row>
concept HasWordsOfItsOwn = requires(const Row& row, std::ostream& out) {
    out << row;
}
|| requires(const Row& row, std::ostream& out) {
    PrintTo(row, &out);
};

/// A row of a table of tests that is shown by what names it.
template <class Row>
concept NamedRow =
    std::is_class_v<Row> && !std::is_const_v<Row> && (HasName<Row> || HasExtension<Row>)&&!HasWordsOfItsOwn<Row>;

}  // namespace velamo::test

/// Rows are shown by their names, in lists of tests and where one fails, in place of the bytes they are made of. A
/// PrintTo would have to stand beside each row: a file's own names are looked for nowhere else.
template <velamo::test::NamedRow Row>
class testing::internal::UniversalPrinter<Row> {
public:
    static void Print(const Row& row, std::ostream* out) {
        if constexpr (velamo::test::HasName<Row>)
            *out << row.name;
        else
            *out << row.extension;
    }
};
