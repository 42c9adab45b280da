/* digest_win32.cpp - MD5 by the system's own provider. It may run out of memory: hence digest_md5's result. */
#include "digest.h"

#include <windows.h>

#include <bcrypt.h>

static bool hash_bytes(BCRYPT_HASH_HANDLE hash, const void *bytes, uint32_t length, uint8_t digest[DIGEST_BYTES])
{
    UCHAR *in = static_cast<UCHAR *>(const_cast<void *>(bytes)); /* only read: the interface lacks the const */
    if (!BCRYPT_SUCCESS(BCryptHashData(hash, in, length, 0))) return false;
    return BCRYPT_SUCCESS(BCryptFinishHash(hash, digest, DIGEST_BYTES, 0));
}

int32_t digest_md5(const void *bytes, uint32_t length, uint8_t digest[DIGEST_BYTES])
{
    BCRYPT_ALG_HANDLE provider = nullptr;
    if (!BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&provider, BCRYPT_MD5_ALGORITHM, nullptr, 0))) return 1;
    BCRYPT_HASH_HANDLE hash = nullptr;
    bool done = false;
    if (BCRYPT_SUCCESS(BCryptCreateHash(provider, &hash, nullptr, 0, nullptr, 0, 0))) {
        done = hash_bytes(hash, bytes, length, digest);
        (void)BCryptDestroyHash(hash);
    }
    (void)BCryptCloseAlgorithmProvider(provider, 0);
    return done ? 0 : 1;
}
