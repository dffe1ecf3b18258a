#include "server/engine/ChatPhrases.h"

#include <array>

namespace quillmate::server
{

using namespace Qt::StringLiterals;

const ChatPhrases& chatPhrases(Language language)
{
    // In the order of the languages.
    static const std::array<ChatPhrases, 6> all = {
        ChatPhrases{
            u"The message says:"_s, u"On what you asked before, the message says:"_s, u"The message also says:"_s,
            u"I find no more on this in the message than:"_s,
            u"Nothing in the message fits this question. I work without a language model and look for its words, so other words may help."_s,
            u"There is no message with a text here, so I have nothing to look at."_s,
            u"I am glad to help: ask me anything about the message."_s},
        ChatPhrases{
            u"In der Nachricht steht:"_s, u"Zu dem, was Sie vorhin gefragt haben, steht in der Nachricht:"_s,
            u"In der Nachricht steht außerdem:"_s, u"Mehr als das finde ich dazu nicht in der Nachricht:"_s,
            u"Nichts in der Nachricht passt zu dieser Frage. Ich arbeite ohne Sprachmodell und suche nach ihren Wörtern; mit anderen Wörtern klappt es vielleicht."_s,
            u"Hier ist keine Nachricht mit Text, die ich ansehen könnte."_s,
            u"Gern. Fragen Sie mich, was Sie über die Nachricht wissen möchten."_s},
        ChatPhrases{
            u"Le message dit\u00A0:"_s, u"Sur ce que vous avez demandé plus tôt, le message dit\u00A0:"_s,
            u"Le message dit aussi\u00A0:"_s, u"Je ne trouve rien de plus à ce sujet dans le message que\u00A0:"_s,
            u"Rien dans le message ne répond à cette question. Je travaille sans modèle de langage et je cherche ses mots\u00A0: essayez-en d’autres."_s,
            u"Il n’y a pas ici de message avec un texte que je puisse regarder."_s,
            u"Avec plaisir\u00A0: demandez-moi ce que vous voulez savoir sur le message."_s},
        ChatPhrases{
            u"El mensaje dice:"_s, u"Sobre lo que preguntó antes, el mensaje dice:"_s, u"El mensaje dice además:"_s,
            u"No encuentro más sobre esto en el mensaje que:"_s,
            u"Nada en el mensaje responde a esta pregunta. Trabajo sin modelo de lenguaje y busco sus palabras: pruebe con otras."_s,
            u"Aquí no hay ningún mensaje con texto que pueda mirar."_s,
            u"Con mucho gusto: pregúnteme lo que quiera saber sobre el mensaje."_s},
        ChatPhrases{
            u"メッセージには次のように書かれています："_s,
            u"先ほどのご質問について、メッセージには次のように書かれています："_s,
            u"メッセージにはほかにこう書かれています："_s, u"これについてメッセージで見つかるのは次の内容だけです："_s,
            u"この質問に当てはまる内容はメッセージにありません。言語モデルを使わずに言葉を探していますので、別の言葉でお試しください。"_s,
            u"ここには本文のあるメッセージがありません。"_s, u"メッセージについて何でもお尋ねください。"_s},
        ChatPhrases{u"تقول الرسالة:"_s, u"عمّا سألت عنه من قبل تقول الرسالة:"_s, u"وتقول الرسالة أيضًا:"_s,
                    u"لا أجد في الرسالة حول هذا أكثر من:"_s,
                    u"لا شيء في الرسالة يناسب هذا السؤال. أعمل دون نموذج لغوي وأبحث عن الكلمات، فقد تفيد كلمات أخرى."_s,
                    u"لا توجد هنا رسالة ذات نص يمكنني النظر فيها."_s,
                    u"يسعدني أن أساعدك: اسألني عن أي شيء في الرسالة."_s}};
    return all[static_cast<std::size_t>(language)];
}

} // namespace quillmate::server
