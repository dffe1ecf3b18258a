#include "extension/RepliedMessageExtraction.h"

#include "extension/ExtractBody.h"
#include "platform/foundation/text/print.h"
#include "platform/mailkit/MEComposeSession.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{
namespace
{

constexpr std::string_view arrivalTimeHeader = "x-ms-exchange-crosstenant-originalarrivaltime";
constexpr std::string_view messageIdHeader = "message-id";

SharedText bodyOf(const MEComposeContext& context)
{
    const auto message = context.originalMessage();
    const auto body = message && message->rawData ? extractBody(*message->rawData) : std::nullopt;
    if (!body) {
        return {};
    }
    printPrivate("SESSSION FROM CONTENT EMAIL", *body);
    return message->rawData->part(*body);
}

std::optional<std::string> subjectOf(const MEComposeContext& context)
{
    const auto message = context.originalMessage();
    if (!message) {
        print("No subject found in the original message.");
        return std::nullopt;
    }
    return message->subject;
}

std::string addressOf(const MEComposeContext& context)
{
    const auto message = context.originalMessage();
    if (!message || !message->fromAddress.addressString) {
        print("No email address found in the original message.");
        return {};
    }
    printPrivate("getting email address from apple", *message->fromAddress.addressString);
    return *message->fromAddress.addressString;
}

std::optional<std::string> firstValue(const MEMessage::Headers& headers, std::string_view name)
{
    const auto found = headers.find(std::string(name));
    return found == headers.end() || found->second.empty() ? std::nullopt : std::optional(found->second.front());
}

/// The date, and the id, empty when there is none.
std::string readHeaders(const MEComposeContext& context, std::optional<std::string>& date)
{
    const auto message = context.originalMessage();
    if (!message || !message->headers) {
        print("No headers found in the original message.");
        return {};
    }
    date = firstValue(*message->headers, arrivalTimeHeader);
    if (!date) {
        print("Date header not found");
    }
    const auto messageId = firstValue(*message->headers, messageIdHeader);
    if (!messageId) {
        print("Message id not found in header");
    }
    return messageId.value_or("");
}

/// An empty text counts as none; says so.
template<typename Text>
std::optional<Text> presentOr(Text text, const char* emptyLine)
{
    if (text.empty()) {
        print(emptyLine);
        return std::nullopt;
    }
    return text;
}

void refreshUserDetails()
{
    print("CURRENT API URL IN API MANAGER", APIManager::shared().apiURL());
    const std::string url = APIManager::shared().apiURL() + "/me";
    const std::string accessToken = AuthManager::shared().accessToken.get().value_or("");
    if (!accessToken.empty()) {
        HandleApiRequests::fetchUserDetails(url, accessToken, [](UserDetailsManager&) {});
    }
}

} // namespace

ReplyEmail extractRepliedMessage(const MEComposeSession& session)
{
    const bool hasToken = AuthManager::shared().accessToken.with([](const auto& token) { return token.has_value(); });
    const MEComposeContext& context = session.composeContext();

    SharedText body = bodyOf(context);
    ReplyEmail record;
    record.subject = subjectOf(context);
    std::string address = addressOf(context);
    std::string messageId = readHeaders(context, record.date);
    record.email = presentOr(std::move(address), "Email address is empty.");
    record.content = presentOr(std::move(body), "Message content is empty.");
    record.messageId = presentOr(std::move(messageId), "Session message id is empty.");
    ReplyEmail old = record; // Freed outside the lock.
    ReplyEmailManager::shared().update([&old](ReplyEmail& shared) {
        std::swap(shared, old);
        if (!shared.subject) {
            shared.subject = std::move(old.subject);
        }
        if (!shared.date) {
            shared.date = std::move(old.date);
        }
    });

    if (!hasToken) {
        print("Acess token is empty. User need to be logged in.");
    }
    refreshUserDetails();
    return record;
}

} // namespace quillmate
