#pragma once

#include "hosts/link/LinkFields.h"
#include "platform/mailkit/MEMessage.h"

#include <memory>

namespace quillmate
{

/// Reads a message as the frames carry it. Null when it is none; what is wrong with it becomes `outer`'s error.
[[nodiscard]] std::shared_ptr<const MEMessage> readLinkMessage(const JSONValue& value, LinkFields& outer);

} // namespace quillmate
