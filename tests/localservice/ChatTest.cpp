#include "localservice/WrittenText.h"
#include "localservice/engine/BuiltinEngine.h"

#include <QTest>

using namespace quillmate::localservice;

namespace
{

const std::string english =
    "The pumps are ready. The delivery moves to Thursday. The invoice follows by post on 3 May. "
    "The pumps need oil. The delivery is made by Miller. Our driver calls you. It costs 40 euros.";
const std::string german = "Die Pumpen sind fertig. Die Lieferung kommt am Donnerstag. Die Pumpen brauchen Öl. Die "
                           "Lieferung macht die Firma Müller.";
const std::string french = "Les pompes sont prêtes. La livraison arrive jeudi. Les pompes ont besoin d’huile. La "
                           "livraison est faite par Moreau.";
const std::string spanish = "Las bombas están listas. La entrega llega el jueves. Las bombas necesitan aceite. La "
                            "entrega la hace Moreno.";
const std::string japanese = "ポンプは準備できています。納品は木曜日になります。納品の担当は三浦です。油が必要です。";

} // namespace

/// A chat about a message, with its memory.
class ChatTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Each row asks its questions one after the other; "+" begins what the last answer holds, "-" what it does not.
    void answersFitTheQuestionAndWhatWasAskedBefore_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("questions");
        QTest::addColumn<QStringList>("signs");
        const auto row = [](const char* name, const std::string& text, const char* questions, const char* signs) {
            QTest::newRow(name) << QString::fromStdString(text) << QString::fromUtf8(questions).split(u'|')
                                << QString::fromUtf8(signs).split(u'|');
        };
        row("a shared word", english, "When is the delivery?", "+The message says:\nThe delivery moves|-driver");
        row("another form", english, "Who delivers?", "+delivery is made by Miller.|-driver");
        row("the rare word wins", english, "Is the invoice for the pumps on its way?", "+invoice follows|-driver");
        row("nothing fits", english, "What colour has the elephant?", "+Nothing in the message fits|+language model");
        row("an empty question", english, "", "+Nothing in the message fits");
        row("marks only", english, "?!", "+Nothing in the message fits");
        row("nothing to point back to", english, "Who does it?", "+Nothing in the message fits");
        row("nothing fits after something did", english, "When is the delivery?|And the elephant?",
            "+Nothing in the message fits|-Thursday");
        row("follow-up", english, "Who makes the delivery?|And when?",
            "+what you asked before|+Thursday|-Miller|-3 May");
        row("follow-up to a follow-up", english, "When is the delivery?|And?|And who?", "+Miller");
        row("follow-up on another thing", english, "When is the delivery?|And the invoice?", "+3 May|-Thursday");
        row("follow-up with a pronoun", english, "When is the delivery?|Who makes it?", "+Miller");
        row("a time of whatever", english, "When?", "+Thursday|+3 May|-Miller");
        row("a number of whatever", english, "How much?", "+40 euros|-Miller");
        row("an amount in other words", english, "What is the price?", "+40 euros|-Miller");
        row("an amount of what is not there", english, "What is the price of the elephant?", "+Nothing in the message");
        row("German follow-up", german, "Wer macht die Lieferung?|Wann denn?", "+vorhin gefragt|+Donnerstag|-Müller");
        row("German, nothing fits", german, "Was kostet der Elefant?", "+Nichts in der Nachricht");
        row("French follow-up", french, "Qui fait la livraison ?|Et quand ?", "+plus tôt|+jeudi|-Moreau");
        row("Spanish follow-up", spanish, "¿Quién hace la entrega?|¿Y cuándo?", "+antes|+jueves|-Moreno");
        row("Japanese follow-up", japanese, "納品の担当は誰ですか？|いつですか？", "+先ほど|+木曜日|-三浦");
        row("a short question in the language before it", german, "Wer macht die Lieferung?|Firma?",
            "+In der Nachricht");
        row("repeated once", english, "What oil do the pumps need?|What oil do the pumps need?",
            "+also says:|-need oil|+ready");
        row("repeated until nothing is left", english,
            "What oil do the pumps need?|what oil do the pumps need|What oil do the pumps need??",
            "+no more on this|+need oil");
        row("more of it", english, "What oil do the pumps need?|Tell me more",
            "+also says:|+The pumps are ready.|-need oil");
        row("overview", german, "Worum geht es in der Nachricht?", "+In der Nachricht steht:|+Lieferung");
        row("overview again", german, "Worum geht es?|Worum geht es?", "+Mehr als das|+Lieferung");
        row("thanks", french, "Merci !", "+Avec plaisir|-Moreau");
        row("no message", "", "When is the delivery?", "+There is no message");
        row("no message, German", "", "Wann ist die Lieferung?", "+Hier ist keine Nachricht");
    }

    void answersFitTheQuestionAndWhatWasAskedBefore()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, questions);
        QFETCH(QStringList, signs);
        std::vector<ThreadMessage> chat;
        for (const QString& question : questions) {
            const std::string asked = question.toStdString();
            const std::string answer = written(BuiltinEngine().answer(text.toStdString(), chat, asked));
            chat.push_back({ThreadMessage::Role::User, asked});
            chat.push_back({ThreadMessage::Role::Assistant, answer});
        }
        const QString answer = QString::fromStdString(chat.back().text);
        for (const QString& sign : signs) {
            QVERIFY2(answer.contains(sign.mid(1)) == sign.startsWith(u'+'), qPrintable(sign + u'\n' + answer));
        }
        QVERIFY(answer.count(u'\n') <= 5);
    }

    void longTextsAreSearchedToTheirEnd()
    {
        std::string text;
        for (int count = 0; count < 2000; ++count) {
            text += "The report has many pages about everything. ";
        }
        text += "The boat leaves at noon. " + std::string(10'000, 'x');
        const std::string answer = written(BuiltinEngine().answer(text, {}, "When does the boat leave?"));
        QVERIFY2(answer.find("leaves at noon") != std::string::npos, answer.c_str());
        QVERIFY(written(BuiltinEngine().answer(text, {}, std::string(10'000, 'x'))).size() < 5000);
    }
};

QTEST_GUILESS_MAIN(ChatTest)
#include "ChatTest.moc"
