/* digest_posix.cpp - MD5 by libmd. */
#include "digest.h"

#include <sys/types.h> /* md5.h needs it in front of it on some systems */

#include <md5.h>

static_assert(MD5_DIGEST_LENGTH == DIGEST_BYTES);

int32_t digest_md5(const void *bytes, uint32_t length, uint8_t digest[DIGEST_BYTES])
{
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, static_cast<const uint8_t *>(bytes), length);
    MD5Final(digest, &context);
    return 0;
}
