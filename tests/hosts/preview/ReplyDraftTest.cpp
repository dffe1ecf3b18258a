#include "hosts/preview/mail/ReplyDraft.h"
#include "hosts/preview/mail/MessageStore.h"

#include <QTest>

using namespace quillmate;

namespace
{

const std::string head = "From: Ann Lee <ann@example.com>\nTo: Bo <bo@example.com>\nCc: Cy <cy@example.com>\n"
                         "Date: Tue, 4 Mar 2025 09:15:37 +0900\nSubject: Lunch\n";

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

} // namespace

class ReplyDraftTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void subject_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("result");

        QTest::newRow("reply") << "Re"
                               << "Lunch"
                               << "Re: Lunch";
        QTest::newRow("reply to a reply") << "Re"
                                          << "RE: Lunch"
                                          << "RE: Lunch";
        QTest::newRow("reply to a counted reply") << "Re"
                                                  << "Re[2]: Lunch"
                                                  << "Re[2]: Lunch";
        QTest::newRow("reply to a forward") << "Re"
                                            << "Fwd: Lunch"
                                            << "Re: Fwd: Lunch";
        QTest::newRow("a word that begins alike") << "Re"
                                                  << "Report: done"
                                                  << "Re: Report: done";
        QTest::newRow("an open bracket") << "Re"
                                         << "Re[2 Lunch"
                                         << "Re: Re[2 Lunch";
        QTest::newRow("forward") << "Fwd"
                                 << "Lunch"
                                 << "Fwd: Lunch";
        QTest::newRow("forward of a forward") << "Fwd"
                                              << "FW: Lunch"
                                              << "FW: Lunch";
        QTest::newRow("forward of a reply") << "Fwd"
                                            << "Re: Lunch"
                                            << "Fwd: Re: Lunch";
        QTest::newRow("no subject") << "Re"
                                    << ""
                                    << "Re: ";
    }

    void subject()
    {
        QFETCH(QString, prefix);
        QFETCH(QString, subject);
        QTEST(text(prefixedSubject(prefix.toStdString(), subject.toStdString())), "result");
    }

    void reply_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("body");

        const QString known = text(head);
        QTest::newRow("whole") << known + "\nHi,\n\n> old\nBye\n"
                               << "Ann Lee <ann@example.com>"
                               << "\n\nOn Tue, 4 March 2025 at 09:15, Ann Lee wrote:\n> Hi,\n>\n>> old\n> Bye\n";
        QTest::newRow("reply-to") << "Reply-To: desk@example.com\n" + known + "\nHi\n"
                                  << "desk@example.com"
                                  << "\n\nOn Tue, 4 March 2025 at 09:15, Ann Lee wrote:\n> Hi\n";
        QTest::newRow("no text") << known + "\n"
                                 << "Ann Lee <ann@example.com>"
                                 << "\n\nOn Tue, 4 March 2025 at 09:15, Ann Lee wrote:\n";
        QTest::newRow("no date, no name") << "From: ann@example.com\n\nHi\n"
                                          << "ann@example.com"
                                          << "\n\nann@example.com wrote:\n> Hi\n";
        QTest::newRow("nobody") << "Subject: x\n\nHi\n"
                                << ""
                                << "\n\nThe sender wrote:\n> Hi\n";
        QTest::newRow("date that is none") << "From: ann@example.com\nDate: soon\n\nHi\n"
                                           << "ann@example.com"
                                           << "\n\nann@example.com wrote:\n> Hi\n";
    }

    void reply()
    {
        QFETCH(QString, source);
        const Draft draft = replyDraft(readDocument(source.toStdString()));
        QTEST(text(draft.to), "to");
        QTEST(text(draft.body), "body");
    }

    void forward()
    {
        const Draft draft = forwardDraft(readDocument(head + "\nHi,\n> old\n"));
        QCOMPARE(text(draft.to), "");
        QCOMPARE(text(draft.subject), "Fwd: Lunch");
        QCOMPARE(text(draft.body), "\n\n---------- Forwarded message ----------\nFrom: Ann Lee <ann@example.com>\n"
                                   "Date: Tue, 4 March 2025 at 09:15\nSubject: Lunch\nTo: Bo <bo@example.com>\n"
                                   "Cc: Cy <cy@example.com>\n\nHi,\n> old\n");
    }

    void longTextIsCutWithAWord()
    {
        const std::string line = "All work and no play makes a long message.\n";
        std::string source = head + "\n";
        while (source.size() < displayTextBytes * 2) {
            source += line;
        }
        const MailDocument document = readDocument(source);
        QCOMPARE(document.message->rawData->size(), source.size());
        const QString body = text(replyDraft(document).body);
        QVERIFY(body.endsWith("> [The rest of this message is too long to be quoted.]\n"));
        QVERIFY(static_cast<std::size_t>(body.size()) < displayTextBytes * 2);
    }

    void samples_data()
    {
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("phrase");

        QTest::newRow("plain") << "Helen Marsh <helen.marsh@riverside-print.example>"
                               << "Re: Delivery of the spring catalogue moved to 18 March"
                               << "> Dear Daniel,";
        QTest::newRow("html-with-plain") << "Martina Vogel <martina.vogel@lakeside-cycling.example>"
                                         << "Re: Your place on the three-lake tour, 28 and 29 June"
                                         << "€95";
        QTest::newRow("quoted-printable")
            << "Étienne Garnier <etienne.garnier@agence-tilleuls.example>"
            << "Re: Votre candidature pour l’appartement de la rue des Tilleuls est acceptée"
            << "propriétaire souhaite";
        QTest::newRow("base64-attachment") << "Yusuf Demir <yusuf@demir-kitchens.example>"
                                           << "Re: Timetable for your kitchen"
                                           << "£140 more";
        QTest::newRow("long-thread") << "Ben Achterberg <ben.achterberg@millpond-garden.example>"
                                     << "Re: Water for the garden: pump, tanks or both?"
                                     << ">>>>>>>>>>>>>>> Rosa";
        QTest::newRow("arabic") << "سامر حداد <samer.haddad@neighbourhood-library.example>"
                                << "Re: دعوة إلى قراءة قصصية في حفل افتتاح مكتبة الحي"
                                << "> تحية طيبة وبعد،";
        QTest::newRow("japanese") << "田中 恵 <m.tanaka@aoba-travel.example>"
                                  << "Re: 社員旅行の宿の確定と遊覧船についてのご相談"
                                  << "> 佐藤様";
        QTest::newRow("no-body") << "Grace Lindqvist <grace.lindqvist@example.net>"
                                 << "Re: Train is 20 minutes late, please start dinner without me"
                                 << "Grace Lindqvist wrote:";
        QTest::newRow("mars") << "Owen Pritchard <owen.pritchard@hilltop-observers.example>"
                              << "Re: Observing night on Friday: Mars, and perhaps the comet"
                              << "> Dear Keziah,";
        QTest::newRow("newsletter") << "Hanneke Dekker <hanneke@saltmarsh-bakery.example>"
                                    << "Re: October at the bakery: rye week and a morning course"
                                    << "€4.80, half a loaf €2.60";
        QTest::newRow("crlf") << "Nora Petersen <nora.petersen@harbour-insurance.example>"
                              << "Re: Water damage in your cellar: what we need from you"
                              << "> Dear Mr Balogun,\n>\n> thank";
    }

    void samples()
    {
        QFETCH(QString, phrase);
        const std::string path = std::string(QUILLMATE_SAMPLES) + "/" + QTest::currentDataTag() + ".eml";
        const auto listed = listMessages(path);
        QVERIFY2(listed.hasValue(), listed ? "" : listed.error().text.c_str());
        const auto document = loadMessage(listed.value().front().location);
        QVERIFY(document.hasValue());
        const Draft draft = replyDraft(document.value());
        QTEST(text(draft.to), "to");
        QTEST(text(draft.subject), "subject");
        QVERIFY2(text(draft.body).contains(phrase), draft.body.c_str());
        QVERIFY(document.value().message->headers->contains("message-id"));
        QVERIFY(document.value().summary.date.isValid());
    }
};

QTEST_GUILESS_MAIN(ReplyDraftTest)
#include "ReplyDraftTest.moc"
