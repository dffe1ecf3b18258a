#include "server/WrittenText.h"
#include "server/engine/BuiltinEngine.h"
#include "server/engine/Sentences.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate::server;

/// What a summary must not leave out, and what it must.
class SummaryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
};

QUILLMATE_TEST(SummaryTest, QCoreApplication)
#include "SummaryTest.moc"
