#include "service/Reachability.h"

#include "state/ServiceReachability.h"

namespace quillmate
{

void noteReachability(const std::optional<URLError>& error)
{
    using Kind = URLError::Kind;
    if (!error) {
        ServiceReachability::shared().answered();
        return;
    }
    switch (error->kind) {
    case Kind::TimedOut:
    case Kind::CannotFindHost:
    case Kind::CannotConnectToHost:
    case Kind::NetworkConnectionLost:
    case Kind::SecureConnectionFailed:
        ServiceReachability::shared().failed(error->localizedDescription);
        return;
    case Kind::BadRequest:
    case Kind::BadServerResponse:
    case Kind::TooManyRedirects:
    case Kind::InsecureRedirect:
    case Kind::ForeignRedirect:
    case Kind::DataTooLarge:
    case Kind::Unknown:
        return;
    }
}

} // namespace quillmate
