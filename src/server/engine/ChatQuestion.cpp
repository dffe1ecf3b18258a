#include "server/engine/ChatQuestion.h"

#include "server/engine/ContentWords.h"
#include "server/engine/WordPatterns.h"

#include <algorithm>

namespace quillmate::server
{

namespace
{

constexpr qsizetype consideredCharacters = 4000;

/// Words about the asking itself, folded as `contentWords` folds them, and pairs of characters that are grammar only.
bool saysNothing(const QString& word)
{
    static const QSet<QString> words =
        wordSet(QStringLiteral("tell much many viel viele more else anything something know say says mail email "
                               "message exactly again noch mehr genau sonst weiter sagen sag weiss nachricht steht "
                               "plus encore autre autres chose exactement dire dit message mas otra otro algo "
                               "exactamente dice mensaje decir ومتى متى واين اين وكم كم ماذا وماذا ومن وهل هل المزيد"));
    const bool kana = std::all_of(word.begin(), word.end(),
                                  [](QChar character) { return character.script() == QChar::Script_Hiragana; });
    return kana || words.contains(word);
}

ChatQuestion::Kind kindOf(const QString& text)
{
    static const QRegularExpression courtesy = wordPattern(
        QStringLiteral("^((many )?thanks?( you)?( very much| so much| a lot)?|hi|hello|hey|danke( schön| sehr)?|vielen "
                       "dank|hallo|guten (tag|morgen)|merci( beaucoup)?|bonjour|salut|(muchas )?gracias|hola|buenos "
                       "días|ありがとう.*|こんにちは|شكرا.*|مرحبا)$"));
    static const QRegularExpression overview = wordPattern(QStringLiteral(
        "\\bsummar|what('s| is) (it|this|that|the (e-?mail|message)) about|zusammenfass|fasse? .*zusammen|wor(um|an) "
        "geht|\\brésum|de quoi (s['’]agit|parle)|\\bresum[ae]|de qué (se )?(trata|habla)|要約|まとめて|لخص|ملخص"));
    if (text.contains(courtesy)) {
        return ChatQuestion::Kind::Courtesy;
    }
    return text.contains(overview) ? ChatQuestion::Kind::Overview : ChatQuestion::Kind::Ordinary;
}

ChatQuestion::Wants wantsOf(const QString& text)
{
    static const QRegularExpression time = wordPattern(
        QStringLiteral("\\b(when|what (time|day|date)|which day|wann|welche[rnm]? (tag|datum)|wie ?viel "
                       "uhr|quand|quel(le)? (jour|heure|date)|cu[aá]ndo|qué (día|hora|fecha))\\b|いつ|何時|何日|متى"));
    static const QRegularExpression number = wordPattern(
        QStringLiteral("\\b(how (much|many)|wie ?viele?|combien|cu[aá]nt[oa]s?)\\b|いくら|いくつ|何人|كم\\b"));
    static const QRegularExpression amount = wordPattern(
        QStringLiteral("\\b(costs?|price|kosten|kostet|preis|prix|coûte(nt)?|precio|cuesta[n]?)\\b|値段|料金|سعر"));
    if (text.contains(time)) {
        return ChatQuestion::Wants::Time;
    }
    if (text.contains(amount)) {
        return ChatQuestion::Wants::Amount;
    }
    return text.contains(number) ? ChatQuestion::Wants::Number : ChatQuestion::Wants::Anything;
}

} // namespace

ChatQuestion readQuestion(const QString& question)
{
    static const QRegularExpression ends(QStringLiteral("^[\\s¿¡]+|[\\s?!.。？！؟…]+$"));
    static const QRegularExpression pronoun = wordPattern(
        QStringLiteral("\\b(it|its|they|them|he|she|him|her|that|this|those|er|ihn|ihm|sie|das|dies|dafür|damit|davon|"
                       "elles?|ils?|ça|cela|celui|lui|ello|eso|esto|ellos|ellas|él|ella)\\b|それ|これ"));
    static const QRegularExpression connective = wordPattern(
        QStringLiteral("^(and|und|et|y|e|also|what about|how about|auch|aussi|también|では|それでは|و\\p{L})"));
    ChatQuestion result;
    result.text = question.left(consideredCharacters).simplified().remove(ends).toCaseFolded();
    for (const QString& word : contentWords(result.text)) {
        if (!saysNothing(word)) {
            result.words.append(word);
        }
    }
    result.kind = kindOf(result.text);
    result.wants = wantsOf(result.text);
    result.pointsBack = result.words.isEmpty() || (result.words.size() == 1 && result.text.contains(pronoun));
    result.goesOn = result.text.contains(connective);
    return result;
}

} // namespace quillmate::server
