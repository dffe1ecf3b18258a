#include "server/WrittenText.h"
#include "server/engine/BuiltinEngine.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate::server;

namespace
{

const std::string english =
    "The pumps are ready. The delivery moves to Thursday. The invoice follows by post on 3 May. The pumps need oil. "
    "The delivery is made by Miller. Our driver calls you. It costs 40 euros.";
const std::string german = "Die Pumpen sind fertig. Die Lieferung kommt am Donnerstag. Die Pumpen brauchen Öl. Die "
                           "Lieferung macht die Firma Müller.";
const std::string french = "Les pompes sont prêtes. La livraison arrive jeudi. Les pompes ont besoin d’huile. La "
                           "livraison est faite par Moreau.";
const std::string spanish =
    "Las bombas están listas. La entrega llega el jueves. Las bombas necesitan aceite. La entrega la hace Moreno.";
const std::string japanese = "ポンプは準備できています。納品は木曜日になります。納品の担当は三浦です。油が必要です。";

} // namespace

/// A chat about a message, with its memory.
class ChatTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersFitTheQuestionAndWhatWasAskedBefore()
    {
        struct Row {
            std::string text;
            const char* questions; ///< asked one after the other
            const char* signs;     ///< "+" begins what the last answer holds, "-" what it does not
        };
        const std::vector<Row> rows = {
            {english, "When is the delivery?", "+The message says:\nThe delivery moves|-driver"},
            {english, "Who delivers?", "+delivery is made by Miller.|-driver"},
            {english, "Is the invoice for the pumps on its way?", "+invoice follows|-driver"},
            {english, "What colour has the elephant?", "+Nothing in the message fits|+language model"},
            {english, "", "+Nothing in the message fits"},
            {english, "?!", "+Nothing in the message fits"},
            {english, "Who does it?", "+Nothing in the message fits"},
            {english, "When is the delivery?|And the elephant?", "+Nothing in the message fits|-Thursday"},
            {english, "Who makes the delivery?|And when?", "+what you asked before|+Thursday|-Miller|-3 May"},
            {english, "When is the delivery?|And?|And who?", "+Miller"},
            {english, "When is the delivery?|And the invoice?", "+3 May|-Thursday"},
            {english, "When is the delivery?|Who makes it?", "+Miller"},
            {english, "When?", "+Thursday|+3 May|-Miller"},
            {english, "How much?", "+40 euros|-Miller"},
            {english, "What is the price?", "+40 euros|-Miller"},
            {english, "What is the price of the elephant?", "+Nothing in the message"},
            {german, "Wer macht die Lieferung?|Wann denn?", "+vorhin gefragt|+Donnerstag|-Müller"},
            {german, "Was kostet der Elefant?", "+Nichts in der Nachricht"},
            {french, "Qui fait la livraison ?|Et quand ?", "+plus tôt|+jeudi|-Moreau"},
            {spanish, "¿Quién hace la entrega?|¿Y cuándo?", "+antes|+jueves|-Moreno"},
            {japanese, "納品の担当は誰ですか？|いつですか？", "+先ほど|+木曜日|-三浦"},
            {german, "Wer macht die Lieferung?|Firma?", "+In der Nachricht"},
            {english, "What oil do the pumps need?|What oil do the pumps need?", "+also says:|-need oil|+ready"},
            {english, "What oil do the pumps need?|what oil do the pumps need|What oil do the pumps need??",
             "+no more on this|+need oil"},
            {english, "What oil do the pumps need?|Tell me more", "+also says:|+The pumps are ready.|-need oil"},
            {german, "Worum geht es in der Nachricht?", "+In der Nachricht steht:|+Lieferung"},
            {german, "Worum geht es?|Worum geht es?", "+Mehr als das|+Lieferung"},
            {french, "Merci !", "+Avec plaisir|-Moreau"},
            {"", "When is the delivery?", "+There is no message"},
            {"", "Wann ist die Lieferung?", "+Hier ist keine Nachricht"}};
        for (const auto& [text, questions, signs] : rows) {
            std::vector<ThreadMessage> chat;
            for (const QString& question : QString::fromUtf8(questions).split(u'|')) {
                const std::string asked = question.toStdString();
                const std::string answer = written(BuiltinEngine().answer(text, chat, asked));
                chat.push_back({ThreadMessage::Role::User, asked});
                chat.push_back({ThreadMessage::Role::Assistant, answer});
            }
            const QString answer = QString::fromStdString(chat.back().text);
            for (const QString& sign : QString::fromUtf8(signs).split(u'|')) {
                QVERIFY2(answer.contains(sign.mid(1)) == sign.startsWith(u'+'),
                         qPrintable(QString::fromUtf8(questions) + u'\n' + sign + u'\n' + answer));
            }
            QVERIFY(answer.count(u'\n') <= 5);
        }
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

QUILLMATE_TEST(ChatTest, QCoreApplication)
#include "ChatTest.moc"
