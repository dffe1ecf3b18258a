#include "hosts/link/LinkAnswers.h"

#include "platform/mailkit/MEHandlers.h"
#include "state/APIManager.h"

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

/// The host that people mean by the service of their organisation.
std::string liveHost()
{
    constexpr std::string_view scheme = "https://";
    for (const ServiceEnvironment& service : serviceEnvironments()) {
        if (service.key == "live") {
            return std::string(service.baseURL.substr(scheme.size()));
        }
    }
    return {};
}

std::string answerOn(const ServiceOffer& service, const JSONNumber& request)
{
    return answer("service", request,
                  {{"choice", nameOf(service.choice)},
                   {"host", liveHost()},
                   {"fixed", service.isFixed},
                   {"offered", service.hasRemote}});
}

/// Stores the choice and takes note of it. The failure is a sentence.
Result<void, std::string> choose(const std::string& name, ServiceOffer& service)
{
    const auto choice = serviceChoiceNamed(name);
    if (!choice) {
        return Failure(std::string("The service can be \"local\" or \"remote\"."));
    }
    if (service.isFixed) {
        return Failure(std::string("QUILLMATE_SERVICE or QUILLMATE_CONNECT_TO says which service is asked: unset it to "
                                   "choose."));
    }
    if (*choice == ServiceChoice::Remote && !service.hasRemote) {
        return Failure(std::string("This build has no service but that of this computer."));
    }
    auto stored = storeServiceChoice(*choice);
    if (stored) {
        service.choice = *choice;
    }
    return stored;
}

/// Puts one question to the handler it is for, and writes what it says: bytes as base64 (RFC 4648). The handlers call
/// back before they return.
class Asking
{
public:
    Asking(const JSONNumber& request, MEExtension& extension, ServiceOffer& service)
        : m_request(request)
        , m_extension(extension)
        , m_service(service)
    {
    }

    std::string operator()(const DecideActionForMessage& question) const
    {
        JSONValue written;
        m_extension.handlerForMessageActions()->decideActionForMessage(
            *question.message, [&written](const std::optional<MEMessageActionDecision>& decision) {
                if (decision) {
                    written = JSONObject{{"action", actionName(decision->action.kind)},
                                         {"color", JSONNumber{std::to_string(decision->action.color)}}};
                }
            });
        return answer("messageActionDecision", m_request, {{"decision", std::move(written)}});
    }

    std::string operator()(const ContentRulesJSON&) const
    {
        const std::string rules = m_extension.handlerForContentBlocker()->contentRulesJSON();
        return answer("contentRulesJSON", m_request, {{"data", base64(rules)}});
    }

    std::string operator()(const GetEncodingStatus& question) const
    {
        MEOutgoingMessageEncodingStatus status;
        m_extension.handlerForMessageSecurity()->getEncodingStatus(
            *question.message, [&status](MEOutgoingMessageEncodingStatus told) { status = std::move(told); });
        JSONArray failing;
        for (const MEEmailAddress& address : status.addressesFailingEncryption) {
            failing.emplace_back(JSONObject{{"addressString", textOrNull(address.addressString)}});
        }
        return answer("encodingStatus", m_request,
                      {{"canSign", status.canSign},
                       {"canEncrypt", status.canEncrypt},
                       {"securityError", textOrNull(status.securityError)},
                       {"addressesFailingEncryption", std::move(failing)}});
    }

    std::string operator()(const EncodeMessage& question) const
    {
        MEMessageEncodingResult result;
        m_extension.handlerForMessageSecurity()->encodeMessage(
            *question.message, [&result](MEMessageEncodingResult told) { result = std::move(told); });
        return answer("messageEncodingResult", m_request,
                      {{"encodedMessage", result.encodedMessage ? base64(*result.encodedMessage) : JSONValue()},
                       {"signingError", textOrNull(result.signingError)},
                       {"encryptionError", textOrNull(result.encryptionError)}});
    }

    std::string operator()(const DecodedMessage& question) const
    {
        const auto message = m_extension.handlerForMessageSecurity()->decodedMessage(question.data);
        return answer("decodedMessage", m_request, {{"message", message ? base64(message->data) : JSONValue()}});
    }

    std::string operator()(const ProgramVersion&) const
    {
        return answer("programVersion", m_request, {{"version", QUILLMATE_VERSION}});
    }

    std::string operator()(const Service&) const { return answerOn(m_service, m_request); }

    std::string operator()(const ChooseService& question) const
    {
        const auto chosen = choose(question.choice, m_service);
        return chosen ? answerOn(m_service, m_request) : writeLinkError({chosen.error(), m_request});
    }

private:
    const JSONNumber& m_request;
    MEExtension& m_extension;
    ServiceOffer& m_service;
};

} // namespace

std::string LinkAnswers::answerTo(const LinkQuestion& question)
{
    return std::visit(Asking(question.request, m_extension, m_service), question.asked);
}

std::string writeStatus(const std::optional<std::string>& problem)
{
    const auto encoded = JSONEncoder::encode(JSONValue(JSONObject{
        {"type", "status"}, {"serviceReachable", !problem.has_value()}, {"reason", problem.value_or(std::string())}}));
    return encoded ? encoded.value() : R"({"type":"status","serviceReachable":false,"reason":""})";
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
