#include "localservice/engine/Tone.h"

#include <QRegularExpression>

namespace quillmate::localservice
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
    constexpr auto options = QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption;
    bool familiar = false;
    const QString sample = text.left(lookedAt);
    if (language == Language::German) {
        static const QRegularExpression du(QStringLiteral("\\b(du|dich|dir|dein(e[mnrs]?)?|euch)\\b"), options);
        // At the start of a sentence "Sie" may be she or they.
        static const QRegularExpression sie(QStringLiteral("[^\\s.!?:]\\s+(Sie|Ihnen|Ihr(e[mnrs]?)?)\\b"),
                                            QRegularExpression::UseUnicodePropertiesOption);
        familiar = has(sample, du) && !has(sample, sie);
    } else if (language == Language::French) {
        static const QRegularExpression tu(QStringLiteral("\\b(tu|toi|ton|ta|tes|t['’]\\p{L}+)\\b"), options);
        static const QRegularExpression vous(QStringLiteral("\\b(vous|votre|vos)\\b"), options);
        familiar = has(sample, tu) && !has(sample, vous);
    } else if (language == Language::Spanish) {
        static const QRegularExpression tuteo(
            QStringLiteral("\\b(tú|tus?|te|ti|contigo|puedes|podrías|quieres|tienes|vienes|sabes)\\b"), options);
        static const QRegularExpression usted(QStringLiteral("\\b(usted(es)?|ud|uds)\\b"), options);
        familiar = has(sample, tuteo) && !has(sample, usted);
    }
    return familiar ? Tone::Familiar : Tone::Formal;
}

} // namespace quillmate::localservice
