#pragma once

#include "localservice/ThreadMessage.h"

#include <string>
#include <vector>

namespace quillmate::localservice
{

/// What writes the service's texts. All texts are UTF-8; a `mail` is a message's source after its header block,
/// transfer encodings and parts included, or plain text. Calls may come on several threads at once.
class Engine
{
public:
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    virtual ~Engine() = default;

    [[nodiscard]] virtual std::string summarize(const std::string& mail) const = 0;
    /// A draft of a reply to the message, signed with the name unless that is empty.
    [[nodiscard]] virtual std::string reply(const std::string& mail, const std::string& userName) const = 0;
    /// The text that a chat about the message is about; empty when there is none.
    [[nodiscard]] virtual std::string readableText(const std::string& mail) const = 0;
    /// The answer to a question about a text that `readableText` gave, after the chat's earlier turns, oldest first.
    [[nodiscard]] virtual std::string answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                             const std::string& question) const = 0;
};

} // namespace quillmate::localservice
