#include "hosts/link/LinkAnswers.h"

#include <QByteArray>

namespace quillmate
{
namespace
{

JSONValue base64(const std::string& bytes)
{
    const auto raw = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    return raw.toBase64().toStdString();
}

JSONValue textOrNull(const std::optional<std::string>& text)
{
    return text ? JSONValue(*text) : JSONValue();
}

JSONValue actionName(MEMessageAction::Kind kind)
{
    switch (kind) {
    case MEMessageAction::Kind::SetBackgroundColor:
        return "setBackgroundColor";
    }
    return nullptr;
}

/// An answer of the type with the members behind its number. A text of the extension's that is not UTF-8 cannot be
/// written, and the other end is told so.
std::string answer(const char* type, const JSONNumber& request, JSONObject members)
{
    JSONObject whole{{"type", type}, {"request", request}};
    for (auto& member : members) {
        whole.push_back(std::move(member));
    }
    auto encoded = JSONEncoder::encode(JSONValue(std::move(whole)));
    return encoded ? std::move(encoded).value() : writeLinkError({"The answer cannot be written.", request});
}

} // namespace

std::string writeMessageActionDecision(const JSONNumber& request,
                                       const std::optional<MEMessageActionDecision>& decision)
{
    JSONValue written;
    if (decision) {
        written = JSONObject{{"action", actionName(decision->action.kind)},
                             {"color", JSONNumber{std::to_string(decision->action.color)}}};
    }
    return answer("messageActionDecision", request, {{"decision", std::move(written)}});
}

std::string writeContentRules(const JSONNumber& request, const std::string& rules)
{
    return answer("contentRulesJSON", request, {{"data", base64(rules)}});
}

std::string writeEncodingStatus(const JSONNumber& request, const MEOutgoingMessageEncodingStatus& status)
{
    JSONArray failing;
    for (const MEEmailAddress& address : status.addressesFailingEncryption) {
        failing.emplace_back(JSONObject{{"addressString", textOrNull(address.addressString)}});
    }
    return answer("encodingStatus", request,
                  {{"canSign", status.canSign},
                   {"canEncrypt", status.canEncrypt},
                   {"securityError", textOrNull(status.securityError)},
                   {"addressesFailingEncryption", std::move(failing)}});
}

std::string writeEncodingResult(const JSONNumber& request, const MEMessageEncodingResult& result)
{
    return answer("messageEncodingResult", request,
                  {{"encodedMessage", result.encodedMessage ? base64(*result.encodedMessage) : JSONValue()},
                   {"signingError", textOrNull(result.signingError)},
                   {"encryptionError", textOrNull(result.encryptionError)}});
}

std::string writeDecodedMessage(const JSONNumber& request, const std::optional<MEDecodedMessage>& message)
{
    return answer("decodedMessage", request, {{"message", message ? base64(message->data) : JSONValue()}});
}

std::string writeLinkError(const LinkError& error)
{
    JSONObject answer{{"type", "error"}, {"message", error.message}};
    if (!error.request.isNull()) {
        answer.emplace_back("request", error.request);
    }
    const auto encoded = JSONEncoder::encode(JSONValue(std::move(answer)));
    return encoded ? encoded.value() : R"({"type":"error","message":"The frame could not be obeyed."})";
}

} // namespace quillmate
