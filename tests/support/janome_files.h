#pragma once

#include <cstddef>
#include <vector>

#include "tests/support/bytes.h"

namespace velamo::test {

/// The same bytes with others in place of those at the offset.
inline Bytes with(Bytes whole, std::size_t offset, const Bytes& others) {
    for (std::size_t i = 0; i < others.size(); ++i) whole.at(offset + i) = others[i];
    return whole;
}

inline const Bytes janomeEnd = bytes(0x80, 0x10, 0, 0);

struct JanomeFile {
    std::vector<int> indices = {5};
    std::vector<int> tensions = {7};
    int version = 10;
    int hoop = 28;
    Bytes stream = bytes(10, 0xF6, janomeEnd);
};

/// The tables of thread indices and tensions, one behind the other.
inline Bytes janomeTables(const JanomeFile& file) {
    Bytes tables;
    for (const int index : file.indices) append(tables, le32(index));
    for (const int tension : file.tensions) append(tables, le32(tension));
    return tables;
}

constexpr std::size_t jefTablesOffset = 116;
constexpr std::size_t jefColorCountOffset = 24;
/// A JEF file whose stream stands right behind its tables.
inline Bytes jefFile(const JanomeFile& file = {}) {
    const Bytes tables = janomeTables(file);
    Bytes header = bytes(le32(static_cast<std::int64_t>(jefTablesOffset + tables.size())), file.version,
                         repeated(jefTablesOffset - 5, 0x77));
    header = with(header, jefColorCountOffset, le32(static_cast<std::int64_t>(file.indices.size())));
    return bytes(with(header, 32, le32(file.hoop)), tables, file.stream);
}

constexpr std::size_t jpxTablesOffset = 60;
constexpr std::size_t jpxColorCountOffset = 32;
/// A JPX file: some bytes that mean nothing stand between its tables and its stream, which makes it large enough.
inline Bytes jpxFile(const JanomeFile& file = {}) {
    const Bytes tables = bytes(janomeTables(file), repeated(56, 0x77));
    Bytes header = bytes(le32(static_cast<std::int64_t>(jpxTablesOffset + tables.size())), file.version,
                         repeated(jpxTablesOffset - 5, 0x77));
    header = with(header, jpxColorCountOffset, le32(static_cast<std::int64_t>(file.indices.size())));
    return bytes(with(header, 40, le32(file.hoop)), tables, file.stream);
}

constexpr std::size_t sewStreamOffset = 7544;
inline Bytes sewFile(const std::vector<int>& indices, const Bytes& stream) {
    Bytes header = le16(static_cast<std::int64_t>(indices.size()));
    for (const int index : indices) append(header, le16(index));
    return bytes(header, repeated(sewStreamOffset - header.size(), 0x77), stream);
}

}  // namespace velamo::test
