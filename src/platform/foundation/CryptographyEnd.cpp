#include "platform/foundation/CryptographyEnd.h"

#include "platform/foundation/print.h"

#include <openssl/crypto.h>

namespace quillmate
{

void leaveCryptographyToProcessEnd()
{
    if (OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) != 1) {
        print("The cryptography library could not be prepared; requests may fail.");
    }
}

} // namespace quillmate
