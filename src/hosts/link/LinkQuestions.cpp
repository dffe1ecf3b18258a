#include "hosts/link/LinkQuestions.h"

#include "hosts/link/LinkAnswers.h"

namespace quillmate
{
namespace
{

/// Puts one question to the handler it is for. The handlers call back before they return.
class Asking
{
public:
    Asking(const JSONNumber& request, MEExtension& extension)
        : m_request(request)
        , m_extension(extension)
    {
    }

    std::string operator()(const DecideActionForMessage& question) const
    {
        std::optional<MEMessageActionDecision> decided;
        m_extension.handlerForMessageActions()->decideActionForMessage(
            *question.message, [&decided](const auto& decision) { decided = decision; });
        return writeMessageActionDecision(m_request, decided);
    }

    std::string operator()(const ContentRulesJSON&) const
    {
        return writeContentRules(m_request, m_extension.handlerForContentBlocker()->contentRulesJSON());
    }

    std::string operator()(const GetEncodingStatus& question) const
    {
        MEOutgoingMessageEncodingStatus status;
        m_extension.handlerForMessageSecurity()->getEncodingStatus(
            *question.message, [&status](MEOutgoingMessageEncodingStatus told) { status = std::move(told); });
        return writeEncodingStatus(m_request, status);
    }

    std::string operator()(const EncodeMessage& question) const
    {
        MEMessageEncodingResult result;
        m_extension.handlerForMessageSecurity()->encodeMessage(
            *question.message, [&result](MEMessageEncodingResult told) { result = std::move(told); });
        return writeEncodingResult(m_request, result);
    }

    std::string operator()(const DecodedMessage& question) const
    {
        return writeDecodedMessage(m_request, m_extension.handlerForMessageSecurity()->decodedMessage(question.data));
    }

private:
    const JSONNumber& m_request;
    MEExtension& m_extension;
};

} // namespace

std::string answerTo(const LinkQuestion& question, MEExtension& extension)
{
    return std::visit(Asking(question.request, extension), question.asked);
}

} // namespace quillmate
