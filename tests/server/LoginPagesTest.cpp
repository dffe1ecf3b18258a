#include "server/signin/LoginPages.h"
#include "server/signin/LoginForm.h"
#include "server/signin/SignInSessions.h"
#include "server/store/ServiceStore.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QTemporaryDir>

using namespace quillmate::server;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Outcome = SignInSessions::Outcome;

namespace
{

const std::string loginHost = "127.0.0.1:4711";

/// A header field in the place of the one of that name.
void replaceHeader(HttpRequest& request, const std::string& name, const std::string& value)
{
    std::erase_if(request.headers, [&](const auto& header) { return header.first == name; });
    request.headers.emplace_back(name, value);
}

} // namespace

/// Signing in without a network: the form, the sign-ins under way, and which forms the page takes.
class LoginPagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_sessions = std::make_unique<SignInSessions>([this] { return m_now; });
        m_pages = std::make_unique<LoginPages>(*m_sessions, *m_store);
        m_pages->setLoginPort(4711);
        m_session = *m_sessions->begin();
    }

    void addressesArePlausible()
    {
        const auto isTaken = [](const QByteArray& email) {
            return readLoginForm("name=Anna&email=" + email.toPercentEncoding().toStdString()).emailError.empty();
        };
        for (const char* good : {"a@b.org", "first.last+tag@mail.example.co", "o'neil@example.org", "ü@bücher.example",
                                 "Anna@EXAMPLE.org", "x@1.example"}) {
            QVERIFY2(isTaken(good), good);
        }
        for (const char* bad : {"a", "@b.org", "a@", "a@b", "a@b..org", "a b@c.org", "a@b@c.org", "a@-b.org",
                                "a@b-.org", ".a@b.org", "a..b@c.org", "a@b.org, c@d.org", "<a@b.org>", "a@b.o"}) {
            QVERIFY2(!isTaken(bad), bad);
        }
        QVERIFY(!isTaken(QByteArray(65, 'a') + "@b.org"));
        QVERIFY(!isTaken("a@" + QByteArray(60, 'b') + '.' + QByteArray(200, 'c') + ".org"));
    }

    void namesAreOneLineWithoutControls()
    {
        const LoginForm form = readLoginForm("name=+An%00na%0A%E2%80%AEB+%C3%A9%FF&email=");
        QCOMPARE(QString::fromStdString(form.name), u"An na B é\uFFFD"_s);
        QVERIFY(!readLoginForm("name=" + std::string(101, 'x')).nameError.empty());
        QVERIFY(readLoginForm("name=" + std::string(100, 'x')).nameError.empty());
    }

    void aSessionEndsAfterItsTime()
    {
        const std::string other = SignInSessions::pageOf(*m_sessions->begin());
        int issued = 0;
        const auto complete = [&](const std::string& id, const std::string& formToken) {
            return m_sessions->complete(id, formToken, [&] { return "token" + std::to_string(++issued); }).value();
        };
        QCOMPARE(complete(pageName(), m_sessions->state(other)->formToken), Outcome::WrongFormToken);
        QCOMPARE(complete(pageName(), ""), Outcome::WrongFormToken);
        QCOMPARE(complete("unknown", ""), Outcome::Unknown);
        const std::string formToken = m_sessions->state(pageName())->formToken;
        QVERIFY(!m_sessions->complete(pageName(), formToken, [] { return quillmate::Failure(StoreFailure{}); }));
        m_now += SignInSessions::life - 1s;
        QCOMPARE(complete(pageName(), formToken), Outcome::SignedIn);
        QCOMPARE(complete(pageName(), formToken), Outcome::AlreadySignedIn);
        QCOMPARE(*m_sessions->fetch(m_session)->accessToken, std::string("token1"));
        m_now += 2s;
        QVERIFY(!m_sessions->fetch(m_session) && !m_sessions->state(other));
        QCOMPARE(complete(other, ""), Outcome::Unknown);
    }

    void aFetchedTokenIsForgottenSoon()
    {
        QCOMPARE(post().status, 303);
        m_now += 5min;
        QVERIFY(m_sessions->fetch(m_session));
        m_now += SignInSessions::lifeAfterDelivery - 1s;
        QVERIFY(m_sessions->fetch(m_session)); // the second fetch does not lengthen it
        m_now += 1s;
        QVERIFY(!m_sessions->fetch(m_session));
    }

    void unfinishedSessionsAreCapped()
    {
        for (std::size_t count = 1; count < SignInSessions::limit; ++count) {
            QVERIFY(m_sessions->begin());
        }
        QVERIFY(!m_sessions->begin());
        m_now += SignInSessions::life;
        QVERIFY(m_sessions->begin());
    }

    void theFormKeepsWhatWasTypedAndSaysWhatIsWrong()
    {
        struct Row {
            const char* fields;
            QByteArrayList shown;
        };
        for (const auto& [fields, shown] :
             {Row{"name=+&email=a%40b.org", {"Please type your name.", "value=\"a@b.org\""}},
              Row{"name=Anna&email=", {"Please type your e-mail address.", "value=\"Anna\""}},
              Row{"name=%22%3E%3Cscript%3E&email=x", {"whole e-mail address", "value=\"&quot;&gt;&lt;script&gt;\""}},
              Row{"x=y", {"Please type your name.", "Please type your e-mail address."}}}) {
            const HttpResponse response = post({}, {}, fields);
            QCOMPARE(response.status, 422);
            const QByteArray page = QByteArray::fromStdString(response.body);
            for (const QByteArray& part : shown + QByteArrayList{"aria-invalid=\"true\""}) {
                QVERIFY2(page.contains(part), page.constData());
            }
            QVERIFY(!page.contains("<script"));
            // The form can still be sent.
            QVERIFY(page.contains(QByteArray::fromStdString(m_sessions->state(pageName())->formToken)));
        }
        QCOMPARE(post().status, 303);
    }

    void onlyThePagesOwnFormSignsIn()
    {
        struct Row {
            std::string header;
            std::string value;
            int status;
        };
        for (const auto& [header, value, status] :
             {Row{"origin", "https://127.0.0.1:4711", 403}, Row{"origin", "http://127.0.0.1:1", 403},
              Row{"origin", "https://evil.example", 403}, Row{"origin", "null", 403},
              Row{"sec-fetch-site", "same-site", 403}, Row{"sec-fetch-site", "cross-site", 403},
              Row{"host", "evil.example:4711", 421}, Row{"content-type", "text/plain", 415},
              Row{"form_token", "AAAA", 403}, Row{"form_token", "", 403}}) {
            QVERIFY2(post(header, value).status == status, (header + ": " + value).c_str());
            QVERIFY(!m_sessions->state(pageName())->accessToken);
        }
        const HttpResponse page = m_pages->handle(request("GET", "host", "evil.example")).value();
        QVERIFY(page.status == 421 && page.body.find("form_token") == std::string::npos);
        QCOMPARE(post("origin", "http://" + loginHost).status, 303);
        m_session = *m_sessions->begin();
        QCOMPARE(post("sec-fetch-site", "same-origin").status, 303);
    }

    void overTlsTheOriginIsThatOfTheNameAskedFor()
    {
        HttpRequest sent = request("POST", "host", "mail.example");
        sent.listener = Listener::Service;
        sent.body = form("name=Anna&email=anna%40example.org");
        replaceHeader(sent, "origin", "http://mail.example");
        QCOMPARE(m_pages->handle(sent).value().status, 403);
        replaceHeader(sent, "origin", "https://mail.example");
        QCOMPARE(m_pages->handle(sent).value().status, 303);
    }

    void aRepeatedFormMakesNoSecondToken()
    {
        QCOMPARE(post().status, 303);
        const std::string token = *m_sessions->state(pageName())->accessToken;
        for (const char* fields : {"name=Anna&email=anna%40example.org", "name=&email=&form_token="}) {
            QCOMPARE(post({}, {}, fields).status, 303);
            QCOMPARE(*m_sessions->state(pageName())->accessToken, token);
        }
        QCOMPARE(m_store->userByToken(token).value()->name, std::string("Anna"));
    }

    void aBrowserIsKnownAgainUntilSomeoneElseSignsIn()
    {
        const auto offers = [this](const std::string& cookie, const std::string& name, const char* query = "") {
            m_session = *m_sessions->begin();
            HttpRequest asked = request("GET", "cookie", "a=b; " + cookie + ";c");
            asked.query = query;
            const std::string page = m_pages->handle(asked).value().body;
            return page.find("Continue as " + name + "<") != std::string::npos;
        };
        const auto signIn = [this](const std::string& cookie, const std::string& fields) {
            const HttpResponse response = post("cookie", cookie, fields);
            const auto& [name, value] = response.headers.back();
            const bool set = response.status == 303 && name == "Set-Cookie";
            return set ? value.substr(0, value.find(';')) : std::string();
        };
        const std::string anna = signIn({}, "name=%3Ci%3EAnna&email=anna%40example.org");
        QVERIFY(offers(anna, "&lt;i&gt;Anna") && !offers(anna, "&lt;i&gt;Anna", "someone-else"));
        QVERIFY(!offers({}, "") && !offers(anna + "x", "") && !offers("x" + anna, ""));
        const std::string ben = signIn(anna, "name=Ben&email=ben%40example.org");
        QVERIFY(!offers(anna, "") && offers(ben, "Ben"));
        // A form that signed nobody in leaves the browser's memory alone.
        QCOMPARE(post("cookie", ben, "name=&email=").status, 422);
        QVERIFY(offers(ben, "Ben"));
    }

private:
    [[nodiscard]] std::string pageName() const { return SignInSessions::pageOf(m_session); }

    [[nodiscard]] HttpRequest request(const char* method, const std::string& header = {},
                                      const std::string& value = {}) const
    {
        HttpRequest made;
        made.method = method;
        made.path = std::string(LoginPages::path) + pageName();
        made.headers = {{"host", loginHost}, {"content-type", "application/x-www-form-urlencoded"}};
        made.listener = Listener::LoginPages;
        if (!header.empty()) {
            replaceHeader(made, header, value);
        }
        return made;
    }

    /// The fields with the session's form token, unless they have one.
    [[nodiscard]] std::string form(const std::string& fields) const
    {
        const bool whole = fields.find("form_token=") != std::string::npos;
        return whole ? fields : fields + "&form_token=" + m_sessions->state(pageName())->formToken;
    }

    /// Sends the form to the plain listener with another header field, or with another form token.
    HttpResponse post(const std::string& header = {}, const std::string& value = {},
                      std::string fields = "name=Anna&email=anna%40example.org")
    {
        const bool otherToken = header == "form_token";
        HttpRequest sent = otherToken ? request("POST") : request("POST", header, value);
        sent.body = form(otherToken ? fields + "&form_token=" + value : fields);
        return m_pages->handle(sent).value();
    }

    QTemporaryDir m_folder;
    std::chrono::steady_clock::time_point m_now;
    std::unique_ptr<ServiceStore> m_store = ServiceStore::open(m_folder.path().toStdString()).value();
    std::unique_ptr<SignInSessions> m_sessions;
    std::unique_ptr<LoginPages> m_pages;
    std::string m_session;
};

QUILLMATE_TEST(LoginPagesTest, QCoreApplication)
#include "LoginPagesTest.moc"
