#include "features/FeatureFixture.h"

#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"

namespace quillmate
{

void FeatureFixture::reset()
{
    StateFixture::reset();
    signIn();
    replyTo("m1", "The content");
    static_cast<void>(currentApiURL()); // which says so once
    log().take();
}

QStringList FeatureFixture::sent() const
{
    QStringList sent;
    for (const ReceivedRequest& request : server().requests()) {
        const QString target = QString::fromStdString(request.target).remove(QStringLiteral("/api/v1"));
        sent.append(QStringLiteral("%1 %2 %3")
                        .arg(target, QString::fromStdString(request.headers.at("authorization")),
                             QString::fromStdString(request.body)));
    }
    return sent;
}

QStringList FeatureFixture::stored()
{
    QStringList stored;
    for (const auto& [key, value] : UserDefaults::standard().dictionaryRepresentation()) {
        const auto* text = std::get_if<std::string>(&value);
        const auto* boolean = std::get_if<bool>(&value);
        const std::string shown = text ? *text : boolean ? (*boolean ? "true" : "false") : "data";
        stored.append(QString::fromStdString(key + "=" + shown));
    }
    return stored;
}

} // namespace quillmate
