#include "localservice/engine/BuiltinEngine.h"

#include "localservice/engine/ChatAnswer.h"
#include "localservice/engine/MailText.h"
#include "localservice/engine/QuotedText.h"
#include "localservice/engine/ReplyDraft.h"
#include "localservice/engine/Summary.h"

namespace quillmate::localservice
{

namespace
{

constexpr qsizetype consideredCharacters = 200'000;

QString consideredText(const std::string& mail)
{
    return mailText(mail).left(consideredCharacters);
}

} // namespace

EngineText BuiltinEngine::summarize(const std::string& mail) const
{
    const QString text = ownText(consideredText(mail));
    if (text.isEmpty()) {
        return "This message has no text that can be summarized.";
    }
    return summaryOf(text).join(u'\n').toStdString();
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

} // namespace quillmate::localservice
