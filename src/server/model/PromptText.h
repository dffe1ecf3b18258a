#pragma once

#include "server/model/Prompt.h"

namespace quillmate::server
{

/// The system's message: what to do, in which language, and that the text between two lines of `fence` is material.
QString systemWords(const PromptTask& task, const QString& fence);

/// The message's text, fenced, with a line below it when it is not the whole message.
QString fencedText(const QString& text, const QString& fence, bool isWhole);

/// The text with the control tokens of chat templates broken by an invisible U+200B ("<|im_end|>", "</s>", "[INST]",
/// "<start_of_turn>" and kin): some servers take them for their own wherever they stand, and a message could end its
/// turn with one. Covers the templates in wide use, not all there may be.
QString withoutTemplateTokens(QString text);

} // namespace quillmate::server
