#include "server/model/TemplateTokens.h"

#include <QRegularExpression>

namespace quillmate::server
{

QString withoutTemplateTokens(QString text)
{
    // Each match is the one character after which a token is broken.
    static const QRegularExpression token(QStringLiteral(
        "(<(?=[|｜])|[|｜](?=>)|" // ChatML, Llama 3, Phi, DeepSeek
        "<(?=/?(?:s|bos|eos|sop|eop|pad|unk|think|(?:start|end)_of_[a-z]+|tool_[a-z]+|unused[0-9]+)>)|"
        "<(?=</?SYS>>)|\\[(?=/?(?:INST|gMASK|SYSTEM_PROMPT|TOOL_[A-Z]+|AVAILABLE_TOOLS)\\]))")); // Llama 2, Mistral,
                                                                                                 // GLM
    return text.replace(token, QStringLiteral("\\1\u200B"));
}

} // namespace quillmate::server
