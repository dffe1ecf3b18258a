#include "server/engine/ReplyWords.h"

#include "server/engine/WordPatterns.h"

#include <array>

namespace quillmate::server
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype toneSample = 20'000;

/// The first name, or all that there is where it is a mere initial.
QString shortForm(const PersonName& name)
{
    const bool initial = name.given.size() == 1 || name.given.endsWith(u'.');
    return initial || name.given.isEmpty() ? name.whole() : name.given;
}

QString titled(const QString& title, const QString& name)
{
    return title.isEmpty() ? name : title + u' ' + name;
}

/// "Dr. Marsh", but "Ana" without a title.
QString familyAfterTitle(const PersonName& name, const QString& title)
{
    return title.isEmpty() ? shortForm(name) : titled(title, name.family.isEmpty() ? name.given : name.family);
}

QString frenchForm(const PersonName& name)
{
    // "M. Dupont": the letter is a title here, not a first name's initial.
    if (name.title.isEmpty() && name.given == QStringLiteral("M.") && !name.family.isEmpty()) {
        return QStringLiteral("Monsieur ") + name.family;
    }
    const bool madam = name.title.startsWith(QStringLiteral("Mme")) || name.title.startsWith(QStringLiteral("Mlle"));
    return familyAfterTitle(name, madam ? QStringLiteral("Madame") : name.title);
}

/// How the person is called; a first name alone among familiars.
QString nameIn(Language language, Tone tone, const PersonName& name)
{
    if (tone == Tone::Familiar) {
        return name.family.isEmpty() ? titled(name.title, name.given) : shortForm(name);
    }
    switch (language) {
    case Language::German:
        return titled(name.title, name.whole());
    case Language::French:
        return frenchForm(name);
    case Language::Spanish:
        return name.title.isEmpty() ? shortForm(name) : titled(name.title, name.whole());
    case Language::Japanese:
        return name.family.isEmpty() || name.family[0].script() == QChar::Script_Latin ? name.whole() : name.family;
    case Language::Arabic:
        return name.whole();
    case Language::English:
        break;
    }
    return familyAfterTitle(name, name.title);
}

} // namespace

Tone toneOf(const QString& text, Language language)
{
    bool familiar = false;
    const QString sample = text.left(toneSample);
    if (language == Language::German) {
        static const auto du = wordPattern(QStringLiteral("\\b(du|dich|dir|dein(e[mnrs]?)?|euch)\\b"));
        // At the start of a sentence "Sie" may be she or they.
        static const QRegularExpression sie(QStringLiteral("[^\\s.!?:]\\s+(Sie|Ihnen|Ihr(e[mnrs]?)?)\\b"),
                                            QRegularExpression::UseUnicodePropertiesOption);
        familiar = sample.contains(du) && !sample.contains(sie);
    } else if (language == Language::French) {
        static const auto tu = wordPattern(QStringLiteral("\\b(tu|toi|ton|ta|tes|t['’]\\p{L}+)\\b"));
        static const auto vous = wordPattern(QStringLiteral("\\b(vous|votre|vos)\\b"));
        familiar = sample.contains(tu) && !sample.contains(vous);
    } else if (language == Language::Spanish) {
        static const auto tuteo =
            wordPattern(QStringLiteral("\\b(tú|tus?|te|ti|contigo|puedes|podrías|quieres|tienes|vienes|sabes)\\b"));
        static const auto usted = wordPattern(QStringLiteral("\\b(usted(es)?|ud|uds)\\b"));
        familiar = sample.contains(tuteo) && !sample.contains(usted);
    }
    return familiar ? Tone::Familiar : Tone::Formal;
}

QString greeting(Language language, Tone tone, const std::optional<PersonName>& name)
{
    const QString called = name ? nameIn(language, tone, *name) : QString();
    const bool familiar = tone == Tone::Familiar;
    const QString after = called.isEmpty() ? QString() : u' ' + called;
    switch (language) {
    case Language::German:
        return (familiar ? QStringLiteral("Hallo") : QStringLiteral("Guten Tag")) + after + u',';
    case Language::French:
        return QStringLiteral("Bonjour") + after + u',';
    case Language::Spanish: {
        const QString hello = familiar ? QStringLiteral("Hola") : QStringLiteral("Buenos días");
        return hello + (called.isEmpty() ? QString() : u',' + after) + u':';
    }
    case Language::Japanese:
        return (called.isEmpty() ? QString() : called + QStringLiteral("様\n\n")) +
               QStringLiteral("お世話になっております。");
    case Language::Arabic:
        return QStringLiteral("مرحبًا") + after + u'،';
    case Language::English:
        break;
    }
    return QStringLiteral("Hello") + after + u',';
}

const ReplyPhrases& replyPhrases(Language language, Tone tone)
{
    // In the order of the languages; formal first, which is all that some have. French sets a no-break space before a
    // colon and inside its quotation marks.
    static const std::array<std::array<ReplyPhrases, 2>, 6> all = {{
        {ReplyPhrases{u"Thank you for your message."_s, u"You wrote:"_s, u"About your question:"_s,
                      u"About your questions:"_s, u"[your answer]"_s, u"Kind regards,"_s, u"“"_s, u"”"_s}},
        {ReplyPhrases{u"vielen Dank für Ihre Nachricht."_s, u"Sie haben geschrieben:"_s, u"Zu Ihrer Frage:"_s,
                      u"Zu Ihren Fragen:"_s, u"[Ihre Antwort]"_s, u"Mit freundlichen Grüßen"_s, u"„"_s, u"“"_s},
         ReplyPhrases{u"vielen Dank für deine Nachricht."_s, u"Du hast geschrieben:"_s, u"Zu deiner Frage:"_s,
                      u"Zu deinen Fragen:"_s, u"[deine Antwort]"_s, u"Viele Grüße"_s, u"„"_s, u"“"_s}},
        {ReplyPhrases{u"Merci pour votre message."_s, u"Vous avez écrit\u00A0:"_s,
                      u"À propos de votre question\u00A0:"_s, u"À propos de vos questions\u00A0:"_s,
                      u"[votre réponse]"_s, u"Bien cordialement,"_s, u"«\u00A0"_s, u"\u00A0»"_s},
         ReplyPhrases{u"Merci pour ton message."_s, u"Tu as écrit\u00A0:"_s, u"À propos de ta question\u00A0:"_s,
                      u"À propos de tes questions\u00A0:"_s, u"[ta réponse]"_s, u"Bien à toi,"_s, u"«\u00A0"_s,
                      u"\u00A0»"_s}},
        {ReplyPhrases{u"Gracias por su mensaje."_s, u"Usted escribió:"_s, u"Sobre su pregunta:"_s,
                      u"Sobre sus preguntas:"_s, u"[su respuesta]"_s, u"Saludos cordiales,"_s, u"«"_s, u"»"_s},
         ReplyPhrases{u"Gracias por tu mensaje."_s, u"Escribiste:"_s, u"Sobre tu pregunta:"_s,
                      u"Sobre tus preguntas:"_s, u"[tu respuesta]"_s, u"Un saludo,"_s, u"«"_s, u"»"_s}},
        {ReplyPhrases{u"ご連絡ありがとうございます。"_s, u"いただいた内容："_s, u"ご質問について："_s,
                      u"ご質問について："_s, u"［ご回答］"_s, u"よろしくお願いいたします。"_s, u"「"_s, u"」"_s}},
        {ReplyPhrases{u"شكرًا على رسالتك."_s, u"كتبت:"_s, u"بخصوص سؤالك:"_s, u"بخصوص أسئلتك:"_s, u"[إجابتك]"_s,
                      u"مع أطيب التحيات،"_s, u"«"_s, u"»"_s}},
    }};
    return all[static_cast<std::size_t>(language)][static_cast<std::size_t>(tone)];
}

} // namespace quillmate::server
