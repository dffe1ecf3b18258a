#pragma once

#include "localservice/engine/Engine.h"

namespace quillmate::localservice
{

/// What an engine wrote; an engine that failed fails the test with an exception.
inline std::string written(const EngineText& text)
{
    return std::get<std::string>(text);
}

} // namespace quillmate::localservice
