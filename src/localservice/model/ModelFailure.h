#pragma once

#include "localservice/engine/Engine.h"
#include "localservice/model/ModelClient.h"

#include <optional>

namespace quillmate::localservice
{

/// What is wrong with a response that is no success, for the user: a sentence of ours, never the
/// server's words. Nothing for a status from 200 to 299. `hasKey`: one was sent.
std::optional<EngineFailure> failureOf(const ModelResponse& response, bool hasKey);

} // namespace quillmate::localservice
