#pragma once

#include "server/engine/Engine.h"

#include <QString>

namespace quillmate::server
{

/// The first 200,000 characters of a message's text, so that the time for one of any size stays bounded.
QString consideredText(const std::string& mail);

/// Writes its texts from the message alone: no account, no network, no language model; none of them fails.
class BuiltinEngine : public Engine
{
public:
    [[nodiscard]] EngineText summarize(const std::string& mail) const override;
    [[nodiscard]] EngineText reply(const std::string& mail, const std::string& userName) const override;
    [[nodiscard]] std::string readableText(const std::string& mail) const override;
    [[nodiscard]] EngineText answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                    const std::string& question) const override;
};

} // namespace quillmate::server
