#include "mail/MimeLibrary.h"

#include <mutex>

namespace quillmate
{

void prepareMimeLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] { g_mime_init(); });
}

} // namespace quillmate
