#include "server/engine/Language.h"

#include "server/engine/ContentWords.h"
#include "server/engine/WordPatterns.h"

#include <algorithm>
#include <array>

namespace quillmate::server
{

namespace
{

using Words = QSet<QString>;

// Folded, as words are for comparison.
const Words& commonWords(Language language)
{
    static const std::array<Words, 6> lists = {
        wordSet(QStringLiteral("the and of to in is it you that for on with as this are be was have has had will would "
                               "can could should we they he she our your their at by from or not but if so an all "
                               "there what which who when where how do does did please me my us its been than then "
                               "them these those about into just also am were why whose whom any some")),
        wordSet(QStringLiteral(
            "der die das und ist in zu den mit von fur auf dem ein eine nicht sie ich wir es im des sich auch an als "
            "bei haben hat war wird werden bitte oder aber wenn dass noch nach am um uns ihr ihnen ihre einen einem "
            "einer wie kann konnen sind zum zur aus durch vom was wo wer so nur schon mir mich unser du dich dir wann "
            "warum wieso welche welcher welches wem wen denn dann dort hallo")),
        wordSet(QStringLiteral(
            "le la les des et est un une du en que qui dans pour sur pas ne vous nous je il elle au aux avec ce cette "
            "ces par plus se son sa ses votre vos notre nos mais ou si sont ont etre avoir merci bonjour leur de tu "
            "toi quand comment pourquoi combien quel quelle quels quelles alors donc")),
        wordSet(QStringLiteral("el la los las de que y en un una es por con para no se su lo del al como mas le les "
                               "pero sus ya o este esta si ha han son usted nos nuestro muy gracias sobre entre cuando "
                               "donde hola quien cual cuanto cuanta cuantos cuantas entonces mi te")),
        Words{},
        wordSet(QStringLiteral("في من على الى إلى عن ان أن إن هذا هذه ذلك التي الذي ما لا و هو هي كان مع كل قد ثم او "
                               "أو لم لن بعد قبل نحن"))};
    return lists[static_cast<std::size_t>(language)];
}

constexpr qsizetype languageSample = 4000;

/// The language that the script alone tells.
std::optional<Language> languageOfScript(const QString& sample)
{
    qsizetype kana = 0;
    qsizetype arabic = 0;
    qsizetype letters = 0;
    for (const QChar character : sample) {
        const auto script = character.script();
        kana += script == QChar::Script_Hiragana || script == QChar::Script_Katakana ? 1 : 0;
        arabic += script == QChar::Script_Arabic ? 1 : 0;
        letters += character.isLetter() ? 1 : 0;
    }
    if (kana * 5 > letters) {
        return Language::Japanese;
    }
    if (arabic * 2 > letters) {
        return Language::Arabic;
    }
    return std::nullopt;
}

QStringList foldedWords(const QString& sample)
{
    static const QRegularExpression notLetters(QStringLiteral("[^\\p{L}]+"),
                                               QRegularExpression::UseUnicodePropertiesOption);
    return folded(sample).split(notLetters, Qt::SkipEmptyParts);
}

qsizetype commonIn(Language language, const QStringList& words)
{
    const Words& common = commonWords(language);
    return std::count_if(words.begin(), words.end(), [&](const QString& word) { return common.contains(word); });
}

} // namespace

Language languageOf(const QString& text, Language otherwise)
{
    const QString sample = text.left(languageSample);
    if (const auto language = languageOfScript(sample)) {
        return *language;
    }
    const QStringList words = foldedWords(sample);
    // "¿" and "ß" stand in no other of them.
    Language best = sample.contains(u'¿') ? Language::Spanish : sample.contains(u'ß') ? Language::German : otherwise;
    auto most = commonIn(best, words);
    for (const Language language : {Language::English, Language::German, Language::French, Language::Spanish}) {
        const auto count = commonIn(language, words);
        if (count > most) {
            most = count;
            best = language;
        }
    }
    return best;
}

std::optional<Language> clearLanguageOf(const QString& text)
{
    const QString sample = text.left(languageSample);
    if (const auto language = languageOfScript(sample)) {
        // Persian and Urdu share the script and have letters of their own.
        static const QRegularExpression notArabic(QStringLiteral("[پچژگکیںہے]"));
        return *language == Language::Arabic && sample.contains(notArabic) ? std::nullopt : language;
    }
    const QStringList words = foldedWords(sample);
    const Language best = languageOf(sample, Language::English);
    // A third of a text are the common words of its language; those of a sister language come to less than a quarter.
    constexpr qsizetype fewestWords = 4;
    const bool clear = words.size() >= fewestWords && commonIn(best, words) * 10 >= words.size() * 3;
    return clear && best == languageOf(sample, Language::German) ? std::optional(best) : std::nullopt;
}

bool isCommonWord(const QString& word)
{
    for (const Language language :
         {Language::English, Language::German, Language::French, Language::Spanish, Language::Arabic}) {
        if (commonWords(language).contains(word)) {
            return true;
        }
    }
    return false;
}

} // namespace quillmate::server
