#include "server/engine/ContentWords.h"

#include "server/engine/Language.h"

namespace quillmate::server
{

QString folded(const QString& text)
{
    QString result;
    // Decomposing and dropping marks makes "Café" and "cafe", and Arabic with and without vowel signs, the same word.
    const QString decomposed = text.normalized(QString::NormalizationForm_KD).toCaseFolded();
    for (const QChar character : decomposed) {
        if (!character.isMark() && character != u'\u0640') {
            result += character;
        }
    }
    return result;
}

bool isUnspaced(QChar character)
{
    switch (character.script()) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Thai:
    case QChar::Script_Lao:
    case QChar::Script_Khmer:
    case QChar::Script_Myanmar:
        return true;
    default:
        return character == u'ー';
    }
}

QStringList contentWords(const QString& text)
{
    QStringList words;
    QString word;
    QString run;
    const auto endWord = [&] {
        const QString key = folded(word);
        if (key.size() > 1 && !isCommonWord(key)) {
            words.append(key);
        }
        word.clear();
    };
    const auto endRun = [&] {
        for (qsizetype index = 0; index + 1 < run.size(); ++index) {
            words.append(run.mid(index, 2));
        }
        run.clear();
    };
    for (const QChar character : text) {
        if (isUnspaced(character)) {
            endWord();
            run += character;
            continue;
        }
        endRun();
        if (character.isLetterOrNumber() || character.isMark() || character.isSurrogate()) {
            word += character;
        } else {
            endWord();
        }
    }
    endWord();
    endRun();
    return words;
}

} // namespace quillmate::server
