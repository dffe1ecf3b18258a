#include "extension/MessageActionHandler.h"

#include "extension/ExtractBody.h"
#include "state/ReplyEmailManager.h"

#include <optional>
#include <string>

namespace quillmate
{
namespace
{

constexpr int red = 4; // The platform's number.

} // namespace

void MessageActionHandler::decideActionForMessage(const MEMessage& message, const Completion& completion)
{
    if (const auto body = message.rawData ? extractBody(*message.rawData) : std::nullopt) {
        std::optional content = message.rawData->part(*body);
        // What it replaces may be large; it is freed outside the lock.
        ReplyEmailManager::shared().update([&content](ReplyEmail& record) { record.content.swap(content); });
    }
    if (message.subject.find("Mars") == std::string::npos) {
        completion(std::nullopt);
        return;
    }
    completion(MEMessageActionDecision::decisionApplyingAction(MEMessageAction::setBackgroundColorAction(red)));
}

} // namespace quillmate
