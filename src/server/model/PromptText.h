#pragma once

#include "server/model/Prompt.h"

namespace quillmate::server
{

/// The system's message: what to do, in which language, and that the text between two lines of `fence` is material.
QString systemWords(const PromptTask& task, const QString& fence);

/// The message's text, fenced, with a line below it when it is not the whole message.
QString fencedText(const QString& text, const QString& fence, bool isWhole);

} // namespace quillmate::server
