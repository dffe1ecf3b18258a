#pragma once

#include "server/engine/Engine.h"

namespace quillmate::server
{

/// What an engine wrote, or its failure marked as one.
inline std::string written(const EngineText& text)
{
    return text ? text.value() : "failed: " + text.error().sentence;
}

} // namespace quillmate::server
