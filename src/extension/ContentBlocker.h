#pragma once

#include "platform/mailkit/MEHandlers.h"

namespace quillmate
{

/// Hands over the rules that the program carries.
class ContentBlocker final : public MEContentBlocker
{
public:
    /// The rules unread, empty when there are none.
    std::string contentRulesJSON() override;
};

} // namespace quillmate
