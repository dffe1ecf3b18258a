#pragma once

#include <QString>

namespace quillmate::server
{

/// The text with the control tokens of chat templates broken by an invisible U+200B ("<|im_end|>", "</s>", "[INST]",
/// "<start_of_turn>" and kin): some servers take them for their own wherever they stand, and a message could end its
/// turn with one. Covers the templates in wide use, not all there may be.
QString withoutTemplateTokens(QString text);

} // namespace quillmate::server
