#include "features/Training.h"

#include "features/ButtonStateManager.h"
#include "features/RepliedMessage.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/UserDetailsManager.h"

#include <utility>

namespace quillmate
{

void submitTrainingData(const std::shared_ptr<ButtonStateManager>& manager)
{
    const auto url = URL::parseAbsolute(currentApiURL() + "/create-training-data");
    if (!url) {
        print("Invalid URL");
        return;
    }
    const std::string accessToken = AuthManager::shared().accessToken.get().value_or("");
    TrainingDataBody body;
    body.email = UserDetailsManager::shared().email();
    body.question = RepliedMessage::withId(manager->messageId()).content.value_or("");
    body.answer = manager->generateResponse().value_or("No response available");
    if (manager->messageId().value_or("").empty()) {
        print("Session message id is nil");
    }
    HandleApiRequests::sendTrainingData(*url, accessToken, body, [weak = std::weak_ptr(manager)](std::string message) {
        DispatchQueue::main().async([weak, message = std::move(message)] {
            if (const auto alive = weak.lock()) {
                deliverTrainingResult(message, *alive);
            }
        });
    });
}

void deliverTrainingResult(const std::string& message, ButtonStateManager& manager)
{
    if (manager.period().isOver()) {
        return;
    }
    manager.announce(message.empty() ? "Failed to submit training data." : "Success: " + message);
}

} // namespace quillmate
