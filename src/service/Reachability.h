#pragma once

#include "platform/foundation/net/URLRequest.h"

#include <optional>

namespace quillmate
{

/// Says to all panels what the end of an exchange tells of the service: whether it can be reached. A failure that may
/// be the request's own says nothing. Any thread.
void noteReachability(const std::optional<URLError>& error);

} // namespace quillmate
