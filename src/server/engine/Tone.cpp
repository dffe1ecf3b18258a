#include "server/engine/Tone.h"

#include "server/engine/WordPatterns.h"

namespace quillmate::server
{

namespace
{

constexpr qsizetype lookedAt = 20'000;

bool has(const QString& text, const QRegularExpression& expression)
{
    return expression.match(text).hasMatch();
}

} // namespace

Tone toneOf(const QString& text, Language language)
{
    bool familiar = false;
    const QString sample = text.left(lookedAt);
    if (language == Language::German) {
        static const auto du = wordPattern(QStringLiteral("\\b(du|dich|dir|dein(e[mnrs]?)?|euch)\\b"));
        // At the start of a sentence "Sie" may be she or they.
        static const QRegularExpression sie(QStringLiteral("[^\\s.!?:]\\s+(Sie|Ihnen|Ihr(e[mnrs]?)?)\\b"),
                                            QRegularExpression::UseUnicodePropertiesOption);
        familiar = has(sample, du) && !has(sample, sie);
    } else if (language == Language::French) {
        static const auto tu = wordPattern(QStringLiteral("\\b(tu|toi|ton|ta|tes|t['’]\\p{L}+)\\b"));
        static const auto vous = wordPattern(QStringLiteral("\\b(vous|votre|vos)\\b"));
        familiar = has(sample, tu) && !has(sample, vous);
    } else if (language == Language::Spanish) {
        static const auto tuteo =
            wordPattern(QStringLiteral("\\b(tú|tus?|te|ti|contigo|puedes|podrías|quieres|tienes|vienes|sabes)\\b"));
        static const auto usted = wordPattern(QStringLiteral("\\b(usted(es)?|ud|uds)\\b"));
        familiar = has(sample, tuteo) && !has(sample, usted);
    }
    return familiar ? Tone::Familiar : Tone::Formal;
}

} // namespace quillmate::server
