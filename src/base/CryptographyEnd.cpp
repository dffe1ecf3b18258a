#include "base/CryptographyEnd.h"

#include <cstdio>
#include <openssl/crypto.h>

namespace quillmate
{

void leaveCryptographyToProcessEnd()
{
    if (OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) != 1) {
        std::fputs("The cryptography library could not be prepared; requests may fail.\n", stderr);
    }
}

} // namespace quillmate
