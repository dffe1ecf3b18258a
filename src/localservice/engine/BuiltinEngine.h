#pragma once

#include "localservice/engine/Engine.h"

namespace quillmate::localservice
{

/// Writes its texts from the message alone: no account, no network, no language model; none of them fails. Of a message
/// the first 200,000 characters are looked at, so that the time for one of any size stays bounded.
class BuiltinEngine : public Engine
{
public:
    [[nodiscard]] EngineText summarize(const std::string& mail) const override;
    [[nodiscard]] EngineText reply(const std::string& mail, const std::string& userName) const override;
    [[nodiscard]] std::string readableText(const std::string& mail) const override;
    [[nodiscard]] EngineText answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                    const std::string& question) const override;
};

} // namespace quillmate::localservice
