#include "extension/MailExtension.h"
#include "hosts/MadeUpExtension.h"
#include "hosts/link/Frame.h"
#include "hosts/link/LinkAnswers.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QGuiApplication>

using namespace quillmate;

namespace
{

constexpr auto wholeMessage =
    R"({"type":"composeSessionDidBegin","session":"s1","unknown":1,"originalMessage":{)"
    R"("rawData":"U3ViamVjdDogeAoKYf9i","subject":"Plans","fromAddress":{"addressString":"ana@a.example"},)"
    R"("headers":{"message-id":["<m1>"],"received":["one","two"],"x-empty":[]}}})";
constexpr auto messageOfNulls = R"({"type":"composeSessionDidBegin","session":"","originalMessage":{)"
                                R"("rawData":null,"subject":"","fromAddress":{"addressString":null},"headers":null}})";
constexpr auto emptyRawData = R"({"type":"composeSessionDidBegin","session":"s","originalMessage":{)"
                              R"("rawData":"","subject":"","fromAddress":{"addressString":""},"headers":{}}})";
template<typename Frame>
Frame readAs(const std::string& bytes)
{
    auto read = readLinkFrame(bytes);
    if (!read) {
        qFatal("%s", read.error().message.c_str());
    }
    return std::get<Frame>(std::move(read).value().frame);
}

/// A beginning whose message has this in the place of one of its members, or lacks it.
std::string withMember(const std::string& key, const char* value)
{
    std::string members;
    for (const auto& [name, usual] : std::map<std::string, std::string>{{"rawData", "null"},
                                                                        {"subject", "\"x\""},
                                                                        {"fromAddress", "{\"addressString\":null}"},
                                                                        {"headers", "null"}}) {
        const std::string chosen = name == key ? (value ? value : "") : usual;
        if (!chosen.empty()) {
            members.append(members.empty() ? "\"" : ",\"").append(name).append("\":").append(chosen);
        }
    }
    return R"({"type":"composeSessionDidBegin","session":"s","originalMessage":{)" + members + "}}";
}

std::string withFrame(const std::string& frame)
{
    return R"({"type":"composeSessionFrameDidChange","session":"s","frame":)" + frame + "}";
}

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
    return LinkAnswers(extension, {}).answerTo(std::get<LinkQuestion>(readLinkFrame(frame).value().frame));
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

/// Frames of the link: what they are read as, and what is answered.
class LinkFrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginnings()
    {
        const auto whole = readAs<ComposeSessionDidBegin>(wholeMessage);
        QCOMPARE(whole.session, std::string("s1"));
        const MEMessage expected{
            "Subject: x\n\na\xff"
            "b",
            "Plans",
            {"ana@a.example"},
            MEMessage::Headers{{"message-id", {"<m1>"}}, {"received", {"one", "two"}}, {"x-empty", {}}}};
        QCOMPARE(*whole.originalMessage, expected);
        QCOMPARE(*readAs<ComposeSessionDidBegin>(messageOfNulls).originalMessage, MEMessage());
        // Empty is not absent.
        QCOMPARE(*readAs<ComposeSessionDidBegin>(emptyRawData).originalMessage,
                 (MEMessage{"", "", {""}, MEMessage::Headers()}));
        const auto later = readAs<ComposeSessionDidBegin>(
            R"({"type":"composeSessionDidBegin","session":"s1","originalMessage":{"rawData":null,)"
            R"("rawDataFollows":true,"subject":"","fromAddress":{"addressString":null},"headers":null}})");
        QVERIFY(later.originalMessage->rawDataFollows);
        constexpr auto newMessage = R"({"type":"composeSessionDidBegin","session":"s1","originalMessage":null})";
        QVERIFY(!readAs<ComposeSessionDidBegin>(newMessage).originalMessage);
    }

    void frames()
    {
        const auto view = [](const std::string& rest) {
            return readAs<ViewControllerForSession>(R"({"type":"viewControllerForSession","session":"s1")" + rest +
                                                    "}");
        };
        QVERIFY(!view("").frame);
        QVERIFY(!view(",\"frame\":null").frame);
        QCOMPARE(view(R"(,"frame":{"left":-10.5,"top":20,"width":3e2,"height":400})").frame,
                 std::optional<WindowFrame>({-10.5, 20, 300, 400}));
        const auto change =
            readAs<ComposeSessionFrameDidChange>(withFrame(R"({"left":1,"top":2,"width":3,"height":4})"));
        QCOMPARE(change.session, std::string("s"));
        QCOMPARE(change.frame, (WindowFrame{1, 2, 3, 4}));
        QCOMPARE(readAs<ComposeSessionDidEnd>(R"({"type":"composeSessionDidEnd","session":"sünde"})").session,
                 std::string("sünde"));
    }

    void longSources()
    {
        const std::string source(2'000'000, 'A'); // 1,500,000 zero bytes
        const auto quoted = '"' + source + '"';
        const std::string bytes(1'500'000, '\0');
        QVERIFY(*readAs<ComposeSessionDidBegin>(withMember("rawData", quoted.c_str())).originalMessage->rawData ==
                bytes);
        const std::string other = "\\\"rawData\\\":\\\"" + source;
        const auto read = readAs<ComposeSessionDidBegin>(withMember("subject", ('"' + other + '"').c_str()));
        QVERIFY(read.originalMessage->subject == "\"rawData\":\"" + source && !read.originalMessage->rawData);
        for (const char* wrong : {"*", "\\", "\n", "\xff"}) {
            const auto refused = readLinkFrame(withMember("rawData", ('"' + source + wrong + '"').c_str()));
            QVERIFY2(!refused, wrong);
        }
    }

    void halvesOfSurrogatePairs()
    {
        const std::string texts = R"(\"a\ud83d\" \uDE00b \uD83D\uDE00 \ud83dx\ud83d\ud83d\ude00 \\ud83d \u00e9)";
        const auto frame = readAs<ComposeSessionDidBegin>(withMember("subject", ('"' + texts + '"').c_str()));
        QCOMPARE(frame.originalMessage->subject,
                 std::string("\"a\uFFFD\" \uFFFDb \U0001F600 \uFFFDx\uFFFD\U0001F600 \\ud83d \u00e9"));
    }

    void refuses()
    {
        std::vector<std::pair<std::string, std::string>> rows = {
            // The bytes, and what the sentence must name.
            {"", "JSON"},
            {std::string(100'000, '['), "deep"},
            {"[]", "object"},
            {"{}", "\"type\""},
            {"{\"type\":1}", "\"type\""},
            {"{\"type\":\"composesessiondidend\"}", "composesessiondidend"},
            {R"({"type":"composeSessionDidBegin","session":"s"})", "\"originalMessage\""},
            {R"({"type":"composeSessionDidBegin","session":"s","originalMessage":"x"})", "message"},
            {R"({"type":"composeSessionFrameDidChange","session":"s"})", "\"frame\""},
            {withFrame("null"), "\"frame\""},
            {withFrame("[1,2,3,4]"), "\"frame\""},
            {R"({"type":"viewControllerForSession","session":"s","frame":"x"})", "\"frame\""},
        };
        for (const char* type : {"composeSessionDidBegin", "viewControllerForSession", "composeSessionFrameDidChange",
                                 "composeSessionDidEnd"}) {
            for (const char* session : {"", ",\"session\":null", ",\"session\":1"}) {
                const std::string bytes =
                    "{\"type\":\"" + std::string(type) + "\",\"originalMessage\":null" + session + "}";
                rows.emplace_back(bytes, "\"session\"");
                rows.emplace_back(bytes, type);
            }
        }
        const std::vector<std::pair<const char*, std::vector<const char*>>> wrong = {
            {"rawData", {nullptr, "1", "\"a\"", "\"YWJjZ\"", "\"a b=\"", "\"\u00fc\""}},
            {"subject", {nullptr, "null", "1"}},
            {"fromAddress", {nullptr, "null", "\"a@b.example\""}},
            {"headers", {nullptr, "1", "[]", "{\"a\":null}", "{\"a\":\"b\"}", "{\"a\":[1]}", "{\"a\":[\"b\",null]}"}},
        };
        for (const auto& [key, values] : wrong) {
            for (const char* value : values) {
                rows.emplace_back(withMember(key, value), '"' + std::string(key) + '"');
            }
        }
        for (const char* address : {"{}", "{\"addressString\":1}"}) {
            rows.emplace_back(withMember("fromAddress", address), "\"addressString\"");
        }
        const std::string sides = R"({"left":1,"top":1,"width":1,"height":1})";
        for (const std::string side : {"\"left\":1", "\"top\":1", "\"width\":1", "\"height\":1"}) {
            for (const std::string value : {"null", "\"1\"", "1e7", "-1e308"}) {
                const std::string name = side.substr(0, side.size() - 1);
                std::string frame = sides;
                rows.emplace_back(withFrame(frame.replace(frame.find(side), side.size(), name + value)),
                                  name.substr(0, name.size() - 1));
            }
        }
        rows.emplace_back(withFrame("{}"), "\"left\"");
        for (const std::string type : {"getEncodingStatus", "encodeMessage", "decideActionForMessage"}) {
            for (const char* message : {"", ",\"message\":null", ",\"message\":\"x\""}) {
                rows.emplace_back("{\"type\":\"" + type + "\",\"request\":8" + message + "}", "\"message\"");
            }
        }
        rows.emplace_back(R"({"type":"encodeMessage","request":8,"message":{"rawData":null}})", "\"subject\"");
        for (const char* data : {"", ",\"data\":null", ",\"data\":\"YWJjZ\"", ",\"data\":\"a b=\""}) {
            rows.emplace_back(R"({"type":"decodedMessage","request":8)" + std::string(data) + "}", "\"data\"");
        }
        for (const std::string type : {"contentRulesJSON", "getEncodingStatus", "decodedMessage"}) {
            for (const char* request : {"", ",\"request\":null", ",\"request\":\"8\""}) {
                rows.emplace_back("{\"type\":\"" + type + "\"" + request + "}", "\"request\"");
            }
        }
        for (const auto& [bytes, named] : rows) {
            const auto read = readLinkFrame(bytes);
            QVERIFY2(!read, bytes.c_str());
            QVERIFY2(read.error().message.find(named) != std::string::npos, read.error().message.c_str());
            QCOMPARE(read.error().request.isNull(), bytes.find("\"request\":8") == std::string::npos);
        }
    }

    void requestIsEchoed()
    {
        const std::pair<std::string, bool> rows[] = {
            {"0", true},
            {"-3", true},
            {"18446744073709551615", true},
            {"123456789012345678901234567890", true},
            {"1.50", true},
            {"null", false},
            {"\"7\"", false},
            {"{}", false},
        };
        for (const auto& [request, isEchoed] : rows) {
            const std::string member = ",\"request\":" + request;
            const std::string tail = '"' + (isEchoed ? member : std::string()) + '}';
            const auto good = readLinkFrame("{\"type\":\"composeSessionDidEnd\",\"session\":\"s\"" + member + "}");
            QVERIFY(good);
            QCOMPARE(writeLinkError({"No.", good.value().request}), "{\"type\":\"error\",\"message\":\"No." + tail);
            for (const char* wrong : {"{\"type\":\"Nonsense\"", "{\"type\":1", "{\"type\":\"composeSessionDidEnd\""}) {
                const auto answer = writeLinkError(readLinkFrame(wrong + member + "}").error());
                QVERIFY2(answer.ends_with(tail), answer.c_str());
            }
        }
    }

    void answers()
    {
        const std::string mars = std::string(R"(,"message":)") + marsMessage;
        const std::string venus = std::string(R"(,"message":)") + venusMessage;
        MailExtension ours;
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
             &ours},
            {question("decideActionForMessage", "\"request\":2" + venus),
             R"({"type":"messageActionDecision","request":2,"decision":null})", &ours},
            {question("getEncodingStatus", "\"request\":-3" + mars),
             R"({"type":"encodingStatus","request":-3,"canSign":false,"canEncrypt":false,"securityError":null,)"
             R"("addressesFailingEncryption":[]})",
             &ours},
            {question("encodeMessage", "\"request\":9007199254740993" + venus),
             R"({"type":"messageEncodingResult","request":9007199254740993,"encodedMessage":null,"signingError":null,)"
             R"("encryptionError":null})",
             &ours},
            {question("decodedMessage", R"("request":1.5,"data":"YQ==")"),
             R"({"type":"decodedMessage","request":1.5,"message":null})", &ours},
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

    void errorsFitAFrame()
    {
        const std::string much(3'000'000, 'x');
        for (const std::string& bytes : {
                 "{\"type\":\"" + much + "\"}",
                 "{\"type\":\"" + QByteArray("\\u0001").repeated(500'000).toStdString() + "\"}",
                 "{\"type\":\"" + much,
                 "{\"type\":\"Nonsense\",\"request\":" + std::string(3'000'000, '1') + "}",
                 std::string(3'000'000, '1') + "x",
                 "{\"type\":\"" + std::string(99, 'x') + "\\ud83d\\ude00 and more\"}",
             }) {
            const auto read = readLinkFrame(bytes);
            QVERIFY(!read);
            const std::string answer = writeLinkError(read.error());
            QVERIFY2(answer.size() <= largestOutgoingFrame, answer.substr(0, 100).c_str());
            const auto parsed = JSONSerialization::jsonObject(answer, JSONSerialization::Fragments::Refused);
            QVERIFY(parsed && parsed.value().stringMember("message"));
            QVERIFY2(parsed.value().stringMember("message")->size() < 1000, "a sentence, not a novel");
        }
    }

private:
    TestEnvironment m_environment;
};

QUILLMATE_TEST(LinkFrameTest, QGuiApplication)
#include "LinkFrameTest.moc"
