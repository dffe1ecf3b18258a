#pragma once

#include "server/engine/Engine.h"

#include <QString>

namespace quillmate::server
{

/// How much of a message's text is looked at, so that the time for one of any size stays bounded.
constexpr qsizetype consideredCharacters = 200'000;
/// The text's beginning of at most that length, without half a character at its end.
QString considered(const QString& text);

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
