#include "state/SettingsKeys.h"

namespace quillmate::SettingsKeys
{
namespace
{

std::string orCompose(const MessageId& messageId)
{
    return messageId.value_or("compose");
}

} // namespace

std::string summarizeResponse(const MessageId& messageId)
{
    return "summarizeResponse " + orCompose(messageId);
}

std::string generateResponse(const MessageId& messageId)
{
    return "generateResponse " + orCompose(messageId);
}

std::string summarizeFlag(const MessageId& messageId)
{
    return messageId.value_or("") + "_summarize";
}

std::string generateResponseFlag(const MessageId& messageId)
{
    return messageId.value_or("") + "_generateResponse";
}

std::string fallbackContent(const MessageId& messageId)
{
    return (messageId ? "Optional(\"" + *messageId + "\")" : "nil") + " fallbackContent";
}

std::string chatHistory(const MessageId& messageId)
{
    return "reply " + orCompose(messageId);
}

std::string unreadable(const std::string& key)
{
    return key + " unreadable";
}

} // namespace quillmate::SettingsKeys
