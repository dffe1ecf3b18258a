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

/// What one extraction found. A subject or a date that is absent leaves what the record held; the others replace it.
struct Found {
    std::optional<std::string> subject;
    std::optional<std::string> date;
    std::string address;
    std::string body;
    std::string messageId;
};

std::string bodyOf(const MEComposeContext& context)
{
    const auto message = context.originalMessage();
    const auto body = message && message->rawData ? extractBody(*message->rawData) : std::nullopt;
    if (!body) {
        return {};
    }
    print("SESSSION FROM CONTENT EMAIL", *body);
    return std::string(*body);
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
    print("getting email address from apple", *message->fromAddress.addressString);
    return *message->fromAddress.addressString;
}

std::optional<std::string> firstValue(const MEMessage::Headers& headers, std::string_view name)
{
    const auto found = headers.find(std::string(name));
    return found == headers.end() || found->second.empty() ? std::nullopt : std::optional(found->second.front());
}

void readHeaders(const MEComposeContext& context, Found& found)
{
    const auto message = context.originalMessage();
    if (!message || !message->headers) {
        print("No headers found in the original message.");
        return;
    }
    found.date = firstValue(*message->headers, arrivalTimeHeader);
    if (!found.date) {
        print("Date header not found");
    }
    const auto messageId = firstValue(*message->headers, messageIdHeader);
    if (!messageId) {
        print("Message id not found in header");
    }
    found.messageId = messageId.value_or("");
}

/// An empty text counts as none; says so.
std::optional<std::string> presentOr(std::string text, const char* emptyLine)
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

void extractRepliedMessage(const MEComposeSession& session)
{
    const bool hasToken = AuthManager::shared().accessToken.with([](const auto& token) { return token.has_value(); });
    const MEComposeContext& context = session.composeContext();

    Found found;
    found.body = bodyOf(context);
    found.subject = subjectOf(context);
    found.address = addressOf(context);
    readHeaders(context, found);

    ReplyEmail record;
    record.email = presentOr(std::move(found.address), "Email address is empty.");
    record.content = presentOr(std::move(found.body), "Message content is empty.");
    record.messageId = presentOr(std::move(found.messageId), "Session message id is empty.");
    // One step, so that nobody sees half of this message and half of the one before.
    ReplyEmailManager::shared().update([&](ReplyEmail& shared) {
        record.subject = found.subject ? std::move(found.subject) : std::move(shared.subject);
        record.date = found.date ? std::move(found.date) : std::move(shared.date);
        std::swap(shared, record); // The old one is freed outside the lock.
    });

    if (!hasToken) {
        print("Acess token is empty. User need to be logged in.");
    }
    refreshUserDetails();
}

} // namespace quillmate
