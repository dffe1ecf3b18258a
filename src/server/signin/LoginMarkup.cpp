#include "server/signin/LoginMarkup.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>

namespace quillmate::server
{

namespace
{

constexpr std::string_view style = R"css(
:root { color-scheme: light dark; --page: #f5f3f8; --card: #ffffff; --text: #1d1823; --quiet: #5d5568; --line: #8d8499;
  --accent: #9333ea; --accent-over: #7e22ce; --error: #b42318; --shadow: 0 1px 2px #1d182314, 0 12px 32px #1d182314; }
@media (prefers-color-scheme: dark) {
  :root { --page: #16131a; --card: #221d28; --text: #f3eff7; --quiet: #b9b0c4; --line: #857b92;
    --error: #ff9d94; --shadow: 0 0 0 1px #ffffff14; }
}
* { box-sizing: border-box; }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; padding: 1rem; background: var(--page);
  color: var(--text); font: 1rem/1.5 system-ui, sans-serif; }
main { width: 100%; max-width: 25rem; padding: 2rem; border-radius: 1rem; background: var(--card);
  box-shadow: var(--shadow); overflow-wrap: anywhere; }
svg { display: block; width: min(3rem, 16vw); height: min(3rem, 16vw); }
h1 { margin: 1rem 0 .25rem; font-size: 1.5rem; line-height: 1.25; }
p { margin: 0 0 1.25rem; color: var(--quiet); }
label { display: block; margin-bottom: .375rem; font-weight: 600; }
input { display: block; width: 100%; min-height: 2.75rem; padding: .5rem .75rem; border: 1px solid var(--line);
  border-radius: .5rem; background: var(--card); color: inherit; font: inherit; }
input[aria-invalid] { border-color: var(--error); }
.field { margin-bottom: 1rem; }
.error { margin: .5rem 0 0; color: var(--error); }
button { width: 100%; min-height: 2.75rem; margin-top: .5rem; padding: .5rem 1rem; border: 0; border-radius: .5rem;
  background: var(--accent); color: #ffffff; font: inherit; font-weight: 600; cursor: pointer; }
button:hover { background: var(--accent-over); }
a { display: block; min-height: 2.75rem; padding: .5rem 1rem; border: 1px solid var(--line); border-radius: .5rem;
  color: inherit; font-weight: 600; text-align: center; text-decoration: none; }
a:hover { border-color: currentcolor; }
.who { margin: .5rem 0 1.25rem; text-align: center; }
:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
@media (prefers-color-scheme: dark) { :focus-visible { outline-color: #c084fc; } }
@media (max-width: 26rem) { body { padding: 0; place-items: stretch; } main { border-radius: 0; padding: min(1.5rem, 6vw);
  box-shadow: none; } }
)css";

// A quill that writes a line.
constexpr std::string_view logo = R"svg(<svg viewBox="0 0 48 48" aria-hidden="true" focusable="false">
<rect width="48" height="48" rx="12" fill="#9333ea"/>
<path d="M37 9C24 10 15 18 13 32l-2 6 2.5.8 2-5.3C28 33 36 24 37 9z" fill="#fff"/>
<path d="M15 32c4-8 9-13 16-17" fill="none" stroke="#9333ea" stroke-width="1.8" stroke-linecap="round"/>
<path d="M20 39h17" stroke="#fff" stroke-width="2.4" stroke-linecap="round"/></svg>
)svg";

std::string htmlEscaped(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).toHtmlEscaped().toStdString();
}

std::string page(std::string_view title, std::string_view content)
{
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    html += htmlEscaped(title);
    html += " – Quillmate</title>\n<style>";
    html += style;
    html += "</style>\n</head>\n<body>\n<main>\n";
    html += logo;
    html += content;
    html += "</main>\n</body>\n</html>\n";
    return html;
}

struct Field {
    std::string_view name;
    std::string_view label;
    std::string_view attributes;
    std::string_view value;
    std::string_view error;
    bool focused = false;
};

std::string fieldMarkup(const Field& field)
{
    const std::string name(field.name);
    std::string html = "<div class=\"field\">\n<label for=\"" + name + "\">" + std::string(field.label) + "</label>\n";
    html += "<input id=\"" + name + "\" name=\"" + name + "\" " + std::string(field.attributes) + " value=\"" +
            htmlEscaped(field.value) + '"';
    html += field.focused ? " autofocus" : "";
    if (!field.error.empty()) {
        html += " aria-invalid=\"true\" aria-describedby=\"" + name + "-error\">\n<p class=\"error\" id=\"" + name +
                "-error\">" + htmlEscaped(field.error) + "</p>\n</div>\n";
    } else {
        html += ">\n</div>\n";
    }
    return html;
}

std::string hiddenField(std::string_view name, std::string_view value)
{
    return "<input type=\"hidden\" name=\"" + std::string(name) + "\" value=\"" + htmlEscaped(value) + "\">\n";
}

std::string formBeginning(std::string_view action, std::string_view formToken)
{
    return "<h1>Sign in to Quillmate</h1>\n<p>Then your mail window is signed in, too.</p>\n"
           "<form method=\"post\" novalidate action=\"" +
           htmlEscaped(action) + "\">\n" + hiddenField("form_token", formToken);
}

} // namespace

std::string continuePage(std::string_view name, std::string_view email, std::string_view action,
                         std::string_view formToken)
{
    // A name may be that of two people: the address says who.
    return page("Sign in", formBeginning(action, formToken) + hiddenField("name", name) + hiddenField("email", email) +
                               "<button type=\"submit\" autofocus>Continue as " + htmlEscaped(name) +
                               "</button>\n<p class=\"who\">" + htmlEscaped(email) + "</p>\n</form>\n<a href=\"" +
                               htmlEscaped(action) + '?' + std::string(someoneElse) + "\">Someone else</a>\n");
}

std::string loginFormPage(const LoginForm& form, std::string_view action, std::string_view formToken)
{
    const bool nameFirst = !form.nameError.empty() || form.emailError.empty();
    std::string html = formBeginning(action, formToken);
    html += fieldMarkup(
        {"name", "Name", "type=\"text\" autocomplete=\"name\" required", form.name, form.nameError, nameFirst});
    html += fieldMarkup({"email", "E-mail address",
                         "type=\"email\" autocomplete=\"email\" autocapitalize=\"none\" spellcheck=\"false\" required",
                         form.email, form.emailError, !nameFirst});
    html += "<button type=\"submit\">Sign in</button>\n</form>\n";
    return page(form.isValid() ? "Sign in" : "Error: sign in", html);
}

std::string noticePage(std::string_view title, std::string_view sentence)
{
    return page(title, "<h1>" + htmlEscaped(title) + "</h1>\n<p>" + htmlEscaped(sentence) + "</p>\n");
}

const std::string& pageSecurityPolicy()
{
    static const std::string policy = [] {
        const QByteArrayView bytes(style.data(), static_cast<qsizetype>(style.size()));
        const QByteArray hash = QCryptographicHash::hash(bytes.toByteArray(), QCryptographicHash::Sha256).toBase64();
        return "default-src 'none'; style-src 'sha256-" + hash.toStdString() +
               "'; form-action 'self'; frame-ancestors 'none'; base-uri 'none'";
    }();
    return policy;
}

} // namespace quillmate::server
