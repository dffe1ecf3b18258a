#pragma once

#include "localservice/engine/Engine.h"

namespace quillmate::localservice
{

/// Writes its texts from the message alone: no account, no network, no language model. A summary is made of the
/// message's own sentences, at most five, one a line; a message of one or two sentences is its own summary. The first
/// 400 sentences are looked at, so that the time for a message of any size stays bounded.
class BuiltinEngine : public Engine
{
public:
    [[nodiscard]] std::string summarize(const std::string& mail) const override;
    [[nodiscard]] std::string reply(const std::string& mail) const override;
    [[nodiscard]] std::string readableText(const std::string& mail) const override;
    [[nodiscard]] std::string answer(const std::string& text, const std::string& question) const override;
};

} // namespace quillmate::localservice
