#pragma once

#include "server/engine/Engine.h"
#include "server/model/ModelClient.h"

namespace quillmate::server
{

/// What to tell the user of it: a sentence of ours, never the server's words.
EngineFailure failureOf(ModelProblem problem);
/// The same for a response that is no success. `hasKey`: one was sent.
EngineFailure failureOf(const ModelResponse& response, bool hasKey);

} // namespace quillmate::server
