#include "extension/MailExtension.h"
#include "hosts/MadeUpExtension.h"
#include "hosts/link/LinkAnswers.h"
#include "hosts/link/LinkQuestions.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QGuiApplication>

#include <utility>
#include <vector>

using namespace quillmate;

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

} // namespace

/// Questions of the link, from the frame to the whole answer.
class LinkQuestionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers()
    {
        const std::string mars = std::string(R"(,"message":)") + marsMessage;
        const std::string venus = std::string(R"(,"message":)") + venusMessage;
        MadeUpExtension other; // One that says what ours never says.
        other.rules = "[\"\xc3\xbc\"]";
        other.security = std::make_shared<TalkativeSecurity>();
        const std::string asked = std::string(R"("request":5,"message":)") + marsMessage;
        const struct {
            std::string frame;
            std::string answer;
            MEExtension* extension;
        } rows[] = {
            {question("decideActionForMessage", "\"request\":1" + mars),
             R"({"type":"messageActionDecision","request":1,"decision":{"action":"setBackgroundColor","color":4}})",
             &m_extension},
            {question("decideActionForMessage", "\"request\":2" + venus),
             R"({"type":"messageActionDecision","request":2,"decision":null})", &m_extension},
            {question("getEncodingStatus", "\"request\":-3" + mars),
             R"({"type":"encodingStatus","request":-3,"canSign":false,"canEncrypt":false,"securityError":null,)"
             R"("addressesFailingEncryption":[]})",
             &m_extension},
            {question("encodeMessage", "\"request\":9007199254740993" + venus),
             R"({"type":"messageEncodingResult","request":9007199254740993,"encodedMessage":null,"signingError":null,)"
             R"("encryptionError":null})",
             &m_extension},
            {question("decodedMessage", R"("request":1.5,"data":"YQ==")"),
             R"({"type":"decodedMessage","request":1.5,"message":null})", &m_extension},
            {question("getEncodingStatus", asked),
             R"({"type":"encodingStatus","request":5,"canSign":true,"canEncrypt":false,)"
             R"("securityError":"No key for To Mars",)"
             R"("addressesFailingEncryption":[{"addressString":"a@b.example"},{"addressString":null}]})",
             &other},
            {question("encodeMessage", asked),
             R"({"type":"messageEncodingResult","request":5,"encodedMessage":"Yf9i","signingError":"not signed",)"
             R"("encryptionError":"not encrypted"})",
             &other},
            {question("decodedMessage", R"("request":5,"data":"YQ")"),
             R"({"type":"decodedMessage","request":5,"message":"PGE+"})", &other},
            {question("decodedMessage", R"("request":5,"data":"YnJva2Vu")"),
             R"({"type":"decodedMessage","request":5,"message":"/w=="})", &other},
            {question("contentRulesJSON", R"("request":5)"),
             R"({"type":"contentRulesJSON","request":5,"data":"WyLDvCJd"})", &other},
        };
        for (const auto& [frame, answer, extension] : rows) {
            QCOMPARE(answered(frame, *extension), answer);
        }
    }

    void refusals()
    {
        const std::string message = std::string(R"("message":)") + marsMessage;
        for (const std::string type :
             {"decideActionForMessage", "contentRulesJSON", "getEncodingStatus", "encodeMessage", "decodedMessage"}) {
            const std::string members = R"("data":"YQ==",)" + message;
            QCOMPARE(answered(question(type, members), m_extension), refusal(type, "request", "is missing", false));
            for (const std::string number : {"null", "\"8\""}) {
                QCOMPARE(answered(question(type, members + ",\"request\":" + number), m_extension),
                         refusal(type, "request", "must be a number", false));
            }
        }
        for (const std::string type : {"decideActionForMessage", "getEncodingStatus", "encodeMessage"}) {
            QCOMPARE(answered(question(type, "\"request\":8"), m_extension), refusal(type, "message", "is missing"));
            for (const std::string other : {"null", "\"x\""}) {
                QCOMPARE(answered(question(type, "\"request\":8,\"message\":" + other), m_extension),
                         refusal(type, "message", "must be a message"));
            }
            QCOMPARE(answered(question(type, R"("request":8,"message":{"rawData":null})"), m_extension),
                     refusal(type, "subject", "is missing"));
        }
        QCOMPARE(answered(question("decodedMessage", "\"request\":8"), m_extension),
                 refusal("decodedMessage", "data", "is missing"));
        for (const std::string data : {"null", "\"YWJjZ\"", "\"a b=\""}) {
            QCOMPARE(answered(question("decodedMessage", "\"request\":8,\"data\":" + data), m_extension),
                     refusal("decodedMessage", "data", "must be a base64 text"));
        }
    }

    void answersThatCannotBeWritten()
    {
        MEOutgoingMessageEncodingStatus notText;
        notText.securityError = "\xff";
        QCOMPARE(writeEncodingStatus({"6"}, notText),
                 std::string(R"({"type":"error","message":"The answer cannot be written.","request":6})"));
    }

private:
    TestEnvironment m_environment;
    MailExtension m_extension;
};

QUILLMATE_TEST(LinkQuestionTest, QGuiApplication)
#include "LinkQuestionTest.moc"
