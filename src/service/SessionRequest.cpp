#include "service/ServiceRequests.h"

#include <utility>

namespace quillmate
{
namespace
{

constexpr ReplyTable sessionTableWith(std::string_view parsing)
{
    return {.method = ReplyTable::Method::Get,
            .transport = "Error making GET request: ",
            .body = "No data received",
            .parsing = parsing};
}

/// Null counts as absent. False when the value is of another type.
bool readOptional(const JSONValue& object, std::string_view key, std::optional<std::string>& target)
{
    const JSONValue* value = object.member(key);
    if (!value || value->isNull()) {
        return true;
    }
    if (const auto* text = value->string()) {
        target = *text;
        return true;
    }
    return false;
}

/// The session, or what is wrong with the bytes.
Result<SessionResponse, std::string> decode(std::string_view bytes)
{
    using Decoded = Result<SessionResponse, std::string>;
    const auto parsed = JSONSerialization::jsonObject(bytes, JSONSerialization::Fragments::Allowed);
    if (!parsed) {
        return Decoded::failure("The data isn't valid JSON: " + parsed.error().description);
    }
    if (!parsed.value().object()) {
        return Decoded::failure("The data is not a JSON object.");
    }
    SessionResponse session;
    const auto* id = parsed.value().stringMember("id");
    if (!id) {
        return Decoded::failure("The key \"id\" is missing or its value is not a string.");
    }
    session.id = *id;
    for (const auto& [key, target] :
         {std::pair("access_token", &session.accessToken), std::pair("refresh_token", &session.refreshToken),
          std::pair("login_url", &session.loginURL)}) {
        if (!readOptional(parsed.value(), key, *target)) {
            return Decoded::failure("The value of the key \"" + std::string(key) + "\" is not a string.");
        }
    }
    return session;
}

/// Whether an empty body is one that cannot be read, or none at all.
enum class EmptyBody { IsUnreadable, IsNone };

/// As a whole: whatever is wrong with the body is a failure to parse it.
Reading<SessionResponse> readAs(const ServiceReply& reply, const ReplyTable& table, EmptyBody empty)
{
    using Read = Result<SessionResponse, ReplyFailure>;
    std::vector<std::string> lines;
    const auto body = readBody(reply, table, lines);
    if (!body) {
        return {Read::failure(body.error()), std::move(lines)};
    }
    if (empty == EmptyBody::IsNone && body.value()->empty()) {
        ReplyFailure failure = failAt(ReplyStage::Body, table, lines);
        return {Read::failure(std::move(failure)), std::move(lines)};
    }
    auto session = decode(*body.value());
    if (!session) {
        ReplyFailure failure = failAt(ReplyStage::Parsing, table, lines, session.error());
        return {Read::failure(std::move(failure)), std::move(lines)};
    }
    return {std::move(session).value()};
}

} // namespace

BuiltRequest buildSessionRequest(const std::string& url)
{
    const auto parsed = URL::parseAbsolute(url);
    return parsed ? URLRequest{*parsed} : BuiltRequest::failure("Invalid URL");
}

Reading<SessionResponse> readSession(const ServiceReply& reply)
{
    return readAs(reply, sessionTableWith("Error parsing JSON response: "), EmptyBody::IsUnreadable);
}

Reading<SessionResponse> readPoll(const ServiceReply& reply)
{
    return readAs(reply, sessionTableWith("Error parsing access token JSON response: "), EmptyBody::IsNone);
}

} // namespace quillmate
