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

    void whatTheExtensionReads()
    {
        const std::string readable = "Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: 8bit\n";
        const auto encoded = [](const std::string& type, const std::string& encoding, const std::string& body) {
            return (type.empty() ? "" : "Content-Type: " + type + "\n") +
                   (encoding.empty() ? "" : "Content-Transfer-Encoding: " + encoding + "\n") + "\n" + body;
        };
        const auto parts = [](const std::string& type, const std::vector<std::string>& bodies) {
            std::string source = "Content-Type: " + type + "; boundary=\"b c\"\n\n";
            for (const std::string& body : bodies) {
                source += "--b c\n" + body + "\n";
            }
            return source + "--b c--\n";
        };
        const std::string pgp = "-----BEGIN PGP MESSAGE-----\n\nhQ==\n-----END PGP MESSAGE-----\n";
        const std::string utf8 = "text/plain; charset=utf-8";
        const std::string same = "same";
        const std::optional<std::string> key; // Nothing to read without one.
        const struct {
            const char* name;
            std::string source;
            std::optional<std::string> read;
        } rows[] = {
            {"quoted-printable", encoded(utf8, "Quoted-Printable", "Gr=C3=BC=c3=9Fe, n=\numbers\n"),
             readable + "\nGrüße, numbers\n"},
            {"base64 with a list's footer", encoded(utf8, "base64", "R3LDvMOfZQ0K\nZQ==\n____\nfooter"),
             readable + "\nGrüße\ne"},
            {"base64 of nobody", encoded(utf8, "base64", "*!*"), readable + "\n"},
            {"a byte order mark", encoded(utf8, "quoted-printable", "=EF=BB=BFa"), readable + "\na"},
            {"ISO-8859-1",
             encoded("text/plain; charset=ISO-8859-1", "8bit",
                     "Gr\xfc\xdf"
                     "e"),
             readable + "\nGrüße"},
            {"ISO-2022-JP", encoded("text/plain; charset=ISO-2022-JP", "7bit", "\x1b$B8+@Q\x1b(B"),
             readable + "\n見積"},
            {"GB18030", encoded("text/plain; charset=GB18030", "base64", "xOO6ww=="), readable + "\n你好"},
            {"an unknown charset", encoded("text/plain; charset=x-own", "base64", "w7w="), readable + "\nü"},
            {"nothing said of bytes", "Subject: a\n\n\xfc", "Subject: a\n" + readable + "\nü"},
            {"a type without charset", encoded("text/html", "base64", "PGI+"),
             "Content-Type: text/html; charset=utf-8\nContent-Transfer-Encoding: 8bit\n\n<b>"},
            {"two types",
             encoded("text/plain; x", "base64", "YQ==").insert(0, "Content-Type: text/plain;\n charset=a\n"),
             "Content-Type: text/plain;\n charset=utf-8\nContent-Transfer-Encoding: 8bit\n\na"},
            {"the rest of the header, byte by byte",
             "X-A: \xfc\n folded\ncontent-type: text/plain;\n\tCHARSET=\"iso-8859-1\";\n\tx=\"a;charset=b\"\n"
             "Content-Transfer-Encoding:\n quoted-printable\nSubject: a\n\n=FC",
             "X-A: \xfc\n folded\ncontent-type: text/plain;\n\tCHARSET=utf-8;\n\tx=\"a;charset=b\"\n"
             "Content-Transfer-Encoding: 8bit\nSubject: a\n\nü"},
            {"readable as it is", encoded(utf8, "8bit", "ü =41"), same},
            {"ASCII", encoded("", "7bit", "a =41"), same},
            {"an encoding nobody knows", encoded("text/plain; charset=iso-8859-1", "x-own", "a"), same},
            {"several parts", parts("multipart/mixed", {encoded("text/plain", "base64", "YQ==")}), same},
            {"a signed message",
             parts("multipart/signed", {encoded("", "", "a"), encoded("application/pgp-signature", "", "b")}), same},
            {"a text about encryption", encoded("", "", "See:\n" + pgp), same},
            {"no end of the header", "Content-Type: multipart/encrypted", same},
            {"PGP/MIME", parts("Multipart/Encrypted", {"a"}), key},
            {"S/MIME", encoded("application/pkcs7-mime; smime-type=signed-data", "base64", "YQ=="), key},
            {"S/MIME by its name", encoded("application/octet-stream;\n NAME=\"smime.p7m\"", "base64", "YQ=="), key},
            {"PGP in a text", encoded("text/plain", "", "\n " + pgp), key},
            {"PGP in an encoded text", encoded("", "quoted-printable", "=2D----BEGIN PGP MESSAGE-----\n"), key},
            {"encrypted, from a list",
             parts("multipart/mixed", {"Content-Type: multipart/encrypted; boundary=x\n\n--x--", "\nfooter"}), key},
            {"taken apart by a server",
             parts("multipart/mixed", {encoded("text/plain", "", ""), encoded("application/pgp-encrypted", "", "1")}),
             key},
        };
        for (const auto& [name, source, read] : rows) {
            const MailDocument document = readDocument(source);
            const auto& raw = document.message->rawData;
            const auto found = raw ? std::optional(std::string(*raw)) : std::nullopt;
            QVERIFY2(found == (read == same ? source : read), (name + (": " + found.value_or("nothing"))).c_str());
        }
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
