#pragma once

#include "server/engine/BuiltinEngine.h"
#include "server/engine/Engine.h"
#include "server/model/ModelClient.h"
#include "server/model/ModelContext.h"
#include "server/model/Prompt.h"

#include <QDeadlineTimer>

#include <functional>
#include <string>

namespace quillmate::server
{

/// Has its texts written by a language model behind an OpenAI-compatible service. What a model's context has no room
/// for is left out, and the log says so. A server that reads less than it was sent, or refuses it as too long, is asked
/// once more with less. Of a message the first 200,000 characters are looked at. A message without any text gets what
/// the built-in engine has for it.
class OpenAiEngine : public Engine
{
public:
    struct Settings {
        ModelAddress address;
        std::string model;
        std::string key;             ///< empty: none
        qsizetype contextTokens = 0; ///< 0: asked for
        ModelLimits limits;
    };
    /// Takes one line, never with a part of a message or the key in it. Called on several threads.
    using Log = std::function<void(const std::string&)>;

    OpenAiEngine(Settings settings, Log log);

    [[nodiscard]] EngineText summarize(const std::string& mail) const override;
    [[nodiscard]] EngineText reply(const std::string& mail, const std::string& userName) const override;
    /// With its quotes: they are left out only where there is no room for them.
    [[nodiscard]] std::string readableText(const std::string& mail) const override;
    [[nodiscard]] EngineText answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                    const std::string& question) const override;
    void end() override { m_client.end(); }

private:
    struct Attempt {
        EngineText text;
        std::string tooLong = {};  ///< how the server showed that it was sent too much, for the log; else empty
        qsizetype nextContext = 0; ///< and for which context to ask it again
    };
    [[nodiscard]] EngineText write(const PromptTask& task) const;
    [[nodiscard]] Attempt attempt(const Prompt& prompt, QDeadlineTimer end) const;

    const Settings m_settings;
    const Log m_log;
    const BuiltinEngine m_builtin;
    // Talking to the server changes nothing that a caller sees; both take calls from several threads.
    mutable ModelClient m_client;
    mutable ModelContext m_context;
};

} // namespace quillmate::server
