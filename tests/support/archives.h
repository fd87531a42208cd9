#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/bytes.h"

namespace velamo::test {

/// A file in an archive. What its header says may be another thing.
struct PackedFile {
    std::string name;
    Bytes bytes;
    int flags = 0;                    // the container's own
    int method = 0;                   // of compression; 0: the bytes are as they are
    std::int64_t claimedSize = -1;    // -1: the true one
    std::int64_t claimedOffset = -1;  // of a zip's entry, in the directory
    std::int64_t sum = -1;            // of a zip's entry
};

inline std::uint32_t crc32Of(const Bytes& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

inline std::int64_t claimedSizeOf(const PackedFile& file) {
    return file.claimedSize < 0 ? static_cast<std::int64_t>(file.bytes.size()) : file.claimedSize;
}

/// Half past noon on 5 February 2020, as zip and rar archives write it.
inline Bytes dosTime() {
    return bytes(le16(12 << 11 | 30 << 5), le16(40 << 9 | 2 << 5 | 5));
}

/// A zip archive as MS-DOS would write it. A flag 0x800 says that the name is UTF-8, 1 that the bytes are encrypted.
inline Bytes zipOf(const std::vector<PackedFile>& files) {
    Bytes zip;
    Bytes directory;
    for (const PackedFile& file : files) {
        const auto offset = file.claimedOffset < 0 ? static_cast<std::int64_t>(zip.size()) : file.claimedOffset;
        const auto packed = static_cast<std::int64_t>(file.bytes.size());
        const Bytes head = bytes(le16(20), le16(file.flags), le16(file.method), dosTime(),
                                 le32(file.sum < 0 ? crc32Of(file.bytes) : file.sum), le32(packed),
                                 le32(claimedSizeOf(file)), le16(static_cast<std::int64_t>(file.name.size())), le16(0));
        append(directory, bytes("PK\1\2", le16(20), head, le16(0), le16(0), le16(0), le32(0), le32(offset), file.name));
        append(zip, bytes("PK\3\4", head, file.name, file.bytes));
    }
    const auto start = static_cast<std::int64_t>(zip.size());
    const auto count = static_cast<std::int64_t>(files.size());
    append(zip, directory);
    append(zip, bytes("PK\5\6", le16(0), le16(0), le16(count & 0xFFFF), le16(count & 0xFFFF),
                      le32(static_cast<std::int64_t>(directory.size())), le32(start), le16(0)));
    return zip;
}

/// A tar archive of the first kind; `method` is the kind of file ('2': a link to "rose.dst", '6': a pipe).
inline Bytes tarOf(const std::vector<PackedFile>& files) {
    constexpr std::size_t block = 512;
    const auto octal = [](std::int64_t number, int digits) {
        std::string text(static_cast<std::size_t>(digits), '0');
        for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number /= 8)
            *digit = static_cast<char>('0' + number % 8);
        return text + '\0';
    };
    Bytes tar;
    for (const PackedFile& file : files) {
        Bytes head = bytes(file.name, repeated(100 - file.name.size(), 0), octal(0644, 7), octal(0, 7), octal(0, 7),
                           octal(claimedSizeOf(file), 11), octal(1'500'000'000, 11), "        ",
                           file.method == 0 ? '0' : file.method, "rose.dst");
        head.resize(block);
        std::int64_t sum = 0;
        for (const std::uint8_t byte : head) sum += byte;
        const std::string check = octal(sum, 6);
        for (std::size_t i = 0; i < check.size(); ++i) head[148 + i] = static_cast<std::uint8_t>(check[i]);
        append(tar, bytes(head, file.bytes, repeated((block - file.bytes.size() % block) % block, 0)));
    }
    return bytes(tar, repeated(2 * block, 0));
}

/// A rar archive of version 4; a flag 4 says that the bytes are encrypted.
inline Bytes rar4Of(const std::vector<PackedFile>& files) {
    const auto block = [](int type, int flags, const Bytes& body) {
        const Bytes head = bytes(type, le16(flags), le16(static_cast<std::int64_t>(7 + body.size())), body);
        return bytes(le16(crc32Of(head) & 0xFFFF), head);
    };
    Bytes rar = bytes("Rar!\x1A\7", 0, block(0x73, 0, repeated(6, 0)));
    for (const PackedFile& file : files)
        append(rar, bytes(block(0x74, 0x8000 | file.flags,
                                bytes(le32(static_cast<std::int64_t>(file.bytes.size())), le32(claimedSizeOf(file)), 2,
                                      le32(crc32Of(file.bytes)), dosTime(), 29, 0x30,
                                      le16(static_cast<std::int64_t>(file.name.size())), le32(0x20), file.name)),
                          file.bytes));
    return bytes(rar, block(0x7B, 0x4000, {}));
}

/// A number as rar archives of version 5 write it.
inline Bytes rarNumber(std::size_t number) {
    Bytes coded;
    for (; number >= 0x80; number >>= 7) append(coded, static_cast<int>(number & 0x7F) | 0x80);
    return bytes(coded, static_cast<int>(number));
}

/// A rar archive of version 5, whose names are UTF-8.
inline Bytes rar5Of(const std::vector<PackedFile>& files) {
    const auto block = [](const Bytes& body) {
        const Bytes head = bytes(rarNumber(body.size()), body);
        return bytes(le32(crc32Of(head)), head);
    };
    Bytes rar = bytes("Rar!\x1A\7\1", 0, block(bytes(1, 0, 0)));
    for (const PackedFile& file : files)
        append(rar, bytes(block(bytes(2, 2, rarNumber(file.bytes.size()), 2 | 4,
                                      rarNumber(static_cast<std::size_t>(claimedSizeOf(file))), rarNumber(0644),
                                      le32(1'500'000'000), le32(crc32Of(file.bytes)), 0, 1, rarNumber(file.name.size()),
                                      file.name)),
                          file.bytes));
    return bytes(rar, block(bytes(5, 0, 0)));
}

}  // namespace velamo::test
