#include "state/SessionResponse.h"

namespace quillmate
{
namespace
{

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

} // namespace

Result<SessionResponse, JSONError> SessionResponse::decode(std::string_view bytes)
{
    using Decoded = Result<SessionResponse, JSONError>;
    const auto parsed = JSONSerialization::jsonObject(bytes, JSONSerialization::Fragments::Allowed);
    if (!parsed) {
        return Decoded::failure({"The data isn't valid JSON: " + parsed.error().description});
    }
    if (!parsed.value().object()) {
        return Decoded::failure({"The data is not a JSON object."});
    }
    SessionResponse session;
    const auto* id = parsed.value().stringMember("id");
    if (!id) {
        return Decoded::failure({"The key \"id\" is missing or its value is not a string."});
    }
    session.id = *id;
    for (const auto& [key, target] :
         {std::pair("access_token", &session.accessToken), std::pair("refresh_token", &session.refreshToken),
          std::pair("login_url", &session.loginURL)}) {
        if (!readOptional(parsed.value(), key, *target)) {
            return Decoded::failure({"The value of the key \"" + std::string(key) + "\" is not a string."});
        }
    }
    return session;
}

} // namespace quillmate
