#include "localservice/CryptographyEnd.h"

#include <QtGlobal>
#include <openssl/crypto.h>

namespace quillmate::localservice
{

void leaveCryptographyToProcessEnd()
{
    if (OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) != 1) {
        qCritical("quillmate-service: the cryptography library could not be prepared");
    }
}

} // namespace quillmate::localservice
