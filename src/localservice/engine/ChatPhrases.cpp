#include "localservice/engine/ChatPhrases.h"

#include <array>

namespace quillmate::localservice
{

const ChatPhrases& chatPhrases(Language language)
{
    // In the order of the languages.
    static const std::array<ChatPhrases, 6> all = {
        ChatPhrases{
            QStringLiteral("The message says:"), QStringLiteral("On what you asked before, the message says:"),
            QStringLiteral("The message also says:"), QStringLiteral("I find no more on this in the message than:"),
            QStringLiteral("Nothing in the message fits this question. I work without a language model and look "
                           "for its words, so other words may help."),
            QStringLiteral("There is no message with a text here, so I have nothing to look at."),
            QStringLiteral("I am glad to help: ask me anything about the message.")},
        ChatPhrases{QStringLiteral("In der Nachricht steht:"),
                    QStringLiteral("Zu dem, was Sie vorhin gefragt haben, steht in der Nachricht:"),
                    QStringLiteral("In der Nachricht steht außerdem:"),
                    QStringLiteral("Mehr als das finde ich dazu nicht in der Nachricht:"),
                    QStringLiteral("Nichts in der Nachricht passt zu dieser Frage. Ich arbeite ohne Sprachmodell und "
                                   "suche nach ihren Wörtern; mit anderen Wörtern klappt es vielleicht."),
                    QStringLiteral("Hier ist keine Nachricht mit Text, die ich ansehen könnte."),
                    QStringLiteral("Gern. Fragen Sie mich, was Sie über die Nachricht wissen möchten.")},
        ChatPhrases{
            QStringLiteral("Le message dit\u00A0:"),
            QStringLiteral("Sur ce que vous avez demandé plus tôt, le message dit\u00A0:"),
            QStringLiteral("Le message dit aussi\u00A0:"),
            QStringLiteral("Je ne trouve rien de plus à ce sujet dans le message que\u00A0:"),
            QStringLiteral("Rien dans le message ne répond à cette question. Je travaille sans modèle de langage "
                           "et je cherche ses mots\u00A0: essayez-en d’autres."),
            QStringLiteral("Il n’y a pas ici de message avec un texte que je puisse regarder."),
            QStringLiteral("Avec plaisir\u00A0: demandez-moi ce que vous voulez savoir sur le message.")},
        ChatPhrases{
            QStringLiteral("El mensaje dice:"), QStringLiteral("Sobre lo que preguntó antes, el mensaje dice:"),
            QStringLiteral("El mensaje dice además:"), QStringLiteral("No encuentro más sobre esto en el mensaje que:"),
            QStringLiteral("Nada en el mensaje responde a esta pregunta. Trabajo sin modelo de lenguaje y busco "
                           "sus palabras: pruebe con otras."),
            QStringLiteral("Aquí no hay ningún mensaje con texto que pueda mirar."),
            QStringLiteral("Con mucho gusto: pregúnteme lo que quiera saber sobre el mensaje.")},
        ChatPhrases{QStringLiteral("メッセージには次のように書かれています："),
                    QStringLiteral("先ほどのご質問について、メッセージには次のように書かれています："),
                    QStringLiteral("メッセージにはほかにこう書かれています："),
                    QStringLiteral("これについてメッセージで見つかるのは次の内容だけです："),
                    QStringLiteral("この質問に当てはまる内容はメッセージにありません。言語モデルを使わずに言葉を探して"
                                   "いますので、別の言葉でお試しください。"),
                    QStringLiteral("ここには本文のあるメッセージがありません。"),
                    QStringLiteral("メッセージについて何でもお尋ねください。")},
        ChatPhrases{QStringLiteral("تقول الرسالة:"), QStringLiteral("عمّا سألت عنه من قبل تقول الرسالة:"),
                    QStringLiteral("وتقول الرسالة أيضًا:"), QStringLiteral("لا أجد في الرسالة حول هذا أكثر من:"),
                    QStringLiteral("لا شيء في الرسالة يناسب هذا السؤال. أعمل دون نموذج لغوي وأبحث عن الكلمات، فقد تفيد "
                                   "كلمات أخرى."),
                    QStringLiteral("لا توجد هنا رسالة ذات نص يمكنني النظر فيها."),
                    QStringLiteral("يسعدني أن أساعدك: اسألني عن أي شيء في الرسالة.")}};
    return all[static_cast<std::size_t>(language)];
}

} // namespace quillmate::localservice
