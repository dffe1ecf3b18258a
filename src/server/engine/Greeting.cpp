#include "server/engine/Greeting.h"

namespace quillmate::server
{

namespace
{

/// The first name, or all that there is where it is a mere initial.
QString shortForm(const PersonName& name)
{
    const bool initial = name.given.size() == 1 || name.given.endsWith(u'.');
    return initial || name.given.isEmpty() ? name.whole() : name.given;
}

QString titled(const QString& title, const QString& name)
{
    return title.isEmpty() ? name : title + u' ' + name;
}

/// "Dr. Marsh", but "Ana" without a title.
QString familyAfterTitle(const PersonName& name, const QString& title)
{
    return title.isEmpty() ? shortForm(name) : titled(title, name.family.isEmpty() ? name.given : name.family);
}

QString frenchForm(const PersonName& name)
{
    // "M. Dupont": the letter is a title here, not a first name's initial.
    if (name.title.isEmpty() && name.given == QStringLiteral("M.") && !name.family.isEmpty()) {
        return QStringLiteral("Monsieur ") + name.family;
    }
    const bool madam = name.title.startsWith(QStringLiteral("Mme")) || name.title.startsWith(QStringLiteral("Mlle"));
    return familyAfterTitle(name, madam ? QStringLiteral("Madame") : name.title);
}

/// How the person is called; a first name alone among familiars.
QString nameIn(Language language, Tone tone, const PersonName& name)
{
    if (tone == Tone::Familiar) {
        return name.family.isEmpty() ? titled(name.title, name.given) : shortForm(name);
    }
    switch (language) {
    case Language::German:
        return titled(name.title, name.whole());
    case Language::French:
        return frenchForm(name);
    case Language::Spanish:
        return name.title.isEmpty() ? shortForm(name) : titled(name.title, name.whole());
    case Language::Japanese:
        return name.family.isEmpty() || name.family[0].script() == QChar::Script_Latin ? name.whole() : name.family;
    case Language::Arabic:
        return name.whole();
    case Language::English:
        break;
    }
    return familyAfterTitle(name, name.title);
}

} // namespace

QString greeting(Language language, Tone tone, const std::optional<PersonName>& name)
{
    const QString called = name ? nameIn(language, tone, *name) : QString();
    const bool familiar = tone == Tone::Familiar;
    const QString after = called.isEmpty() ? QString() : u' ' + called;
    switch (language) {
    case Language::German:
        return (familiar ? QStringLiteral("Hallo") : QStringLiteral("Guten Tag")) + after + u',';
    case Language::French:
        return QStringLiteral("Bonjour") + after + u',';
    case Language::Spanish: {
        const QString hello = familiar ? QStringLiteral("Hola") : QStringLiteral("Buenos días");
        return hello + (called.isEmpty() ? QString() : u',' + after) + u':';
    }
    case Language::Japanese:
        return (called.isEmpty() ? QString() : called + QStringLiteral("様\n\n")) +
               QStringLiteral("お世話になっております。");
    case Language::Arabic:
        return QStringLiteral("مرحبًا") + after + u'،';
    case Language::English:
        break;
    }
    return QStringLiteral("Hello") + after + u',';
}

} // namespace quillmate::server
