#include "localservice/WrittenText.h"
#include "localservice/engine/BuiltinEngine.h"
#include "localservice/engine/Questions.h"
#include "localservice/engine/SenderName.h"

#include <QTest>

using namespace quillmate::localservice;

namespace
{

QString replyTo(const QString& mail, const std::string& user = {})
{
    return QString::fromStdString(written(BuiltinEngine().reply(mail.toStdString(), user)));
}

} // namespace

/// What a draft of a reply says, and to whom.
class ReplyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSendersNameIsFound_data()
    {
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* end, const char* name) {
            QTest::newRow(end) << QString::fromUtf8(end) << QString::fromUtf8(name);
        };
        row("Best regards,\nAna Silva", "Ana Silva");
        row("-- \nAna", "Ana");
        row("--\nAna Silva | Sales\nRiverside Print\nTel. 01632 960 145", "Ana Silva");
        row("Best,\n-- \nAna Silva", "Ana Silva");
        row("Viele Grüße\nJonas", "Jonas");
        row("Viele Grüße aus Hamburg\n\nJonas Weber\nVertrieb\n+49 40 123456", "Jonas Weber");
        row("Mit freundlichen Grüßen\n\ni. A. Prof. Dr. med. Jonas Weber", "Prof. Dr. Jonas Weber");
        row("Liebe Grüße\nDeine Anna", "Anna");
        row("Danke und Gruß, Jonas", "Jonas");
        row("LG Jonas", "Jonas");
        row("cheers,\ntom", "Tom");
        row("Bien cordialement,\n\nClaire DUPONT\nDirectrice\n01 23 45 67 89", "Claire Dupont");
        row("Je vous prie d’agréer, Madame, mes salutations distinguées.\n\nMme Claire Le Gall", "Mme Claire Le Gall");
        row("Cordialement,\nDUPONT Claire\nAgence des Tilleuls", "Claire Dupont");
        row("Un saludo,\nMarta", "Marta");
        row("Reciba un cordial saludo,\n\nD. José García López\nDirector de ventas", "José García López");
        row("Herzliche Grüße\nFamilie Müller", "Familie Müller");
        row("Best regards / Mit freundlichen Grüßen\n\n[cid:logo.png]\nPeter Klein", "Peter Klein");
        row("Muchas gracias,\nDra. Marta de la Fuente Ruiz", "Dra. Marta de la Fuente Ruiz");
        row("Kind regards\n\nANNE-MARIE O'BRIEN, PhD", "Anne-Marie O'Brien");
        row("Best wishes,\n*Maarten van den Berg* (he/him)\nCEO", "Maarten van den Berg");
        row("Thanks for your help,\nJ. P. Smith Jr.", "J. P. Smith");
        row("Met hartelijke groet,\nJan", "Jan");
        row("Ben", "Ben");
        row("Helen Marsh\nProduction, Riverside Print\nTelephone 01632 960 145", "Helen Marsh");
        row("Kind regards,\nHelen\n\nThis e-mail and any files with it are confidential and meant for the addressee "
            "only.",
            "Helen");
        row("Best regards,\nAna\n\nSent from my iPhone", "Ana");
        row("よろしくお願いいたします。\n\n青葉観光\n田中 恵子", "田中 恵子");
        row("مع خالص الشكر والتقدير،\nسامر حداد\nمدير المكتبة", "سامر حداد");
        // Where no line is a name for sure:
        row("Best regards,\nThe Riverside Team", "");
        row("Mit freundlichen Grüßen\nIhr Kundenservice", "");
        row("Thanks Tom!", "");
        row("Thank you for your order.\n\nDelivery Details\nMonday morning", "");
        row("Coming so far:\n\nPaul\nAnna", "");
        row("See you on Monday", "");
        row("Best regards", "");
        row("Sent from my phone", "");
        row("Fine.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom <t@b.org> wrote:\n> Hello\n> Best regards,\n> Anna Old", "");
        row("Best,\nTom\n\n-----Original Message-----\nFrom: Ada\nBest regards,\nAda Old", "Tom");
    }

    void theSendersNameIsFound()
    {
        QFETCH(QString, end);
        QFETCH(QString, name);
        const QString text = QStringLiteral("Hello Daniel,\n\nthe pumps that you ordered are here.\n\n");
        const auto found = senderName(text + end);
        QCOMPARE(found ? (found->title + u' ' + found->whole()).trimmed() : QString(), name);
        // A bare forward was signed by nobody.
        QVERIFY(!senderName(QStringLiteral("> ") + QString(text + end).replace(u'\n', QStringLiteral("\n> "))));
    }

    void repliesSpeakToTheSenderInTheMessagesLanguageAndTone_data()
    {
        QTest::addColumn<QString>("mail");
        QTest::addColumn<QString>("reply");
        const auto row = [](const char* name, const char* mail, const char* reply) {
            QTest::newRow(name) << QString::fromUtf8(mail) << QString::fromUtf8(reply);
        };
        row("English", "The room is booked. Will you come on Friday?\n\nBest regards,\nAna Silva",
            "Hello Ana,\n\nThank you for your message.\n\nAbout your question:\n“Will you come on Friday?”\n[your "
            "answer]\n\nKind regards,\nUser");
        row("English title, two questions",
            "The room is booked. Hi Tom, will you come on Friday? And who brings the keys?\n\nSincerely,\nDr. Helen "
            "Marsh",
            "Hello Dr. Marsh,\n\nThank you for your message.\n\nAbout your questions:\n“Will you come on "
            "Friday?”\n[your "
            "answer]\n\n“And who brings the keys?”\n[your answer]\n\nKind regards,\nUser");
        row("German", "Der Raum ist gebucht. Kommen Sie am Freitag?\n\nMit freundlichen Grüßen\nJonas Weber",
            "Guten Tag Jonas Weber,\n\nvielen Dank für Ihre Nachricht.\n\nZu Ihrer Frage:\n„Kommen Sie am Freitag?“\n"
            "[Ihre Antwort]\n\nMit freundlichen Grüßen\nUser");
        row("German, familiar", "Der Raum ist gebucht. Kommst du?\n\nLiebe Grüße\nJonas Weber",
            "Hallo Jonas,\n\nvielen Dank für deine Nachricht.\n\nZu deiner Frage:\n„Kommst du?“\n[deine "
            "Antwort]\n\nViele Grüße\nUser");
        row("French", "La salle est réservée. Venez-vous avec nous vendredi ?\n\nCordialement,\nClaire Dupont",
            "Bonjour Claire,\n\nMerci pour votre message.\n\nÀ propos de votre question\u00A0:\n«\u00A0Venez-vous avec "
            "nous vendredi ?\u00A0»\n[votre réponse]\n\nBien cordialement,\nUser");
        row("French, familiar, titled",
            "La salle est réservée pour toi. Tu viens vendredi ?\n\nBises\nMme Claire Dupont",
            "Bonjour Claire,\n\nMerci pour ton message.\n\nÀ propos de ta question\u00A0:\n«\u00A0Tu viens vendredi "
            "?\u00A0»\n[ta réponse]\n\nBien à toi,\nUser");
        row("Spanish", "La sala está reservada. ¿Viene usted con nosotros?\n\nUn saludo,\nMarta Ruiz",
            "Buenos días, Marta:\n\nGracias por su mensaje.\n\nSobre su pregunta:\n«¿Viene usted con "
            "nosotros?»\n[su respuesta]\n\nSaludos cordiales,\nUser");
        row("Spanish, familiar, no name", "La sala está reservada. ¿Vienes tú con nosotros?",
            "Hola:\n\nGracias por tu mensaje.\n\nSobre tu pregunta:\n«¿Vienes tú con nosotros?»\n[tu "
            "respuesta]\n\nUn saludo,\nUser");
        row("Japanese", "部屋を予約しました。金曜日に来られますか？\n\nよろしくお願いいたします。\n田中 恵子",
            "田中様\n\nお世話になっております。\n\nご連絡ありがとうございます。\n\nご質問について：\n"
            "「金曜日に来られますか？」\n［ご回答］\n\nよろしくお願いいたします。\nUser");
        row("Arabic", "تم حجز القاعة. هل ستأتي يوم الجمعة؟\n\nمع أطيب التحيات،\nسامر حداد",
            "مرحبًا سامر حداد،\n\nشكرًا على رسالتك.\n\nبخصوص سؤالك:\n«هل ستأتي يوم "
            "الجمعة؟»\n[إجابتك]\n\nمع أطيب التحيات،\nUser");
        row("no question, a forename's initial", "The room for the meeting is booked now.\n\nRegards\nJ. Smith",
            "Hello J. Smith,\n\nThank you for your message.\n\nYou wrote:\n“The room for the meeting is booked "
            "now.”\n[your answer]\n\nKind regards,\nUser");
        row("no text", "", "Hello,\n\nThank you for your message.\n\n[your answer]\n\nKind regards,\nUser");
    }

    void repliesSpeakToTheSenderInTheMessagesLanguageAndTone()
    {
        QFETCH(QString, mail);
        QFETCH(QString, reply);
        QCOMPARE(replyTo(mail, "User"), reply);
        QCOMPARE(replyTo(mail), reply.chopped(5));
    }

    void aHandfulOfQuestionsIsQuotedBriefly()
    {
        QString mail = QStringLiteral("Do you like the plan? Do you like the plan?\n> Was this asked before by you?\n");
        for (const char* thing : {"rope", "lamp", "tent", "boat", "map", "knife"}) {
            mail += QStringLiteral("Who of you has a %1 for us? ").arg(QString::fromUtf8(thing));
        }
        QCOMPARE(questionsIn(mail, 5).size(), 5);
        const QString reply = replyTo(mail);
        QCOMPARE(reply.count(u'?'), 5);
        QCOMPARE(reply.count(QStringLiteral("[your answer]")), 5);
        QVERIFY(reply.contains(QStringLiteral("has a boat")) && !reply.contains(QStringLiteral("has a map")));

        const QString longQuestion = QStringLiteral("Could you tell me whether ") +
                                     QStringLiteral("the delivery, ").repeated(30) + QStringLiteral("is here?");
        const QString quoted = shortened(longQuestion, 154);
        QCOMPARE(quoted, longQuestion.left(150) + u'…');
        QVERIFY(replyTo(longQuestion).contains(longQuestion.left(150)));
        QCOMPARE(shortened(QString(10'000, u'x'), 160), QString(160, u'x') + u'…');
        QCOMPARE(shortened(QStringLiteral("😀").repeated(100), 5), QStringLiteral("😀😀…"));
    }
};

QTEST_GUILESS_MAIN(ReplyTest)
#include "ReplyTest.moc"
