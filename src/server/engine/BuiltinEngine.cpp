#include "server/engine/BuiltinEngine.h"

#include "mail/MessageText.h"
#include "mail/QuotedText.h"
#include "server/engine/ChatAnswer.h"
#include "server/engine/ExtractiveSummary.h"
#include "server/engine/ReplyDraft.h"

namespace quillmate::server
{

QString consideredText(const std::string& mail)
{
    constexpr qsizetype most = 200'000;
    constexpr std::size_t bytesPerCharacter = 4;
    const QString text = QString::fromStdString(textOfBody(mail, bytesPerCharacter * most).text);
    const bool cutsPair = text.size() > most && text[most - 1].isHighSurrogate();
    return text.left(cutsPair ? most - 1 : most);
}

EngineText BuiltinEngine::summarize(const std::string& mail) const
{
    const QString text = ownText(consideredText(mail));
    if (text.isEmpty()) {
        return std::string("This message has no text that can be summarized.");
    }
    return extractiveSummary(text).join(u'\n').toStdString();
}

EngineText BuiltinEngine::reply(const std::string& mail, const std::string& userName) const
{
    return replyDraft(consideredText(mail), QString::fromStdString(userName)).toStdString();
}

std::string BuiltinEngine::readableText(const std::string& mail) const
{
    return ownText(consideredText(mail)).toStdString();
}

EngineText BuiltinEngine::answer(const std::string& text, const std::vector<ThreadMessage>& earlier,
                                 const std::string& question) const
{
    return chatAnswer(QString::fromStdString(text), earlier, question).toStdString();
}

} // namespace quillmate::server
