#include "localservice/engine/ReplyPhrases.h"

#include <array>

namespace quillmate::localservice
{

namespace
{

using Both = std::array<ReplyPhrases, 2>;

ReplyPhrases german(bool familiar)
{
    if (familiar) {
        return {QStringLiteral("vielen Dank für deine Nachricht."),
                QStringLiteral("Du hast geschrieben:"),
                QStringLiteral("Zu deiner Frage:"),
                QStringLiteral("Zu deinen Fragen:"),
                QStringLiteral("[deine Antwort]"),
                QStringLiteral("Viele Grüße"),
                QStringLiteral("„"),
                QStringLiteral("“")};
    }
    return {QStringLiteral("vielen Dank für Ihre Nachricht."),
            QStringLiteral("Sie haben geschrieben:"),
            QStringLiteral("Zu Ihrer Frage:"),
            QStringLiteral("Zu Ihren Fragen:"),
            QStringLiteral("[Ihre Antwort]"),
            QStringLiteral("Mit freundlichen Grüßen"),
            QStringLiteral("„"),
            QStringLiteral("“")};
}

// French sets a no-break space before a colon and inside its quotation marks.
ReplyPhrases french(bool familiar)
{
    const QString open = QStringLiteral("«\u00A0");
    const QString close = QStringLiteral("\u00A0»");
    if (familiar) {
        return {QStringLiteral("Merci pour ton message."),
                QStringLiteral("Tu as écrit\u00A0:"),
                QStringLiteral("À propos de ta question\u00A0:"),
                QStringLiteral("À propos de tes questions\u00A0:"),
                QStringLiteral("[ta réponse]"),
                QStringLiteral("Bien à toi,"),
                open,
                close};
    }
    return {QStringLiteral("Merci pour votre message."),
            QStringLiteral("Vous avez écrit\u00A0:"),
            QStringLiteral("À propos de votre question\u00A0:"),
            QStringLiteral("À propos de vos questions\u00A0:"),
            QStringLiteral("[votre réponse]"),
            QStringLiteral("Bien cordialement,"),
            open,
            close};
}

ReplyPhrases spanish(bool familiar)
{
    if (familiar) {
        return {QStringLiteral("Gracias por tu mensaje."),
                QStringLiteral("Escribiste:"),
                QStringLiteral("Sobre tu pregunta:"),
                QStringLiteral("Sobre tus preguntas:"),
                QStringLiteral("[tu respuesta]"),
                QStringLiteral("Un saludo,"),
                QStringLiteral("«"),
                QStringLiteral("»")};
    }
    return {QStringLiteral("Gracias por su mensaje."),
            QStringLiteral("Usted escribió:"),
            QStringLiteral("Sobre su pregunta:"),
            QStringLiteral("Sobre sus preguntas:"),
            QStringLiteral("[su respuesta]"),
            QStringLiteral("Saludos cordiales,"),
            QStringLiteral("«"),
            QStringLiteral("»")};
}

const ReplyPhrases english = {QStringLiteral("Thank you for your message."),
                              QStringLiteral("You wrote:"),
                              QStringLiteral("About your question:"),
                              QStringLiteral("About your questions:"),
                              QStringLiteral("[your answer]"),
                              QStringLiteral("Kind regards,"),
                              QStringLiteral("“"),
                              QStringLiteral("”")};

const ReplyPhrases japanese = {QStringLiteral("ご連絡ありがとうございます。"),
                               QStringLiteral("いただいた内容："),
                               QStringLiteral("ご質問について："),
                               QStringLiteral("ご質問について："),
                               QStringLiteral("［ご回答］"),
                               QStringLiteral("よろしくお願いいたします。"),
                               QStringLiteral("「"),
                               QStringLiteral("」")};

const ReplyPhrases arabic = {QStringLiteral("شكرًا على رسالتك."),
                             QStringLiteral("كتبت:"),
                             QStringLiteral("بخصوص سؤالك:"),
                             QStringLiteral("بخصوص أسئلتك:"),
                             QStringLiteral("[إجابتك]"),
                             QStringLiteral("مع أطيب التحيات،"),
                             QStringLiteral("«"),
                             QStringLiteral("»")};

} // namespace

const ReplyPhrases& replyPhrases(Language language, Tone tone)
{
    // In the order of the languages; formal first.
    static const std::array<Both, 6> all = {
        Both{english, english},
        Both{german(false), german(true)},
        Both{french(false), french(true)},
        Both{spanish(false), spanish(true)},
        Both{japanese, japanese},
        Both{arabic, arabic},
    };
    return all[static_cast<std::size_t>(language)][static_cast<std::size_t>(tone)];
}

} // namespace quillmate::localservice
