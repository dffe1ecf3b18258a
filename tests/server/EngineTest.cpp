#include "server/WrittenText.h"
#include "server/engine/BuiltinEngine.h"
#include "server/engine/Sentences.h"
#include "server/engine/TextRank.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

#include <algorithm>

using namespace quillmate::server;
using namespace Qt::StringLiterals;

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

/// What the built-in engine writes about a message.
class EngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsSplitIntoSentences()
    {
        const std::vector<std::pair<QString, QString>> rows = {
            {u"One is here. Two is there! Is three? Yes…"_s, u"One is here.|Two is there!|Is three?|Yes…"_s},
            {u"Dr. Smith of Inc. Corp met e.g. Mr. J. Doe. They left."_s,
             u"Dr. Smith of Inc. Corp met e.g. Mr. J. Doe.|They left."_s},
            {u"Das gilt z.B. am 3. Mai bzw. im Juni. Danach ca. 5 Tage."_s,
             u"Das gilt z.B. am 3. Mai bzw. im Juni.|Danach ca. 5 Tage."_s},
            {u"It costs 3.50 at https://a.b/c.d?e today. Fine."_s,
             u"It costs 3.50 at https://a.b/c.d?e today.|Fine."_s},
            {u"“Is it done?” Tom asked. (It is.) Good."_s, u"“Is it done?”|Tom asked.|(It is.)|Good."_s},
            {u"会議は木曜日です。資料を送ってください！よろしいですか？はい"_s,
             u"会議は木曜日です。|資料を送ってください！|よろしいですか？|はい"_s},
            {u"الاجتماع يوم الخميس. هل يمكنك الحضور؟ شكرا"_s, u"الاجتماع يوم الخميس.|هل يمكنك الحضور؟|شكرا"_s},
            {u"This paragraph was wrapped by the program that wrote it, as\nmany do, and goes on here. Next one."_s,
             u"This paragraph was wrapped by the program that wrote it, as many do, and goes on here.|Next one."_s},
            {u"これは長い文で、途中で\n改行されています。"_s, u"これは長い文で、途中で改行されています。"_s},
            {u"We meet at 7 a.m. A meeting room is free. Come at 5 p.m. Friday or 6 p.m. CET today."_s,
             u"We meet at 7 a.m.|A meeting room is free.|Come at 5 p.m. Friday or 6 p.m. CET today."_s},
            {u"Hi Anna,\nplease bring:\n- the keys\n- the map\n1. first\nThanks"_s,
             u"Hi Anna,|please bring:|- the keys|- the map|1. first|Thanks"_s}};
        for (const auto& [text, expected] : rows) {
            QCOMPARE(sentences(text, 100), expected.split(u'|'));
            QCOMPARE(sentences(text, 1), expected.split(u'|').mid(0, 1));
        }
    }

    void textRankPrefersWhatOthersShare()
    {
        const std::vector<QStringList> words = {{u"weather"_s, u"nice"_s},
                                                {u"pump"_s, u"delivery"_s, u"thursday"_s, u"warehouse"_s},
                                                {u"pump"_s, u"delivery"_s},
                                                {u"thursday"_s, u"warehouse"_s},
                                                {u"lunch"_s}};
        const std::vector<double> ranks = textRank(words);
        QCOMPARE(std::max_element(ranks.begin(), ranks.end()) - ranks.begin(), 1);
        // What nothing shares keeps what damping leaves: 1 − 0.85.
        QVERIFY(qAbs(ranks[0] - 0.15) < 1e-9 && qAbs(ranks[4] - 0.15) < 1e-9);
        // Among the connected ones the weights are conserved.
        QVERIFY(qAbs(ranks[1] + ranks[2] + ranks[3] - 3) < 1e-4);
        QVERIFY(qAbs(ranks[2] - ranks[3]) < 1e-9);
        QCOMPARE(bestSentences(words, 2).size(), std::size_t(2));
        QCOMPARE(bestSentences({words[2], words[2], words[1]}, 3).size(), std::size_t(2)); // a repetition is left out
        QVERIFY(textRank({}).empty() && bestSentences({}, 5).empty());
    }

    void shortAndEmptyMessages()
    {
        const BuiltinEngine engine;
        QCOMPARE(written(engine.summarize("Yes, Thursday.\n-- \nTom")), std::string("Yes, Thursday."));
        QCOMPARE(written(engine.summarize("Fine. See you.")), std::string("Fine. See you."));
        for (const char* unreadable : {"", " \n ", "\x01\x02\x03\x04\x05"}) {
            QVERIFY(written(engine.summarize(unreadable)).find("no text") != std::string::npos);
            QVERIFY(!written(engine.reply(unreadable, {})).empty());
            QVERIFY(engine.readableText(unreadable).empty());
        }
    }

    void aSummaryKeepsWhatTheReaderMustKnow()
    {
        struct Row {
            const char* text;
            const char* contained;
            const char* left;
        };
        const std::vector<Row> rows = {
            {"Dear Daniel,\n\nI am writing about the 2,500 copies of your spring catalogue that we promised for "
             "Monday, 10 March. One of our two folding machines broke down on Friday evening, and the spare part will "
             "not reach us before the end of this week. We therefore have to move your delivery to Tuesday, 18 "
             "March.\n\nThe printing itself is finished and the colours match the proof that you signed on 20 "
             "February. Only folding, stapling and packing are left, which takes us three working days once the "
             "machine runs again.\n\nSince the delay is ours, we will deduct eight per cent from the invoice and carry "
             "the cost of the courier. If you need some copies earlier for the trade fair in Leeds, we can fold up to "
             "300 by hand and have them with you by Wednesday, 12 March. Please tell me by noon on Thursday whether "
             "you would like that, so that I can plan the shift.\n\nI am sorry for the trouble this causes you, and I "
             "will ring you as soon as the technician has been.\n\nKind regards,\nHelen\n",
             "18 March|by noon on Thursday", "Kind regards|trouble this causes"},
            {"Hallo Anna,\n\ndas Wetter hier ist schön. Das Wetter war gestern schön. Das schöne Wetter macht Freude. "
             "Das Wetter hier macht Freude. Die Rechnung vom 12. April über 480 Euro ist offen. Bitte überweisen Sie "
             "sie bis zum 3. Mai.\n\nMit freundlichen Grüßen aus dem schönen Hamburg",
             "480 Euro|Bitte überweisen", "Mit freundlichen"},
            {"مرحبا آنا،\n\nتم تأجيل اجتماع المشروع إلى يوم الخميس. يحتاج اجتماع المشروع إلى التقرير النهائي. الطقس "
             "جميل اليوم. أرسلي التقرير النهائي قبل يوم الخميس من فضلك. أكلت تفاحة كبيرة. القطة نائمة هناك. التقرير "
             "النهائي للمشروع مهم جدا.",
             "التقرير", "القطة"},
            {"田中様\n\n会議の日程が変更になりました。会議の場所は本社の三階です。会議の天気が良いです。昼食はカレーで"
             "した。会議の資料を木曜日までに送ってください。会議の件、よろしくお願いいたします。どうぞよろしくお願いい"
             "たします。\n\n佐藤",
             "木曜日までに送ってください", "どうぞよろしく|ご不明な点"},
            {"The new version of the library is out. It repairs the memory leak in the reader. The reader is faster "
             "too. The documentation was rewritten for the new version. The old version gets no more "
             "repairs.\n\nUnsubscribe from this list of the new version of the library at any time.\nYou are receiving "
             "this message because you follow the new version of the library.",
             "version", "Unsubscribe|You are receiving"},
            {"Dear all,\n\nfor the trip on Friday at 9:30 please bring:\n- the blue keys for the boat house\n- the "
             "map\n- warm clothes for the night\n\nThe boat house is old. Its roof was mended. The lake is deep. The "
             "water was cold last year. The fish were small. The night was calm.",
             "- the blue keys|- the map|- warm clothes", ""},
            {"The plan for the trip is ready. The trip takes three days. Could you book the boat house for the "
             "trip?\n\nThings for the trip on Friday:\n- the keys for the trip\n- the map for the trip\n- the rope for "
             "the trip\n- the lamp for the trip\n- the food for the trip\n- the tent for the trip\n- the knife for the "
             "trip\n\nThe weather will be fine. The lake is deep.",
             "book the boat house", "- the keys|- the map|- the knife"}};
        for (const auto& [text, contained, left] : rows) {
            const QString summary = QString::fromStdString(written(BuiltinEngine().summarize(text)));
            // Some of the message's own sentences, in their order.
            const QStringList all = sentences(QString::fromUtf8(text), 100);
            qsizetype last = -1;
            for (const QString& line : summary.split(u'\n')) {
                const qsizetype index = all.indexOf(line, last + 1);
                QVERIFY2(index > last, qPrintable(line));
                last = index;
            }
            QVERIFY(summary.count(u'\n') + 1 < all.size());
            for (const QString& part : QString::fromUtf8(contained).split(u'|')) {
                QVERIFY2(summary.contains(part), qPrintable(summary));
            }
            for (const QString& part : QString::fromUtf8(left).split(u'|', Qt::SkipEmptyParts)) {
                QVERIFY2(!summary.contains(part), qPrintable(summary));
            }
        }
    }

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
            {english, "What colour has the elephant?", "+Nothing in the message fits|+language model"},
            {english, "", "+Nothing in the message fits"},
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

    /// Each of these once took a way that grows with the square of the size: the test's time limit is what fails. What
    /// is hostile as mail or as HTML ends in the reader of mail.
    void hugeTextsEnd()
    {
        const QByteArray sentence = "The delivery of part number seven moves to Thursday because of the weather. ";
        const BuiltinEngine engine;
        for (const QByteArray& body :
             {sentence.repeated(300'000), QByteArray(25'000'000, 'x'), QByteArray("--x\n\n").repeated(400'000),
              QByteArray("> \nwrote:\n").repeated(300'000), QByteArray(2'000'000, '.'),
              QByteArray("a. ").repeated(700'000)}) {
            const std::string mail = body.toStdString();
            const std::string summary = written(engine.summarize(mail));
            QVERIFY(!summary.empty() && summary.size() < 250'000);
            const std::string reply = written(engine.reply(mail, "Anna"));
            QVERIFY(!reply.empty() && reply.size() < 10'000);
            // The message as a question, too, and as what was said before.
            const std::string text = engine.readableText(mail);
            const std::string answer = written(engine.answer(text, {}, mail));
            const std::vector<ThreadMessage> earlier(40, {ThreadMessage::Role::User, text.substr(0, 8000)});
            QVERIFY(!answer.empty() && answer.size() < 250'000);
            QVERIFY(!written(engine.answer(text, earlier, "And when?")).empty());
        }
    }
};

QUILLMATE_TEST(EngineTest, QCoreApplication)
#include "EngineTest.moc"
