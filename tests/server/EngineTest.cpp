#include "server/WrittenText.h"
#include "server/engine/BuiltinEngine.h"
#include "server/engine/Sentences.h"
#include "server/engine/TextRank.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

#include <algorithm>

using namespace quillmate::server;
using namespace Qt::StringLiterals;

class EngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsSplitIntoSentences()
    {
        struct Row {
            QString text;
            QString sentences;
        };
        const std::vector<Row> rows = {
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
