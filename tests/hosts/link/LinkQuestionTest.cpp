#include "extension/MailExtension.h"
#include "hosts/link/LinkAnswers.h"
#include "hosts/link/LinkQuestions.h"
#include "support/TestEnvironment.h"

#include <QTest>

#include <utility>
#include <vector>

using namespace quillmate;

/// Questions of the link, from the frame to the whole answer.
class LinkQuestionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void contentRules();
    // What this extension never says is written all the same.
    void whatOthersSay_data();
    void whatOthersSay();
    void textsThatAreNoTexts();

private:
    TestEnvironment m_environment;
    MailExtension m_extension;
};

namespace
{

constexpr auto marsMessage = R"({"rawData":"U3ViamVjdDogeAoKYQ==","subject":"To Mars","fromAddress":)"
                             R"({"addressString":null},"headers":null})";
constexpr auto venusMessage = R"({"rawData":null,"subject":"To Venus","fromAddress":{"addressString":"a@b.example"},)"
                              R"("headers":{"message-id":["<m>"]}})";

std::string question(const std::string& type, const std::string& members)
{
    return R"({"type":")" + type + "\"" + (members.empty() ? "" : ",") + members + "}";
}

/// The answer to a question of the type in which something is wrong with a field.
std::string refusal(const std::string& type, const std::string& field, const std::string& what, bool echoes = true)
{
    return R"({"type":"error","message":"The field \")" + field + R"(\" )" + what + ". (" + type + ")\"" +
           (echoes ? ",\"request\":8}" : "}");
}

/// What the other end gets to read for a frame that is a question or ought to be one.
std::string answered(const std::string& frame, MEExtension& extension)
{
    const auto read = readLinkFrame(frame);
    return read ? answerTo(std::get<LinkQuestion>(read.value().frame), extension) : writeLinkError(read.error());
}

/// A security handler of another extension, one that has something to say.
class TalkativeSecurity final : public MEMessageSecurityHandler
{
public:
    void getEncodingStatus(const MEMessage& message,
                           const std::function<void(MEOutgoingMessageEncodingStatus)>& completion) override
    {
        completion({true, false, "No key for " + message.subject, {{"a@b.example"}, {std::nullopt}}});
    }
    void encodeMessage(const MEMessage&, const std::function<void(MEMessageEncodingResult)>& completion) override
    {
        completion({"a\xff"
                    "b",
                    "not signed", "not encrypted"});
    }
    std::optional<MEDecodedMessage> decodedMessage(const std::string& data) override
    {
        return data == "broken" ? MEDecodedMessage{"\xff"} : MEDecodedMessage{"<" + data + ">"};
    }
    std::shared_ptr<MEExtensionViewController> extensionViewControllerForMessageSigners() override { return nullptr; }
    std::shared_ptr<MEExtensionViewController> extensionViewControllerForMessageContext() override { return nullptr; }
    void primaryActionClickedForMessageContext(
        const std::function<void(std::shared_ptr<MEExtensionViewController>)>& completion) override
    {
        completion(nullptr);
    }
};

class Rules final : public MEContentBlocker
{
public:
    std::string contentRulesJSON() override { return "[\"\xc3\xbc\"]"; }
};

class OtherExtension final : public MEExtension
{
public:
    std::shared_ptr<MEComposeSessionHandler> handlerForComposeSession(const MEComposeSession&) override
    {
        return nullptr;
    }
    std::shared_ptr<MEContentBlocker> handlerForContentBlocker() override { return std::make_shared<Rules>(); }
    std::shared_ptr<MEMessageActionHandler> handlerForMessageActions() override { return nullptr; }
    std::shared_ptr<MEMessageSecurityHandler> handlerForMessageSecurity() override
    {
        return std::make_shared<TalkativeSecurity>();
    }
};

} // namespace

void LinkQuestionTest::answers_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char* name, const std::string& frame, const std::string& answer) {
        QTest::newRow(name) << QByteArray::fromStdString(frame) << QByteArray::fromStdString(answer);
    };
    const std::string mars = std::string(R"(,"message":)") + marsMessage;
    const std::string venus = std::string(R"(,"message":)") + venusMessage;
    row("decision", question("decideActionForMessage", "\"request\":1" + mars),
        R"({"type":"messageActionDecision","request":1,"decision":{"action":"setBackgroundColor","color":4}})");
    row("no decision", question("decideActionForMessage", "\"request\":2" + venus),
        R"({"type":"messageActionDecision","request":2,"decision":null})");
    row("encoding status", question("getEncodingStatus", "\"request\":-3" + mars),
        R"({"type":"encodingStatus","request":-3,"canSign":false,"canEncrypt":false,"securityError":null,)"
        R"("addressesFailingEncryption":[]})");
    row("encoding", question("encodeMessage", "\"request\":9007199254740993" + venus),
        R"({"type":"messageEncodingResult","request":9007199254740993,"encodedMessage":null,"signingError":null,)"
        R"("encryptionError":null})");
    row("decoding", question("decodedMessage", R"("request":1.5,"data":"YQ==")"),
        R"({"type":"decodedMessage","request":1.5,"message":null})");
    row("decoding nothing", question("decodedMessage", R"("data":"","request":0)"),
        R"({"type":"decodedMessage","request":0,"message":null})");

    const std::vector<std::pair<const char*, std::string>> others = {
        {"decideActionForMessage", std::string(R"("message":)") + marsMessage},
        {"contentRulesJSON", ""},
        {"getEncodingStatus", std::string(R"("message":)") + marsMessage},
        {"encodeMessage", std::string(R"("message":)") + marsMessage},
        {"decodedMessage", R"("data":"YQ==")"},
    };
    for (const auto& [type, members] : others) {
        const std::string rest = members.empty() ? "" : "," + members;
        row(type, question(type, members), refusal(type, "request", "is missing", false));
        for (const std::string number : {"null", "\"8\"", "true", "{}"}) {
            row((type + (", request " + number)).c_str(), question(type, "\"request\":" + number + rest),
                refusal(type, "request", "must be a number", false));
        }
    }
    for (const char* type : {"decideActionForMessage", "getEncodingStatus", "encodeMessage"}) {
        row((type + std::string(" without message")).c_str(), question(type, "\"request\":8"),
            refusal(type, "message", "is missing"));
        for (const std::string other : {"null", "\"x\"", "[]"}) {
            row((type + (", message " + other)).c_str(), question(type, "\"request\":8,\"message\":" + other),
                refusal(type, "message", "must be a message"));
        }
        row((type + std::string(", message without all")).c_str(),
            question(type, R"("request":8,"message":{"rawData":null})"), refusal(type, "subject", "is missing"));
    }
    const char* decoding = "decodedMessage";
    row("decoding without data", question(decoding, "\"request\":8"), refusal(decoding, "data", "is missing"));
    for (const std::string data : {"null", "1", "\"a\"", "\"YWJjZ\"", "\"a b=\""}) {
        row(("decoding " + data).c_str(), question(decoding, "\"request\":8,\"data\":" + data),
            refusal(decoding, "data", "must be a base64 text"));
    }
}

void LinkQuestionTest::answers()
{
    QFETCH(const QByteArray, frame);
    QFETCH(const QByteArray, answer);
    QCOMPARE(QByteArray::fromStdString(answered(frame.toStdString(), m_extension)), answer);
}

void LinkQuestionTest::contentRules()
{
    const QByteArray base64 =
        QByteArray::fromStdString(m_extension.handlerForContentBlocker()->contentRulesJSON()).toBase64();
    QVERIFY(!base64.isEmpty());
    QCOMPARE(QByteArray::fromStdString(answered(R"({"type":"contentRulesJSON","request":4})", m_extension)),
             R"({"type":"contentRulesJSON","request":4,"data":")" + base64 + "\"}");
}

void LinkQuestionTest::whatOthersSay_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char* name, const std::string& frame, const char* answer) {
        QTest::newRow(name) << QByteArray::fromStdString(frame) << QByteArray(answer);
    };
    const std::string mars = std::string(R"("request":5,"message":)") + marsMessage;
    row("encoding status", question("getEncodingStatus", mars),
        R"({"type":"encodingStatus","request":5,"canSign":true,"canEncrypt":false,)"
        R"("securityError":"No key for To Mars",)"
        R"("addressesFailingEncryption":[{"addressString":"a@b.example"},{"addressString":null}]})");
    row("encoding", question("encodeMessage", mars),
        R"({"type":"messageEncodingResult","request":5,"encodedMessage":"Yf9i","signingError":"not signed",)"
        R"("encryptionError":"not encrypted"})");
    row("decoding", question("decodedMessage", R"("request":5,"data":"YQ")"),
        R"({"type":"decodedMessage","request":5,"message":"PGE+"})");
    row("decoding to any bytes", question("decodedMessage", R"("request":5,"data":"YnJva2Vu")"),
        R"({"type":"decodedMessage","request":5,"message":"/w=="})");
    row("rules", question("contentRulesJSON", R"("request":5)"),
        R"({"type":"contentRulesJSON","request":5,"data":"WyLDvCJd"})");
}

void LinkQuestionTest::whatOthersSay()
{
    QFETCH(const QByteArray, frame);
    QFETCH(const QByteArray, answer);
    OtherExtension other;
    QCOMPARE(QByteArray::fromStdString(answered(frame.toStdString(), other)), answer);
}

void LinkQuestionTest::textsThatAreNoTexts()
{
    MEOutgoingMessageEncodingStatus status;
    status.securityError = "\xff";
    QCOMPARE(QByteArray::fromStdString(writeEncodingStatus({"6"}, status)),
             R"({"type":"error","message":"The answer cannot be written.","request":6})");
}

QTEST_MAIN(LinkQuestionTest)
#include "LinkQuestionTest.moc"
