#pragma once

#include <zlib.h>

#include <string>
#include <utility>

#include "tests/support/archives.h"

namespace velamo::test {

/// The bytes as gzip or zip archives hold them.
inline Bytes deflated(const Bytes& plain, bool isGzip) {
    z_stream stream{};
    constexpr int gzip = 16;
    if (deflateInit2(&stream, 9, Z_DEFLATED, isGzip ? gzip + MAX_WBITS : -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return {};
    Bytes packed(deflateBound(&stream, static_cast<uLong>(plain.size())));
    stream.next_in = const_cast<Bytef*>(plain.data());
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// A file of a zip archive as most programs pack it.
inline PackedFile deflatedFile(std::string name, const Bytes& plain) {
    return {.name = std::move(name),
            .bytes = deflated(plain, false),
            .method = 8,
            .claimedSize = static_cast<std::int64_t>(plain.size()),
            .sum = crc32Of(plain)};
}

}  // namespace velamo::test
