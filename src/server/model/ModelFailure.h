#pragma once

#include "server/engine/Engine.h"
#include "server/model/ModelClient.h"

namespace quillmate::server
{

/// The status of a failure that is the model's server's (RFC 9110, 15.6.3).
constexpr int badGateway = 502;

/// What to tell the user of it: a sentence of ours, never the server's words.
EngineFailure failureOf(ModelProblem problem);
/// The same for a response that is no success. `hasKey`: one was sent.
EngineFailure failureOf(const ModelResponse& response, bool hasKey);

} // namespace quillmate::server
