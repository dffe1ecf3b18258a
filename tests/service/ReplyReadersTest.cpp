#include "service/ServiceRequests.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// What the readers make of the bytes of a reply.
class ReplyReadersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stages_data();
    void stages();
    void records_data();
    void records();
};

namespace
{

QString word(const std::optional<std::string>& text)
{
    return text ? QString::fromStdString("'" + *text + "'") : QStringLiteral("-");
}

QString shown(const std::string& text)
{
    return word(text);
}
QString shown(const UserDetails& details)
{
    return word(details.email) + " " + word(details.name);
}
QString shown(const LatestVersion& latest)
{
    return word(latest.version) + " " + word(latest.downloadURL);
}
QString shown(const ChatStartResponse& chat)
{
    return word(chat.assistantId) + " " + word(chat.threadId);
}
QString shown(const SessionResponse& session)
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(word(session.id), word(session.accessToken), word(session.refreshToken), word(session.loginURL));
}

QString shown(const ReplyFailure& failure)
{
    constexpr const char* names[] = {"Transport", "Response", "Status", "Body", "Parsing", "Object", "Keys"};
    QString text = QLatin1String(names[static_cast<int>(failure.stage)]);
    if (failure.stage == ReplyStage::Status) {
        text += " " + QString::number(failure.statusCode);
    }
    return failure.error ? text + " " + QString::fromStdString(failure.error->localizedDescription) : text;
}

/// What a reader made of a reply: the lines to be printed, each before a bar, and the record or the stage that failed.
/// What is not to be printed but told to the user stands before a colon.
template<auto reader>
QString made(const ServiceReply& reply)
{
    const auto reading = reader(reply);
    QString text;
    for (const std::string& line : reading.lines) {
        text += QString::fromStdString(line) + "|";
    }
    if (reading.result) {
        return text + shown(reading.result.value());
    }
    const ReplyFailure& failure = reading.result.error();
    if (!reading.lines.empty() && reading.lines.back() == failure.text) {
        return text + shown(failure);
    }
    return text + QString::fromStdString(failure.text) + ":" + shown(failure);
}

using Read = QString (*)(const ServiceReply& reply);

/// What one reader makes of what is no good; a star stands for words of the parser's.
struct Reader {
    const char* name;
    Read read;
    const char* transport;
    const char* response; // of none at all; empty where neither that nor the status counts
    const char* status;   // %1 for the number
    const char* body;
    const char* parsing;
    const char* scalar;
    const char* list;
    const char* empty;
};

constexpr auto detailsParsing = "Error parsing response data from user details: *|Parsing";
constexpr auto versionParsing = "Error parsing response data from server: *|Parsing";
constexpr auto sessionParsing = "Error parsing JSON response: *|Parsing";
constexpr auto pollParsing = "Error parsing access token JSON response: *|Parsing";
constexpr auto getFailed = "Error making GET request: URLError.timedOut: Late.|Transport Late.";
constexpr auto noResponse = "Invalid response received from the server.|Response";
constexpr auto status = "Server error: %1|Status %1";
constexpr auto tryAgain = "Server error. Please try again.|Parsing";
constexpr auto noSummary = "Response from server: {}|The 'response' key does not exist or is not a string.|Keys";
constexpr auto noReply = "The 'response' key does not exist or is not a string.:Keys";
constexpr auto noSuccess = "The 'sucess' key does not exist or is not a string.|Keys";
constexpr auto chatFailed = "Error sending chat request: URLError.timedOut: Late.|Transport Late.";
constexpr auto noObject = "Failed to cast JSON response to dictionary.|Object";
constexpr auto noChat =
    "The 'assistantId' or 'threadId' key does not exist or is not a string within the 'response' object.|Keys";
constexpr auto noAnswer = "The 'response' key does not exist or is not a string.|Keys";

const std::vector<Reader> readers{
    {"details", made<readUserDetails>, "Error: URLError.timedOut: Late.|Transport Late.", "", "",
     "No data received|Body", detailsParsing, detailsParsing, "Server error. Please try again.|Object",
     "Email or name not found in response|Keys"},
    {"version", made<readLatestVersion>, "Error: URLError.timedOut: Late.|Transport Late.", "", "",
     "No data received|Body", versionParsing, versionParsing, "Server error. Please try again.|Object",
     "JSON response is: {}|New app version is null in response|New download URL is null in response|- -"},
    {"summary", made<readSummary>, "Error sending request: URLError.timedOut: Late.|Transport Late.", noResponse,
     status, "No data received from server.|Body", ":Parsing", noSummary, noSummary, noSummary},
    {"reply", made<readGenerated>, "Error sending request: Late.:Transport Late.",
     "Invalid response received from the server.:Response", "Server error: %1:Status %1",
     "No data received from server.:Body", "Server error! Please try again later.:Parsing", noReply, noReply, noReply},
    {"training", made<readTraining>, "Error sending request: URLError.timedOut: Late.|Transport Late.", noResponse,
     status, ":Body", tryAgain, noSuccess, noSuccess, noSuccess},
    {"chat start", made<readChatStart>, chatFailed, noResponse, status, ":Body", tryAgain, noObject, noObject, noChat},
    {"chat answer", made<readChatAnswer>, chatFailed, noResponse, status, ":Body", tryAgain, noObject, noObject,
     noAnswer},
    {"session", made<readSession>, getFailed, "", "", "No data received|Body", sessionParsing, sessionParsing,
     sessionParsing, sessionParsing},
    {"poll", made<readPoll>, getFailed, "", "", "No data received|Body", pollParsing, pollParsing, pollParsing,
     pollParsing},
};

const Reader& reader(const char* name)
{
    return *std::find_if(readers.begin(), readers.end(),
                         [name](const Reader& each) { return name == QLatin1String(each.name); });
}

bool matches(const QString& text, const QString& pattern)
{
    const auto parts = pattern.split(QLatin1Char('*'));
    return parts.size() == 1
               ? text == pattern
               : text.startsWith(parts.front()) && text.endsWith(parts.back()) && text.size() > pattern.size();
}

} // namespace

Q_DECLARE_METATYPE(Read)
Q_DECLARE_METATYPE(quillmate::ServiceReply)

void ReplyReadersTest::stages_data()
{
    QTest::addColumn<Read>("read");
    QTest::addColumn<ServiceReply>("reply");
    QTest::addColumn<QString>("expected");
    const URLError late{URLError::Kind::TimedOut, "Late."};
    for (const Reader& each : readers) {
        const auto row = [&each](const QByteArray& what, const ServiceReply& reply, const QString& expected) {
            QTest::addRow("%s: %s", each.name, what.constData()) << each.read << reply << expected;
        };
        row("transport", {std::nullopt, std::nullopt, late}, each.transport);
        row("transport before all else", {"{}", HTTPURLResponse{500, ""}, late}, each.transport);
        const bool looksAtStatus = *each.status != '\0';
        row("no response", {"{}", std::nullopt, std::nullopt}, looksAtStatus ? each.response : each.empty);
        for (const int code : {199, 300, 304, 404}) {
            row("status " + QByteArray::number(code), {"{}", HTTPURLResponse{code, ""}, std::nullopt},
                looksAtStatus ? QString(each.status).replace("%1", QString::number(code)) : each.empty);
        }
        const auto good = [](std::optional<std::string> data) {
            return ServiceReply{std::move(data), HTTPURLResponse{200, ""}, std::nullopt};
        };
        row("no body", good(std::nullopt), each.body);
        row("an empty body", good(""), std::string_view(each.name) == "poll" ? each.body : each.parsing);
        for (const char* bytes : {"<html>", "{\"response\":\"\xff\"}", R"({"response":"r")", "{}x"}) {
            row(bytes, good(bytes), each.parsing);
        }
        for (const char* bytes : {"42", R"("response")", "null", "true"}) {
            row(bytes, good(bytes), each.scalar);
        }
        for (const char* bytes : {"[]", R"([{"response":"r","success":"s"}])"}) {
            row(bytes, good(bytes), each.list);
        }
        row("{}", good("{}"), each.empty);
        row("the lowest success", {"{}", HTTPURLResponse{200, ""}, std::nullopt}, each.empty);
        row("the highest success", {"{}", HTTPURLResponse{299, ""}, std::nullopt}, each.empty);
    }
}

void ReplyReadersTest::stages()
{
    QFETCH(const Read, read);
    QFETCH(const ServiceReply, reply);
    QFETCH(const QString, expected);
    const QString text = read(reply);
    QVERIFY2(matches(text, expected), qPrintable(text));
}

void ReplyReadersTest::records_data()
{
    QTest::addColumn<Read>("read");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, const char* body, const QString& expected) {
        QTest::addRow("%s: %s", name, body) << reader(name).read << QByteArray(body) << expected;
    };
    row("details", R"({"name":"A","email":"a@b.example","more":[1]})", "'a@b.example' 'A'");
    row("details", R"({"name":"","email":""})", "'' ''");
    for (const char* body : {R"({"name":null,"email":"e"})", R"({"name":"A","email":1})", R"({"error":"no"})"}) {
        row("details", body, reader("details").empty);
    }

    const auto versionRow = [&row](const char* body, const char* lines, const char* record) {
        row("version", body, QStringLiteral("JSON response is: %1|%2%3").arg(body, lines, record));
    };
    versionRow(R"({"current_version":"2.0","download_url":"u"})", "", "'2.0' 'u'");
    versionRow(R"({"download_url":"u"})", "New app version is null in response|", "- 'u'");
    versionRow(R"({"current_version":"2.0"})", "New download URL is null in response|", "'2.0' -");
    versionRow(R"({"current_version":"2.0","download_url":1})", "New download URL is null in response|", "'2.0' -");

    row("summary", R"({"response":"Short."})", R"(Response from server: {"response":"Short."}|'Short.')");
    row("summary", R"({"response":""})", R"(Response from server: {"response":""}|'')");
    row("reply", R"({"more":{},"response":"\u00fc\n"})", "'ü\n'");
    row("chat answer", R"({"response":"last","response":"Yes."})", "'Yes.'");
    row("training", R"({"success":"Thanks.","more":[]})", "'Thanks.'");
    for (const char* value : {"42", "true", "null", R"(["r"])", R"({"response":"r"})"}) {
        const QByteArray response = R"({"response":)" + QByteArray(value) + "}";
        row("summary", response,
            "Response from server: " + response + "|The 'response' key does not exist or is not a string.|Keys");
        row("reply", response, noReply);
        row("chat answer", response, noAnswer);
        row("chat start", response, noChat);
        row("training", R"({"success":)" + QByteArray(value) + "}", noSuccess);
    }
    row("reply", R"({"Response":"r"})", noReply);
    row("training", R"({"Success":"r"})", noSuccess);

    row("chat start", R"({"x":1,"response":{"threadId":"t","x":[],"assistantId":"a"}})", "'a' 't'");
    row("chat start", R"({"response":{"assistantId":"","threadId":""}})", "'' ''");
    for (const char* body :
         {R"({"assistantId":"a","threadId":"t"})", R"({"response":{"assistantId":"a"}})",
          R"({"response":{"assistantId":1,"threadId":"t"}})", R"({"response":{"assistantId":"a","threadId":null}})",
          R"({"response":[{"assistantId":"a","threadId":"t"}]})"}) {
        row("chat start", body, noChat);
    }

    for (const char* name : {"session", "poll"}) {
        row(name, R"({"id":"s1","access_token":"t","refresh_token":"r","login_url":"l"})", "'s1' 't' 'r' 'l'");
        row(name, R"({"id":"s1","access_token":null,"refresh_token":null,"login_url":null})", "'s1' - - -");
        row(name, R"( {"more":[1,{"id":7}],"id":"s1","Access_Token":"no"} )", "'s1' - - -");
        row(name, R"({"id":"","access_token":"","refresh_token":"","login_url":""})", "'' '' '' ''");
        for (const char* body : {R"({"login_url":"l"})", R"({"id":null})", R"({"id":1})", R"({"ID":"s1"})"}) {
            row(name, body, reader(name).parsing);
        }
        for (const char* key : {"access_token", "refresh_token", "login_url"}) {
            row(name, R"({"id":"s1",")" + QByteArray(key) + R"(":1})",
                QString(reader(name).parsing).replace("*", "*\"" + QString(key) + "\" is not a string."));
        }
    }
}

void ReplyReadersTest::records()
{
    QFETCH(const Read, read);
    QFETCH(const QByteArray, body);
    QFETCH(const QString, expected);
    const QString text = read({body.toStdString(), HTTPURLResponse{200, ""}, std::nullopt});
    QVERIFY2(matches(text, expected), qPrintable(text));
}

QUILLMATE_TEST(ReplyReadersTest, QCoreApplication)
#include "ReplyReadersTest.moc"
