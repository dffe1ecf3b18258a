#include "mail/QuotedText.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// What the sender of a message wrote themselves.
class QuotedTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void quotesAndSignaturesAreDropped_data()
    {
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const char* text) { QTest::newRow(name) << QString::fromUtf8(text); };
        row("nothing to drop", "Mine: one.\nMine two.");
        row("quoted lines",
            "Mine: one.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom <t@b.org> wrote:\n> Old.\n>> Older.\n\nMine two.");
        row("attribution on two lines",
            "Mine: one.\nMine two.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom Smith\n<t@b.org> wrote:\n> Old.");
        row("bars as quote marks",
            "Mine: one.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom <t@b.org> wrote:\n| Old.\n| | Older.\n\nMine two.");
        row("signature", "Mine: one.\nMine two.\n-- \nTom\nACME");
        row("phone", "Mine: one.\nMine two.\n\nSent from my iPhone");
        row("German", "Mine: one.\nMine two.\n\nAm 03.03.25 um 10:00 schrieb Tom <t@b.org>:\n> Alt.\n\nVon meinem "
                      "iPhone gesendet");
        row("French", "Mine: one.\nMine two.\n\nLe lun. 3 mars 2025 à 10:00, Tom <t@b.org> a écrit :\n> "
                      "Vieux.\n\nEnvoyé de mon iPhone");
        row("Spanish",
            "Mine: one.\nMine two.\n\nEl lun, 3 mar 2025 a las 10:00, Tom (<t@b.org>) escribió:\n\n> Viejo.");
        row("Japanese", "Mine: one.\nMine two.\n\n2025年3月3日(月) 10:00 Tom <t@b.org>:\n> 古い。\niPhoneから送信");
        row("Arabic", "Mine: one.\nMine two.\n\nفي الاثنين، 3 مارس 2025 كتب Tom:\n> قديم.");
        row("Outlook", "Mine: one.\nMine two.\n\n-----Original Message-----\nFrom: Tom\nOld.");
        row("German Outlook", "Mine: one.\nMine two.\n\nVon: Tom\nGesendet: Montag\nAn: Anna\nBetreff: Alt\n\nAlt.");
        row("Japanese Outlook",
            "Mine: one.\nMine two.\n\n差出人: Tom\n送信日時: 2025年3月3日\n宛先: Anna\n件名: 古い\n\n古い。");
        row("unmarked quote", "Mine: one.\nMine two.\n\nOn 3 Mar 2025, at 10:00, Tom <t@b.org> wrote:\n\nOld.");
        row("list footer", "Mine: one.\nMine two.\n_______________________________________________\nlist mailing list");
    }

    void quotesAndSignaturesAreDropped()
    {
        QFETCH(QString, text);
        QCOMPARE(ownText(text).simplified(), QStringLiteral("Mine: one. Mine two."));
    }

    void linesThatBeginWithABarAreNotAlwaysQuotes()
    {
        for (const char* text : {"Prices on 3.4.:\n| pens | 3 |\n| caps | 4 |\nBye.", "The set is\n|x < 3\nas said."}) {
            QCOMPARE(ownText(QString::fromUtf8(text)), QString::fromUtf8(text));
        }
    }

    void aBareForwardGivesTheForwardedText()
    {
        QCOMPARE(ownText(QStringLiteral(
                     "---------- Forwarded message ---------\nFrom: Tom\nDate: today\nSubject: x\nTo: A\n\nThe news.")),
                 QStringLiteral("The news."));
        QCOMPARE(ownText(QStringLiteral("> Only\n> quoted.")), QStringLiteral("Only\nquoted."));
    }
};

QUILLMATE_TEST(QuotedTextTest, QCoreApplication)
#include "QuotedTextTest.moc"
