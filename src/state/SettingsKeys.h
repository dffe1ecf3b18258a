#pragma once

#include <optional>
#include <string>

namespace quillmate::SettingsKeys
{

/// Every key of the settings store is built here and nowhere else. A message id that is absent is not an empty one.
using MessageId = std::optional<std::string>;

/// Text: the chosen environment.
constexpr auto selectedApiEndpoint = "selectedApiEndpoint";
/// Boolean: somebody has signed in and not logged out since; the token itself is never stored.
constexpr auto hasSignedIn = "hasSignedIn";

/// Text: the last summary shown for the message.
[[nodiscard]] std::string summarizeResponse(const MessageId& messageId);
/// Text: the last reply generated for the message.
[[nodiscard]] std::string generateResponse(const MessageId& messageId);
/// Boolean: a summary has arrived for the message.
[[nodiscard]] std::string summarizeFlag(const MessageId& messageId);
/// Boolean: a reply has been generated for the message.
[[nodiscard]] std::string generateResponseFlag(const MessageId& messageId);
/// Text: the content last sent or pasted for the message. The id stands as an optional value prints, `Optional("m1")`
/// or `nil`.
[[nodiscard]] std::string fallbackContent(const MessageId& messageId);
/// Data: the chat history of the message.
[[nodiscard]] std::string chatHistory(const MessageId& messageId);
/// Data: what was stored under the key and could not be read when something else took its place.
[[nodiscard]] std::string unreadable(const std::string& key);

} // namespace quillmate::SettingsKeys
