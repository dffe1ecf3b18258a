#include "views/session/DeveloperMenuState.h"

#include "state/APIManager.h"
#include "state/AppVersion.h"

#include <QPointer>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace quillmate
{
namespace
{

bool isToggle(const NSEvent& event)
{
    constexpr std::uint32_t both = NSEvent::commandFlag | NSEvent::shiftFlag;
    return (event.modifierFlags & both) == both && event.charactersIgnoringModifiers &&
           QString::fromStdString(*event.charactersIgnoringModifiers).toLower() == QLatin1String("d");
}

} // namespace

DeveloperMenuState::DeveloperMenuState(QObject* parent)
    : QObject(parent)
    , m_selectedApiEndpoint(QString::fromStdString(APIManager::selectedApiEndpoint()))
{
    const auto offered = environments();
    const bool known = std::any_of(offered.begin(), offered.end(), [this](const QVariant& environment) {
        return environment.toMap().value(QStringLiteral("key")) == m_selectedApiEndpoint;
    });
    if (!known) {
        m_selectedApiEndpoint = QStringLiteral("live");
    }
}

DeveloperMenuState::~DeveloperMenuState()
{
    removeKeyMonitor();
}

void DeveloperMenuState::setSelectedApiEndpoint(const QString& key)
{
    if (m_selectedApiEndpoint == key) {
        return;
    }
    m_selectedApiEndpoint = key;
    // The choice may take down the screen that made it.
    const QPointer<DeveloperMenuState> self(this);
    APIManager::selectApiEndpoint(key.toStdString());
    if (self) {
        Q_EMIT selectedApiEndpointChanged();
    }
}

QVariantList DeveloperMenuState::environments()
{
    const auto text = [](std::string_view view) {
        return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
    };
    QVariantList list;
    for (const ServiceEnvironment& environment : serviceEnvironments()) {
        list.append(QVariantMap{{QStringLiteral("key"), text(environment.key)},
                                {QStringLiteral("name"), text(environment.name)}});
    }
    return list;
}

QString DeveloperMenuState::version()
{
    return QString::fromStdString(appVersion().value_or(""));
}

void DeveloperMenuState::installKeyMonitor()
{
    if (m_eventMonitor) {
        return;
    }
    m_eventMonitor = NSEvent::addLocalMonitorForEvents(
        NSEvent::keyDownMask, [self = QPointer<DeveloperMenuState>(this)](const NSEvent& event) {
            if (!self || event.window != self->m_window || !isToggle(event)) {
                return NSEvent::Verdict::PassOn;
            }
            self->setShown(!self->isShown());
            return NSEvent::Verdict::Swallow;
        });
}

void DeveloperMenuState::removeKeyMonitor()
{
    if (m_eventMonitor) {
        NSEvent::removeMonitor(m_eventMonitor);
        m_eventMonitor.reset();
    }
}

void DeveloperMenuState::setShown(bool shown)
{
    if (std::exchange(m_shown, shown) != shown) {
        Q_EMIT shownChanged();
    }
}

} // namespace quillmate
