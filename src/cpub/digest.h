/* digest.h - the MD5 digest of a run of bytes. It finds accidental changes; nobody relies on it against an attacker. */
#pragma once

#include <cstdint>

enum { DIGEST_BYTES = 16 };

/* Returns 0, or 1 where the platform could not make it, with `digest` as it was. POSIX never gives 1. */
[[nodiscard]] int32_t digest_md5(const void *bytes, uint32_t length, uint8_t digest[DIGEST_BYTES]);
