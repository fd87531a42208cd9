#include "velamo/platform/hashing/sha256.h"

#include <nettle/sha2.h>

namespace velamo {

Sha256 sha256Of(std::span<const std::uint8_t> bytes) noexcept {
    static_assert(sizeof(Sha256) == SHA256_DIGEST_SIZE);
    Sha256 hash{};
    sha256_ctx context;
    ::sha256_init(&context);
    ::sha256_update(&context, bytes.size(), bytes.data());
    ::sha256_digest(&context, hash.size(), reinterpret_cast<std::uint8_t*>(hash.data()));
    return hash;
}

}  // namespace velamo
