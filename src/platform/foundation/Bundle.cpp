#include "platform/foundation/Bundle.h"

#include <QFile>
#include <QString>

namespace quillmate
{
namespace
{

QString resourcePath(std::string_view resource, std::string_view extension)
{
    return QStringLiteral(":/quillmate/%1.%2")
        .arg(QString::fromUtf8(resource.data(), static_cast<qsizetype>(resource.size())),
             QString::fromUtf8(extension.data(), static_cast<qsizetype>(extension.size())));
}

} // namespace

const Bundle& Bundle::main()
{
    using Dictionary = std::map<std::string, std::string, std::less<>>;
    static const Bundle bundle(Dictionary{{"CFBundleShortVersionString", QUILLMATE_VERSION}});
    return bundle;
}

Bundle::Bundle(std::map<std::string, std::string, std::less<>> informationDictionary)
    : m_informationDictionary(std::move(informationDictionary))
{
}

std::optional<std::string> Bundle::object(std::string_view informationDictionaryKey) const
{
    const auto found = m_informationDictionary.find(informationDictionaryKey);
    return found == m_informationDictionary.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> Bundle::url(std::string_view resource, std::string_view extension) const
{
    const QString path = resourcePath(resource, extension);
    return QFile::exists(path) ? std::optional("qrc" + path.toStdString()) : std::nullopt;
}

std::optional<std::string> Bundle::contents(std::string_view resource, std::string_view extension) const
{
    QFile file(resourcePath(resource, extension));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll().toStdString();
}

} // namespace quillmate
