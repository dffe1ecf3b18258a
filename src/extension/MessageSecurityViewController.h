#pragma once

#include "platform/appkit/MEExtensionViewController.h"

namespace quillmate
{

/// Shown for the signers of a message; an empty view.
class MessageSecurityViewController final : public MEExtensionViewController
{
};

} // namespace quillmate
