#include "localservice/engine/Phrases.h"

#include <array>

namespace quillmate::localservice
{

const Phrases& phrasesIn(Language language)
{
    static const std::array<Phrases, 6> all = {
        Phrases{
            QStringLiteral("Hello,"), QStringLiteral("thank you for your message."), QStringLiteral("You wrote:"),
            QStringLiteral("You asked:"), QStringLiteral("[your answer]"), QStringLiteral("Kind regards"),
            QStringLiteral("The message says:"), QStringLiteral("Nothing in the message fits this question."),
            QStringLiteral("(Written without a language model; one can be connected to the service for fuller texts.)"),
            QStringLiteral("“"), QStringLiteral("”")},
        Phrases{
            QStringLiteral("Guten Tag,"), QStringLiteral("vielen Dank für Ihre Nachricht."),
            QStringLiteral("Sie schrieben:"), QStringLiteral("Sie fragten:"), QStringLiteral("[Ihre Antwort]"),
            QStringLiteral("Mit freundlichen Grüßen"), QStringLiteral("In der Nachricht steht:"),
            QStringLiteral("Nichts in der Nachricht passt zu dieser Frage."),
            QStringLiteral(
                "(Ohne Sprachmodell geschrieben; für ausführlichere Texte lässt sich eines mit dem Dienst verbinden.)"),
            QStringLiteral("„"), QStringLiteral("“")},
        Phrases{QStringLiteral("Bonjour,"), QStringLiteral("merci pour votre message."),
                QStringLiteral("Vous écriviez :"), QStringLiteral("Vous demandiez :"),
                QStringLiteral("[votre réponse]"), QStringLiteral("Cordialement"), QStringLiteral("Le message dit :"),
                QStringLiteral("Rien dans le message ne répond à cette question."),
                QStringLiteral(
                    "(Écrit sans modèle de langage ; on peut en relier un au service pour des textes plus complets.)"),
                QStringLiteral("« "), QStringLiteral(" »")},
        Phrases{QStringLiteral("Buenos días:"), QStringLiteral("Gracias por su mensaje."),
                QStringLiteral("Usted escribió:"), QStringLiteral("Usted preguntó:"), QStringLiteral("[su respuesta]"),
                QStringLiteral("Saludos cordiales"), QStringLiteral("El mensaje dice:"),
                QStringLiteral("Nada en el mensaje responde a esta pregunta."),
                QStringLiteral(
                    "(Escrito sin modelo de lenguaje; se puede conectar uno al servicio para textos más completos.)"),
                QStringLiteral("«"), QStringLiteral("»")},
        Phrases{
            QStringLiteral("お世話になっております。"), QStringLiteral("ご連絡ありがとうございます。"),
            QStringLiteral("いただいた内容："), QStringLiteral("ご質問："), QStringLiteral("［ご回答］"),
            QStringLiteral("よろしくお願いいたします。"), QStringLiteral("メッセージには次のように書かれています："),
            QStringLiteral("この質問に当てはまる内容はメッセージにありません。"),
            QStringLiteral(
                "（言語モデルを使わずに作成しました。サービスに言語モデルを接続すると、より詳しい文章になります。）"),
            QStringLiteral("「"), QStringLiteral("」")},
        Phrases{QStringLiteral("مرحبًا،"), QStringLiteral("شكرًا على رسالتك."), QStringLiteral("كتبت:"),
                QStringLiteral("سألت:"), QStringLiteral("[إجابتك]"), QStringLiteral("مع أطيب التحيات"),
                QStringLiteral("تقول الرسالة:"), QStringLiteral("لا شيء في الرسالة يناسب هذا السؤال."),
                QStringLiteral("(كُتب دون نموذج لغوي؛ يمكن وصل نموذج بالخدمة للحصول على نصوص أوفى.)"),
                QStringLiteral("«"), QStringLiteral("»")}};
    return all[static_cast<std::size_t>(language)];
}

} // namespace quillmate::localservice
