#include "server/engine/ReplyPhrases.h"

#include <array>

namespace quillmate::server
{

using namespace Qt::StringLiterals;

const ReplyPhrases& replyPhrases(Language language, Tone tone)
{
    static const ReplyPhrases english = {u"Thank you for your message."_s,
                                         u"You wrote:"_s,
                                         u"About your question:"_s,
                                         u"About your questions:"_s,
                                         u"[your answer]"_s,
                                         u"Kind regards,"_s,
                                         u"“"_s,
                                         u"”"_s};
    static const ReplyPhrases japanese = {u"ご連絡ありがとうございます。"_s,
                                          u"いただいた内容："_s,
                                          u"ご質問について："_s,
                                          u"ご質問について："_s,
                                          u"［ご回答］"_s,
                                          u"よろしくお願いいたします。"_s,
                                          u"「"_s,
                                          u"」"_s};
    static const ReplyPhrases arabic = {u"شكرًا على رسالتك."_s,
                                        u"كتبت:"_s,
                                        u"بخصوص سؤالك:"_s,
                                        u"بخصوص أسئلتك:"_s,
                                        u"[إجابتك]"_s,
                                        u"مع أطيب التحيات،"_s,
                                        u"«"_s,
                                        u"»"_s};
    // In the order of the languages; formal first. French sets a no-break space before a colon and inside its
    // quotation marks.
    static const std::array<std::array<ReplyPhrases, 2>, 6> all = {{
        {english, english},
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
        {japanese, japanese},
        {arabic, arabic},
    }};
    return all[static_cast<std::size_t>(language)][static_cast<std::size_t>(tone)];
}

} // namespace quillmate::server
