#include "hosts/preview/mail/ComposeDraft.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

namespace
{

const std::string head = "From: Ann Lee <ann@example.com>\nTo: Bo <bo@example.com>\nCc: Cy <cy@example.com>\n"
                         "Date: Tue, 4 Mar 2025 09:15:37 +0900\nSubject: Lunch\n";

} // namespace

/// What the preview's windows and the extension get of a message, and the drafts that answer it.
class MailDocumentTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void summary()
    {
        const MessageSummary summary =
            summarizeMessage("From: =?utf-8?Q?Ren=C3=A9?= <r@example.com>\n"
                             "Subject: =?utf-8?Q?two=0Alines?=\n"
                             "Date: Tue, 4 Mar 2025 09:15:37 +0530\n\n\n  Hello\n\n\tthere,  you\n");
        const auto date = QDateTime::fromString(u"2025-03-04T09:15:37+05:30"_qs, Qt::ISODate);
        QCOMPARE(summary, (MessageSummary{{"René", "r@example.com"}, "two lines", "Hello there, you", date}));
        QCOMPARE(summary.date.offsetFromUtc(), 19800);
    }

    void missingFields()
    {
        const MailDocument document = readDocument("Subject: nothing else\n\nText\n");
        QCOMPARE(document.message->fromAddress.addressString, std::nullopt);
        QVERIFY(!document.message->headers->contains("message-id"));
        QVERIFY(!document.summary.date.isValid());
        QVERIFY(document.replyTo.empty());
    }

    void extensionsHeaders()
    {
        const MailDocument document = readDocument(
            "Message-ID: <=?utf-8?Q?a?=@b>\nSubject: =?utf-8?Q?=C3=A9?=\nReceived: 1\nReceived: 2\n\nText\n");
        const MEMessage::Headers expected{
            {"message-id", {"<=?utf-8?Q?a?=@b>"}}, {"subject", {"\xC3\xA9"}}, {"received", {"1", "2"}}};
        QVERIFY(document.message->headers == expected);
    }

    void prefixes()
    {
        const char* rows[][3] = {
            {"Re", "Lunch", "Re: Lunch"},
            {"Re", "RE: Lunch", "RE: Lunch"},
            {"Re", "Re[2]: Lunch", "Re[2]: Lunch"},
            {"Re", "Re[2 Lunch", "Re: Re[2 Lunch"},
            {"Re", "Report: done", "Re: Report: done"},
            {"Re", "More: done", "Re: More: done"},
            {"Re", "", "Re: "},
            {"Fwd", "FW: Lunch", "FW: Lunch"},
            {"Fwd", "Re: Lunch", "Fwd: Re: Lunch"},
        };
        for (const auto& [prefix, subject, result] : rows) {
            QCOMPARE(QByteArray::fromStdString(prefixedSubject(prefix, subject)), result);
        }
    }

    void reply()
    {
        const QByteArray wrote = "\n\nOn Tue, 4 March 2025 at 09:15, Ann Lee wrote:\n";
        const std::pair<std::string, ComposeDraft> rows[] = {
            {head + "\nHi,\n\n> old\nBye\n",
             {"Ann Lee <ann@example.com>", "Re: Lunch", wrote.toStdString() + "> Hi,\n>\n>> old\n> Bye\n"}},
            {"Reply-To: desk@example.com\n" + head + "\n", {"desk@example.com", "Re: Lunch", wrote.toStdString()}},
            {"From: ann@example.com\nDate: soon\n\nHi\n",
             {"ann@example.com", "Re: ", "\n\nann@example.com wrote:\n> Hi\n"}},
            {"Subject: x\n\nHi\n", {"", "Re: x", "\n\nThe sender wrote:\n> Hi\n"}},
        };
        for (const auto& [source, expected] : rows) {
            const ComposeDraft draft = composeReply(readDocument(source));
            QVERIFY2(draft == expected, (draft.to + '\n' + draft.subject + '\n' + draft.body).c_str());
        }
    }

    void forward()
    {
        const ComposeDraft draft = composeForward(readDocument(head + "\nHi,\n> old\n"));
        const ComposeDraft expected{"", "Fwd: Lunch",
                                    "\n\n---------- Forwarded message ----------\nFrom: Ann Lee <ann@example.com>\n"
                                    "Date: Tue, 4 March 2025 at 09:15\nSubject: Lunch\nTo: Bo <bo@example.com>\n"
                                    "Cc: Cy <cy@example.com>\n\nHi,\n> old\n"};
        QVERIFY2(draft == expected, (draft.to + '\n' + draft.subject + '\n' + draft.body).c_str());
    }

    void longTextIsCutWithAWord()
    {
        const auto line = QByteArray("All work and no play makes a long message.\n");
        const std::string source = head + "\n" + line.repeated(2 * displayTextBytes / line.size()).toStdString();
        const MailDocument document = readDocument(source);
        QCOMPARE(document.message->rawData->size(), source.size());
        const std::string body = composeReply(document).body;
        QVERIFY(body.ends_with("> [The rest of this message is too long to be quoted.]\n"));
        QVERIFY(body.size() < displayTextBytes * 2);
    }
};

QUILLMATE_TEST(MailDocumentTest, QCoreApplication)
#include "MailDocumentTest.moc"
