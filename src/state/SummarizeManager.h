#pragma once

#include "state/SummarizedResponse.h"
#include "state/Synchronized.h"

#include <map>
#include <string>

namespace quillmate
{

/// What the summary requests and the panel share. Any thread.
class SummarizeManager
{
public:
    static SummarizeManager& shared()
    {
        static SummarizeManager manager;
        return manager;
    }

    /// Every summary received, by the id of the message it was asked for (empty when that had none).
    Synchronized<std::map<std::string, SummarizedResponse>> responses;

private:
    SummarizeManager() = default;
};

} // namespace quillmate
