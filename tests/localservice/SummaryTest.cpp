#include "localservice/WrittenText.h"
#include "localservice/engine/BuiltinEngine.h"

#include <QTest>

using namespace quillmate::localservice;

/// What a summary must not leave out, and what it must.
class SummaryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSummaryKeepsWhatTheReaderMustKnow_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("contained");
        QTest::addColumn<QStringList>("left");
        const auto row = [](const char* name, const char* text, const char* contained, const char* left) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(contained).split(u'|')
                                << QString::fromUtf8(left).split(u'|', Qt::SkipEmptyParts);
        };
        row("date and answer needed",
            "Dear Daniel,\n\nI am writing about the 2,500 copies of your spring catalogue that we promised for Monday, "
            "10 "
            "March. One of our two folding machines broke down on Friday evening, and the spare part will not reach us "
            "before the end of this week. We therefore have to move your delivery to Tuesday, 18 March.\n\nThe "
            "printing "
            "itself is finished and the colours match the proof that you signed on 20 February. Only folding, stapling "
            "and packing are left, which takes us three working days once the machine runs again.\n\nSince the delay "
            "is "
            "ours, we will deduct eight per cent from the invoice and carry the cost of the courier. If you need some "
            "copies earlier for the trade fair in Leeds, we can fold up to 300 by hand and have them with you by "
            "Wednesday, 12 March. Please tell me by noon on Thursday whether you would like that, so that I can plan "
            "the "
            "shift.\n\nI am sorry for the trouble this causes you, and I will ring you as soon as the technician has "
            "been.\n\nKind regards,\nHelen\n",
            "18 March|by noon on Thursday", "Kind regards|trouble this causes");
        row("German amount and request",
            "Hallo Anna,\n\ndas Wetter hier ist schön. Das Wetter war gestern schön. Das schöne Wetter macht Freude. "
            "Das "
            "Wetter hier macht Freude. Die Rechnung vom 12. April über 480 Euro ist offen. Bitte überweisen Sie sie "
            "bis zum 3. "
            "Mai.\n\n"
            "Mit freundlichen Grüßen aus dem schönen Hamburg",
            "480 Euro|Bitte überweisen", "Mit freundlichen");
        row("Japanese closing",
            "田中様\n\n会議の日程が変更になりました。会議の場所は本社の三階です。会議の天気が良いです。昼食はカレーでし"
            "た。"
            "会議の資料を木曜日までに送ってください。会議の件、よろしくお願いいたします。どうぞよろしくお願いいたします"
            "。\n\n佐藤",
            "木曜日までに送ってください", "どうぞよろしく|ご不明な点");
        row("list footer",
            "The new version of the library is out. It repairs the memory leak in the reader. The reader is faster "
            "too. "
            "The documentation was rewritten for the new version. The old version gets no more repairs.\n\n"
            "Unsubscribe from this list of the new version of the library at any time.\nYou are receiving this message "
            "because you follow the new version of the library.",
            "version", "Unsubscribe|You are receiving");
        row("short list whole",
            "Dear all,\n\nfor the trip on Friday at 9:30 please bring:\n- the blue keys for the boat house\n- the map\n"
            "- warm clothes for the night\n\nThe boat house is old. Its roof was mended. The lake is deep. The water "
            "was "
            "cold last year. The fish were small. The night was calm.",
            "- the blue keys|- the map|- warm clothes", "");
        row("long list left out",
            "The plan for the trip is ready. The trip takes three days. Could you book the boat house for the trip?\n\n"
            "Things for the trip on Friday:\n- the keys for the trip\n- the map for the trip\n- the rope for the trip\n"
            "- the lamp for the trip\n- the food for the trip\n- the tent for the trip\n- the knife for the trip\n\n"
            "The weather will be fine. The lake is deep.",
            "book the boat house", "- the keys|- the map|- the knife");
    }

    void aSummaryKeepsWhatTheReaderMustKnow()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, contained);
        QFETCH(QStringList, left);
        const QString summary = QString::fromStdString(written(BuiltinEngine().summarize(text.toStdString())));
        for (const QString& part : contained) {
            QVERIFY2(summary.contains(part), qPrintable(summary));
        }
        for (const QString& part : left) {
            QVERIFY2(!summary.contains(part), qPrintable(summary));
        }
    }
};

QTEST_GUILESS_MAIN(SummaryTest)
#include "SummaryTest.moc"
