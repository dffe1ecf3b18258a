#include "server/WrittenText.h"
#include "server/engine/BuiltinEngine.h"
#include "server/engine/MessageQuestions.h"
#include "server/engine/SenderName.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate::server;
using namespace Qt::StringLiterals;

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
    void theSendersNameIsFound()
    {
        const std::vector<std::pair<const char*, const char*>> rows = {
            {"--\nAna Silva | Sales\nRiverside Print\nTel. 01632 960 145", "Ana Silva"},
            {"Best,\n-- \nAna Silva", "Ana Silva"},
            {"Viele Grüße aus Hamburg\n\nJonas Weber\nVertrieb\n+49 40 123456", "Jonas Weber"},
            {"Mit freundlichen Grüßen\n\ni. A. Prof. Dr. med. Jonas Weber", "Prof. Dr. Jonas Weber"},
            {"Liebe Grüße\nDeine Anna", "Anna"},
            {"Danke und Gruß, Jonas", "Jonas"},
            {"LG Jonas", "Jonas"},
            {"cheers,\ntom", "Tom"},
            {"Bien cordialement,\n\nClaire DUPONT\nDirectrice\n01 23 45 67 89", "Claire Dupont"},
            {"Je vous prie d’agréer, Madame, mes salutations distinguées.\n\nMme Claire Le Gall", "Mme Claire Le Gall"},
            {"Cordialement,\nDUPONT Claire\nAgence des Tilleuls", "Claire Dupont"},
            {"Reciba un cordial saludo,\n\nD. José García López\nDirector de ventas", "José García López"},
            {"Herzliche Grüße\nFamilie Müller", "Familie Müller"},
            {"Best regards / Mit freundlichen Grüßen\n\n[cid:logo.png]\nPeter Klein", "Peter Klein"},
            {"Muchas gracias,\nDra. Marta de la Fuente Ruiz", "Dra. Marta de la Fuente Ruiz"},
            {"Kind regards\n\nANNE-MARIE O'BRIEN, PhD", "Anne-Marie O'Brien"},
            {"Best wishes,\n*Maarten van den Berg* (he/him)\nCEO", "Maarten van den Berg"},
            {"Thanks for your help,\nJ. P. Smith Jr.", "J. P. Smith"},
            {"Met hartelijke groet,\nJan", "Jan"},
            {"Ben", "Ben"},
            {"Helen Marsh\nProduction, Riverside Print\nTelephone 01632 960 145", "Helen Marsh"},
            {"Kind regards,\nHelen\n\nThis e-mail and any files with it are confidential and meant for the addressee "
             "only.",
             "Helen"},
            {"よろしくお願いいたします。\n\n青葉観光\n田中 恵子", "田中 恵子"},
            {"مع خالص الشكر والتقدير،\nسامر حداد\nمدير المكتبة", "سامر حداد"},
            {"Best,\nTom\n\n-----Original Message-----\nFrom: Ada\nBest regards,\nAda Old", "Tom"},
            // Where no line is a name for sure:
            {"Best regards,\nThe Riverside Team", ""},
            {"Mit freundlichen Grüßen\nIhr Kundenservice", ""},
            {"Thanks Tom!", ""},
            {"Thank you for your order.\n\nDelivery Details\nMonday morning", ""},
            {"Coming so far:\n\nPaul\nAnna", ""},
            {"Fine.\n\nOn Mon, 3 Mar 2025 at 10:00, Tom <t@b.org> wrote:\n> Hello\n> Best regards,\n> Anna Old", ""}};
        for (const auto& [end, name] : rows) {
            const QString text =
                u"Hello Daniel,\n\nthe pumps that you ordered are here.\n\n"_s + QString::fromUtf8(end);
            const auto found = senderName(text);
            QCOMPARE(found ? (found->title + u' ' + found->whole()).trimmed() : QString(), QString::fromUtf8(name));
            // A bare forward was signed by nobody.
            QVERIFY2(!senderName(u"> "_s + QString(text).replace(u'\n', u"\n> "_s)), end);
        }
    }

    void repliesSpeakToTheSenderInTheMessagesLanguageAndTone()
    {
        const std::vector<std::pair<const char*, const char*>> rows = {
            {"The room is booked. Will you come on Friday?\n\nBest regards,\nAna Silva",
             "Hello Ana,\n\nThank you for your message.\n\nAbout your question:\n“Will you come on Friday?”\n[your "
             "answer]\n\nKind regards,\nUser"},
            {"The room is booked. Hi Tom, will you come on Friday? And who brings the keys?\n\nSincerely,\nDr. Helen "
             "Marsh",
             "Hello Dr. Marsh,\n\nThank you for your message.\n\nAbout your questions:\n“Will you come on "
             "Friday?”\n[your answer]\n\n“And who brings the keys?”\n[your answer]\n\nKind regards,\nUser"},
            {"Der Raum ist gebucht. Kommen Sie am Freitag?\n\nMit freundlichen Grüßen\nJonas Weber",
             "Guten Tag Jonas Weber,\n\nvielen Dank für Ihre Nachricht.\n\nZu Ihrer Frage:\n„Kommen Sie am "
             "Freitag?“\n[Ihre Antwort]\n\nMit freundlichen Grüßen\nUser"},
            {"Der Raum ist gebucht. Kommst du?\n\nLiebe Grüße\nJonas Weber",
             "Hallo Jonas,\n\nvielen Dank für deine Nachricht.\n\nZu deiner Frage:\n„Kommst du?“\n[deine "
             "Antwort]\n\nViele Grüße\nUser"},
            {"La salle est réservée. Venez-vous avec nous vendredi ?\n\nCordialement,\nClaire Dupont",
             "Bonjour Claire,\n\nMerci pour votre message.\n\nÀ propos de votre question\u00A0:\n«\u00A0Venez-vous "
             "avec nous vendredi ?\u00A0»\n[votre réponse]\n\nBien cordialement,\nUser"},
            {"La salle est réservée pour toi. Tu viens vendredi ?\n\nBises\nMme Claire Dupont",
             "Bonjour Claire,\n\nMerci pour ton message.\n\nÀ propos de ta question\u00A0:\n«\u00A0Tu viens vendredi "
             "?\u00A0»\n[ta réponse]\n\nBien à toi,\nUser"},
            {"La sala está reservada. ¿Viene usted con nosotros?\n\nUn saludo,\nMarta Ruiz",
             "Buenos días, Marta:\n\nGracias por su mensaje.\n\nSobre su pregunta:\n«¿Viene usted con nosotros?»\n[su "
             "respuesta]\n\nSaludos cordiales,\nUser"},
            {"La sala está reservada. ¿Vienes tú con nosotros?",
             "Hola:\n\nGracias por tu mensaje.\n\nSobre tu pregunta:\n«¿Vienes tú con nosotros?»\n[tu respuesta]\n\nUn "
             "saludo,\nUser"},
            {"部屋を予約しました。金曜日に来られますか？\n\nよろしくお願いいたします。\n田中 恵子",
             "田中様\n\nお世話になっております。\n\nご連絡ありがとうございます。\n\nご質問について：\n「金曜日に来られ"
             "ますか？」\n［ご回答］\n\nよろしくお願いいたします。\nUser"},
            {"تم حجز القاعة. هل ستأتي يوم الجمعة؟\n\nمع أطيب التحيات،\nسامر حداد",
             "مرحبًا سامر حداد،\n\nشكرًا على رسالتك.\n\nبخصوص سؤالك:\n«هل ستأتي يوم الجمعة؟»\n[إجابتك]\n\nمع أطيب "
             "التحيات،\nUser"},
            {"The room for the meeting is booked now.\n\nRegards\nJ. Smith",
             "Hello J. Smith,\n\nThank you for your message.\n\nYou wrote:\n“The room for the meeting is booked "
             "now.”\n[your answer]\n\nKind regards,\nUser"},
            {"", "Hello,\n\nThank you for your message.\n\n[your answer]\n\nKind regards,\nUser"}};
        for (const auto& [mail, reply] : rows) {
            QCOMPARE(replyTo(QString::fromUtf8(mail), "User"), QString::fromUtf8(reply));
            QCOMPARE(replyTo(QString::fromUtf8(mail)), QString::fromUtf8(reply).chopped(5));
        }
    }

    void aHandfulOfQuestionsIsQuotedBriefly()
    {
        QString mail = u"Do you like the plan? Do you like the plan?\n> Was this asked before by you?\n"_s;
        for (const char* thing : {"rope", "lamp", "tent", "boat", "map", "knife"}) {
            mail += u"Who of you has a %1 for us? "_s.arg(QString::fromUtf8(thing));
        }
        QCOMPARE(questionsIn(mail, 5).size(), 5);
        const QString reply = replyTo(mail);
        QCOMPARE(reply.count(u'?'), 5);
        QCOMPARE(reply.count(u"[your answer]"_s), 5);
        QVERIFY(reply.contains(u"has a boat"_s) && !reply.contains(u"has a map"_s));

        const QString longQuestion = u"Could you tell me whether "_s + u"the delivery, "_s.repeated(30) + u"is here?"_s;
        const QString quoted = shortened(longQuestion, 154);
        QCOMPARE(quoted, longQuestion.left(150) + u'…');
        QVERIFY(replyTo(longQuestion).contains(longQuestion.left(150)));
        QCOMPARE(shortened(QString(10'000, u'x'), 160), QString(160, u'x') + u'…');
        QCOMPARE(shortened(u"😀"_s.repeated(100), 5), u"😀😀…"_s);
    }
};

QUILLMATE_TEST(ReplyTest, QCoreApplication)
#include "ReplyTest.moc"
