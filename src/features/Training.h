#pragma once

#include <memory>
#include <string>

namespace quillmate
{

class ButtonStateManager;

/// Sends the manager's message and the reply that is shown to the service as training data. Failures are only logged.
/// Main thread.
void submitTrainingData(const std::shared_ptr<ButtonStateManager>& manager);

/// Shows what the service said of it. Main thread.
void deliverTrainingResult(const std::string& message, ButtonStateManager& manager);

} // namespace quillmate
