#pragma once

#include "base/Result.h"
#include "server/store/ThreadMessage.h"

#include <string>
#include <vector>

namespace quillmate::server
{

/// Why a text could not be written.
struct EngineFailure {
    int status = 502;          ///< the HTTP status for the client
    std::string sentence;      ///< what is wrong and what to do, for the user and the log
    int retryAfterSeconds = 0; ///< when to try again; 0 where that is not known
};
using EngineText = Result<std::string, EngineFailure>;

/// What writes the service's texts. All texts are UTF-8; a `mail` is a message's source after its header block,
/// transfer encodings and parts included, or plain text. Calls may come on several threads at once.
class Engine
{
public:
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    virtual ~Engine() = default;

    [[nodiscard]] virtual EngineText summarize(const std::string& mail) const = 0;
    /// A draft of a reply to the message, signed with the name unless that is empty.
    [[nodiscard]] virtual EngineText reply(const std::string& mail, const std::string& userName) const = 0;
    /// The text that a chat about the message is about; empty when there is none.
    [[nodiscard]] virtual std::string readableText(const std::string& mail) const = 0;
    /// The answer to a question about a text that `readableText` gave, after the chat's earlier turns, oldest first.
    [[nodiscard]] virtual EngineText answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                            const std::string& question) const = 0;

    /// Has the texts that are being written, and those asked for later, fail without delay, where they would take
    /// seconds. Any thread.
    virtual void end() {}
};

} // namespace quillmate::server
