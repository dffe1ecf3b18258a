#include "extension/MailExtension.h"
#include "hosts/MadeUpExtension.h"
#include "hosts/link/LinkAnswers.h"
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

/// What the other end gets to read for a frame that is a question.
std::string answered(const std::string& frame, MEExtension& extension)
{
    return answerTo(std::get<LinkQuestion>(readLinkFrame(frame).value().frame), extension);
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
    void encodeMessage(const MEMessage& message,
                       const std::function<void(MEMessageEncodingResult)>& completion) override
    {
        completion({"a\xff"
                    "b",
                    message.subject == "To Venus" ? "\xff" : "not signed", "not encrypted"});
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
            {question("encodeMessage", "\"request\":6" + venus), // No JSON can hold what it says.
             R"({"type":"error","message":"The answer cannot be written.","request":6})", &other},
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

private:
    TestEnvironment m_environment;
    MailExtension m_extension;
};

QUILLMATE_TEST(LinkQuestionTest, QGuiApplication)
#include "LinkQuestionTest.moc"
