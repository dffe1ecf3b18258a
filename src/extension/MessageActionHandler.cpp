#include "extension/MessageActionHandler.h"

#include "extension/ExtractBody.h"
#include "state/ReplyEmailManager.h"

namespace quillmate
{
namespace
{

constexpr int red = 4; // The platform's number.

} // namespace

void MessageActionHandler::decideActionForMessage(const MEMessage& message, const Completion& completion)
{
    if (const auto body = message.rawData ? extractBody(*message.rawData) : std::nullopt) {
        ReplyEmailManager::shared().update(
            [content = std::string(*body)](ReplyEmail& record) { record.content = content; });
    }
    if (message.subject.find("Mars") == std::string::npos) {
        completion(std::nullopt);
        return;
    }
    completion(MEMessageActionDecision::decisionApplyingAction(MEMessageAction::setBackgroundColorAction(red)));
}

} // namespace quillmate
