#include "server/signin/LoginForm.h"

#include "server/http/HttpMessage.h"

#include <QRegularExpression>
#include <QString>

namespace quillmate::server
{

namespace
{

constexpr qsizetype nameLimit = 100;
constexpr qsizetype addressLimit = 254;
constexpr qsizetype localPartLimit = 64;

/// One line of text: invalid UTF-8 is replaced, control and direction-changing characters become blanks.
QString cleaned(const std::string& value)
{
    QString text = QString::fromStdString(value);
    for (QChar& character : text) {
        const auto category = character.category();
        const bool direction = (character.unicode() >= 0x202A && character.unicode() <= 0x202E) ||
                               (character.unicode() >= 0x2066 && character.unicode() <= 0x2069);
        if (category == QChar::Other_Control || direction) {
            character = u' ';
        }
    }
    return text.simplified();
}

bool isPlausibleAddress(const QString& address)
{
    static const QRegularExpression shape(
        QStringLiteral(
            R"(^[^\s@<>()\[\],;:\\"]+@([\p{L}\p{N}]([\p{L}\p{N}-]*[\p{L}\p{N}])?\.)+[\p{L}\p{N}][\p{L}\p{N}-]*[\p{L}\p{N}]$)"),
        QRegularExpression::UseUnicodePropertiesOption);
    const QString local = address.section(u'@', 0, 0);
    return address.toUtf8().size() <= addressLimit && local.toUtf8().size() <= localPartLimit &&
           !local.startsWith(u'.') && !local.endsWith(u'.') && !local.contains(QStringLiteral("..")) &&
           shape.match(address).hasMatch();
}

} // namespace

LoginForm readLoginForm(std::string_view body)
{
    HttpRequest fields;
    fields.query = body;
    const QString name = cleaned(fields.queryValue("name"));
    const QString email = cleaned(fields.queryValue("email")).toLower();

    LoginForm form;
    form.name = name.toStdString();
    form.email = email.toStdString();
    form.formToken = fields.queryValue("form_token");
    if (name.isEmpty()) {
        form.nameError = "Please type your name.";
    } else if (name.size() > nameLimit) {
        form.nameError = "Please type a name of at most 100 characters.";
    }
    if (email.isEmpty()) {
        form.emailError = "Please type your e-mail address.";
    } else if (!isPlausibleAddress(email)) {
        form.emailError = "Please type a whole e-mail address, such as name@example.org.";
    }
    return form;
}

} // namespace quillmate::server
