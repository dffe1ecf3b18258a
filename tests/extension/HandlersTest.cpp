#include "extension/MailExtension.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "state/ReplyEmailManager.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QFile>
#include <QGuiApplication>
#include <QResource>

using namespace quillmate;

// In no namespace, since the macros declare functions of the build's.
static void takeRulesAway()
{
    Q_CLEANUP_RESOURCE(quillmate_rules);
}

static void bringRulesBack()
{
    Q_INIT_RESOURCE(quillmate_rules);
}

class HandlersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void handlersAreHandedOut();
    void messageActions_data();
    void messageActions();
    void contentRules();
    void securityIsDeclined();

private:
    TestEnvironment m_environment;
    MailExtension m_extension;
};

void HandlersTest::handlersAreHandedOut()
{
    const MEComposeSession session("s", MEComposeContext());
    QVERIFY(m_extension.handlerForComposeSession(session) != m_extension.handlerForComposeSession(session));
    QCOMPARE(m_extension.handlerForContentBlocker(), m_extension.handlerForContentBlocker());
    QCOMPARE(m_extension.handlerForMessageActions(), MailExtension().handlerForMessageActions());
    QCOMPARE(m_extension.handlerForMessageSecurity(), m_extension.handlerForMessageSecurity());
}

void HandlersTest::messageActions_data()
{
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<bool>("red");
    QTest::addColumn<QString>("content"); // what the record holds afterwards
    QTest::newRow("Mars") << "Trip to Mars" << QByteArray("A: b\n\n  Pack \n") << true << "Pack";
    QTest::newRow("inside a word") << "Marsupials" << QByteArray("A: b\n\nx\n\ny") << true << "x\n\ny";
    QTest::newRow("lower case") << "mars" << QByteArray("A: b\n\nx") << false << "x";
    QTest::newRow("no body, still decided") << "Mars" << QByteArray("A: b\r\n\r\nx") << true << "before";
    QTest::newRow("a body of blanks") << "Mars" << QByteArray("A: b\n\n \n") << true << "";
    QTest::newRow("neither") << "Venus" << QByteArray("caf\xe9\n\nx") << false << "before";
}

void HandlersTest::messageActions()
{
    QFETCH(const QString, subject);
    QFETCH(const QByteArray, source);
    QFETCH(const bool, red);
    QFETCH(const QString, content);
    ReplyEmailManager::shared().update([](ReplyEmail& record) { record.content = "before"; });
    MEMessage message;
    message.subject = subject.toStdString();
    message.rawData = source.toStdString();
    int completions = 0;
    m_extension.handlerForMessageActions()->decideActionForMessage(message, [&](const auto& decision) {
        ++completions;
        QCOMPARE(decision.has_value(), red);
        if (red) {
            QCOMPARE(decision->action.color, 4);
        }
    });
    QCOMPARE(completions, 1);
    QCOMPARE(ReplyEmailManager::shared().record().content, std::optional(content.toStdString()));
}

void HandlersTest::contentRules()
{
    QFile file(QStringLiteral(QUILLMATE_RESOURCES "/ContentBlockerRules.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const std::string shipped = file.readAll().toStdString();
    QVERIFY(!shipped.empty());
    QCOMPARE(m_extension.handlerForContentBlocker()->contentRulesJSON(), shipped);
    takeRulesAway();
    const std::string rules = m_extension.handlerForContentBlocker()->contentRulesJSON();
    bringRulesBack();
    QCOMPARE(rules, std::string());
    QVERIFY(!m_extension.handlerForContentBlocker()->contentRulesJSON().empty());
}

void HandlersTest::securityIsDeclined()
{
    const auto handler = m_extension.handlerForMessageSecurity();
    int completions = 0;
    handler->getEncodingStatus({}, [&](const MEOutgoingMessageEncodingStatus& status) {
        ++completions;
        QCOMPARE(status, MEOutgoingMessageEncodingStatus());
    });
    handler->encodeMessage({}, [&](const MEMessageEncodingResult& result) {
        ++completions;
        QCOMPARE(result, MEMessageEncodingResult());
    });
    handler->primaryActionClickedForMessageContext([&](const auto& controller) {
        ++completions;
        QVERIFY(!controller);
    });
    QCOMPARE(completions, 3);
    QVERIFY(!handler->decodedMessage("data"));
    const auto first = handler->extensionViewControllerForMessageSigners();
    QVERIFY(first && first->view());
    QVERIFY(first != handler->extensionViewControllerForMessageSigners());
    QVERIFY(!handler->extensionViewControllerForMessageContext());
}

QUILLMATE_TEST(HandlersTest, QGuiApplication)
#include "HandlersTest.moc"
