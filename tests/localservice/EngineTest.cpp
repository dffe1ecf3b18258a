#include "localservice/MailFixtures.h"
#include "localservice/WrittenText.h"
#include "localservice/engine/BuiltinEngine.h"
#include "localservice/engine/Sentences.h"
#include "localservice/engine/TextRank.h"

#include <QTest>

#include <algorithm>
#include <numeric>

using namespace quillmate::localservice;

class EngineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsSplitIntoSentences_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");
        const auto row = [](const char* name, const char* text, const char* expected) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(expected).split(u'|');
        };
        row("plain", "One is here. Two is there! Is three? Yes…", "One is here.|Two is there!|Is three?|Yes…");
        row("abbreviations", "Dr. Smith of Inc. Corp met e.g. Mr. J. Doe. They left.",
            "Dr. Smith of Inc. Corp met e.g. Mr. J. Doe.|They left.");
        row("German", "Das gilt z.B. am 3. Mai bzw. im Juni. Danach ca. 5 Tage.",
            "Das gilt z.B. am 3. Mai bzw. im Juni.|Danach ca. 5 Tage.");
        row("numbers and links", "It costs 3.50 at https://a.b/c.d?e today. Fine.",
            "It costs 3.50 at https://a.b/c.d?e today.|Fine.");
        row("quotes", "“Is it done?” Tom asked. (It is.) Good.", "“Is it done?”|Tom asked.|(It is.)|Good.");
        row("Japanese", "会議は木曜日です。資料を送ってください！よろしいですか？はい",
            "会議は木曜日です。|資料を送ってください！|よろしいですか？|はい");
        row("Arabic", "الاجتماع يوم الخميس. هل يمكنك الحضور؟ شكرا", "الاجتماع يوم الخميس.|هل يمكنك الحضور؟|شكرا");
        row("wrapped lines",
            "This paragraph was wrapped by the program that wrote it, as\nmany do, and goes on here. Next one.",
            "This paragraph was wrapped by the program that wrote it, as many do, and goes on here.|Next one.");
        row("wrapped Japanese", "これは長い文で、途中で\n改行されています。",
            "これは長い文で、途中で改行されています。");
        row("hours", "We meet at 7 a.m. A meeting room is free. Come at 5 p.m. Friday or 6 p.m. CET today.",
            "We meet at 7 a.m.|A meeting room is free.|Come at 5 p.m. Friday or 6 p.m. CET today.");
        row("greeting, list", "Hi Anna,\nplease bring:\n- the keys\n- the map\n1. first\nThanks",
            "Hi Anna,|please bring:|- the keys|- the map|1. first|Thanks");
    }

    void textIsSplitIntoSentences()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        QCOMPARE(sentences(text, 100), expected);
        QCOMPARE(sentences(text, 1), expected.mid(0, 1));
    }

    void textRankPrefersWhatOthersShare()
    {
        const std::vector<QStringList> words = {{QStringLiteral("weather"), QStringLiteral("nice")},
                                                {QStringLiteral("pump"), QStringLiteral("delivery"),
                                                 QStringLiteral("thursday"), QStringLiteral("warehouse")},
                                                {QStringLiteral("pump"), QStringLiteral("delivery")},
                                                {QStringLiteral("thursday"), QStringLiteral("warehouse")},
                                                {QStringLiteral("lunch")}};
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

    void aSummaryIsMadeOfTheMessagesOwnSentences_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("contained");
        const auto row = [](const char* name, const char* text, const char* contained) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(contained);
        };
        row("English",
            "Dear team,\n\nthe launch of the new website moves to Friday. The launch needs the approval of marketing. "
            "Marketing "
            "wants new pictures for the website. The weather has been lovely. My dog likes it. We had cake. Could you "
            "send the "
            "pictures to marketing before the launch on Friday? The website texts are ready. Lunch was good. See "
            "you.\n\nBest,\nTom",
            "launch");
        row("German",
            "Hallo zusammen,\n\ndie Lieferung der Pumpen verschiebt sich auf Donnerstag. Die Pumpen werden im Lager "
            "gebraucht. Das "
            "Lager ist am Donnerstag besetzt. Das Wetter ist schön. Ich war gestern im Kino. Bitte bestätigen Sie die "
            "Lieferung "
            "der Pumpen an das Lager. Mein Hund schläft viel.\n\nMit freundlichen Grüßen\nTom",
            "Pumpen");
        row("Japanese",
            "田中様\n\n会議の日程が木曜日に変更になりました。会議の場所は本社の三階です。会議の資料を木曜日までに送って"
            "ください。天気が良いです。昼食は"
            "カレーでした。会議の資料には予算を含めてください。犬が好きです。\n\n佐藤",
            "会議");
        row("Arabic",
            "مرحبا آنا،\n\nتم تأجيل اجتماع المشروع إلى يوم الخميس. يحتاج اجتماع المشروع إلى التقرير النهائي. الطقس "
            "جميل اليوم. "
            "أرسلي التقرير النهائي قبل يوم الخميس من فضلك. أكلت تفاحة كبيرة. القطة نائمة هناك. التقرير النهائي للمشروع "
            "مهم جدا.",
            "التقرير");
    }

    void aSummaryIsMadeOfTheMessagesOwnSentences()
    {
        QFETCH(QString, text);
        QFETCH(QString, contained);
        const QStringList all = sentences(text, 100);
        const QStringList summary =
            QString::fromStdString(written(BuiltinEngine().summarize(text.toStdString()))).split(u'\n');
        QVERIFY(!summary.isEmpty() && summary.size() <= 5 && summary.size() < all.size());
        QVERIFY(
            std::any_of(summary.begin(), summary.end(), [&](const QString& line) { return line.contains(contained); }));
        qsizetype last = -1;
        for (const QString& sentence : summary) {
            const qsizetype index = all.indexOf(sentence);
            QVERIFY2(index > last, qPrintable(sentence));
            last = index;
        }
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

    /// Each of these once took a way that grows with the square of the size, or a level of stack for each byte: the
    /// test's time limit is what fails.
    void hugeAndHostileMessagesEnd_data()
    {
        QTest::addColumn<QByteArray>("body");
        const QByteArray sentence = "The delivery of part number seven moves to Thursday because of the weather. ";
        QTest::newRow("25 MB plain") << sentence.repeated(25'000'000 / static_cast<int>(sentence.size()));
        QTest::newRow("25 MB attachment")
            << multipart("b", {plainPart, "Content-Type: application/pdf\nContent-Transfer-Encoding: base64\n\n" +
                                              QByteArray(QByteArray(76, 'A') + "\n").repeated(330'000)});
        QTest::newRow("25 MB of one word") << QByteArray(25'000'000, 'x');
        QTest::newRow("HTML tags never closed") << "<html></p>" + QByteArray("<div><style><!-- <").repeated(400'000);
        QTest::newRow("HTML tag starts, one end")
            << "<html><p>Text</p>" + QByteArray("<").repeated(2'000'000) + ">" + QByteArray("</p>");
        QTest::newRow("HTML blocks never closed") << "<html></p>" + QByteArray("<div>x").repeated(400'000);
        QTest::newRow("HTML attributes") << "<html></p><div " + QByteArray("a = b ").repeated(300'000) + ">x";
        QTest::newRow("ampersands") << "<html></p>" + QByteArray(2'000'000, '&');
        QTest::newRow("dashes") << QByteArray("--x\n\n").repeated(400'000);
        QTest::newRow("quote marks") << QByteArray("> \nwrote:\n").repeated(300'000);
        QTest::newRow("full stops") << QByteArray(2'000'000, '.');
        QTest::newRow("full stops and blanks") << QByteArray("a. ").repeated(700'000);
        QByteArray nested;
        for (int level = 0; level < 20'000; ++level) {
            nested += "--b" + QByteArray::number(level) + "\nContent-Type: multipart/mixed; boundary=b" +
                      QByteArray::number(level + 1) + "\n\n";
        }
        QTest::newRow("parts in parts") << nested;
        QTest::newRow("messages in messages")
            << "--b\n" + QByteArray("Content-Type: message/rfc822\n\n").repeated(100'000) + "\n--b--\n";
        QTest::newRow("many parts") << "--b\n" + QByteArray(plainPart + "--b\n").repeated(100'000);
    }

    void hugeAndHostileMessagesEnd()
    {
        QFETCH(QByteArray, body);
        const BuiltinEngine engine;
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
};

QTEST_GUILESS_MAIN(EngineTest)
#include "EngineTest.moc"
