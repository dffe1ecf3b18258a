#include "platform/foundation/net/URLRequest.h"

namespace quillmate
{

std::string_view URLError::name(Kind kind)
{
    switch (kind) {
    case Kind::BadRequest:
        return "badRequest";
    case Kind::TimedOut:
        return "timedOut";
    case Kind::CannotFindHost:
        return "cannotFindHost";
    case Kind::CannotConnectToHost:
        return "cannotConnectToHost";
    case Kind::NetworkConnectionLost:
        return "networkConnectionLost";
    case Kind::SecureConnectionFailed:
        return "secureConnectionFailed";
    case Kind::BadServerResponse:
        return "badServerResponse";
    case Kind::TooManyRedirects:
        return "tooManyRedirects";
    case Kind::InsecureRedirect:
        return "insecureRedirect";
    case Kind::ForeignRedirect:
        return "foreignRedirect";
    case Kind::DataTooLarge:
        return "dataTooLarge";
    case Kind::Unknown:
        break;
    }
    return "unknown";
}

std::string URLError::description() const
{
    return "URLError." + std::string(name(kind)) + ": " + localizedDescription;
}

} // namespace quillmate
