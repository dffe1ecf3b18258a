#pragma once

#include "localservice/engine/Engine.h"
#include "localservice/model/ModelClient.h"

#include <optional>

namespace quillmate::localservice
{

/// What is wrong with a response whose body is not even worth reading, for the user: a sentence of ours, never the
/// server's words. Nothing for a status from 200 to 299.
std::optional<EngineFailure> failureOf(const ModelResponse& response);

} // namespace quillmate::localservice
