#include "hosts/preview/PreviewProgram.h"

#include "hosts/preview/ComposeWindowState.h"
#include "hosts/preview/WindowPicture.h"
#include "platform/appkit/ViewEngine.h"
#include "views/ViewsModule.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <algorithm>
#include <chrono>

// Written by the build from the types that say QML_ELEMENT.
void qml_register_types_Quillmate_Preview();

namespace quillmate
{
namespace
{

using namespace std::chrono_literals;

// Reading that takes longer than this is worth a window that says so.
constexpr auto readingNotice = 300ms;

constexpr auto programName = "quillmate";

std::unique_ptr<QQuickWindow> makeWindow(const QString& name, const QVariantMap& properties)
{
    QQmlComponent component(&ViewEngine::shared(),
                            QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Preview/%1.qml").arg(name)));
    auto* window =
        component.isReady() ? qobject_cast<QQuickWindow*>(component.createWithInitialProperties(properties)) : nullptr;
    if (window == nullptr) {
        qFatal("The window %s cannot be made: %s", qUtf8Printable(name), qUtf8Printable(component.errorString()));
    }
    QQmlEngine::setObjectOwnership(window, QQmlEngine::CppOwnership);
    return std::unique_ptr<QQuickWindow>(window);
}

} // namespace

PreviewProgram::PreviewProgram(PreviewOptions options, ServiceAccess& service, MEExtension& extension)
    : m_options(std::move(options))
    , m_service(service)
    , m_reader(extension, [](const std::string& problem) { complain(programName, problem); })
    , m_sessions(extension)
    , m_mail(m_reader)
{
    registerViews();
    qml_register_types_Quillmate_Preview();
    QGuiApplication::setQuitOnLastWindowClosed(false);
    qGuiApp->installEventFilter(this);
    connect(qGuiApp, &QGuiApplication::lastWindowClosed, this, [this] { end(0); });
    connect(&m_service, &ServiceAccess::failed, this,
            [](const QString& sentence) { complain(programName, sentence.toStdString()); });
    connect(&m_mail, &MailWindowState::composeRequested, this, &PreviewProgram::openCompose);
}

PreviewProgram::~PreviewProgram() = default;

bool PreviewProgram::eventFilter(QObject* receiver, QEvent* event)
{
    // A termination signal or the end of the desktop session: sessions have to end first.
    if (event->type() == QEvent::Quit) {
        end(0);
        return true;
    }
    return QObject::eventFilter(receiver, event);
}

void PreviewProgram::start()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!m_options.screenshotFile) {
                m_service.prepare(); // By the time somebody presses "Login" it is there.
            }
            QTimer::singleShot(readingNotice, this, [this] {
                if (m_mail.isListing() && !m_ending && !m_options.screenshotFile) {
                    showMailWindow();
                }
            });
            m_reader.list(m_options.messages, [this](const auto& listing) { takeMessages(listing); });
        },
        Qt::QueuedConnection);
}

void PreviewProgram::takeMessages(const MessageReader::Listing& listing)
{
    if (m_ending) {
        return;
    }
    if (!listing) {
        end(usageStatus, QString::fromStdString(listing.error()));
        return;
    }
    const std::size_t count = listing.value().size();
    if (m_options.reply) {
        if (const auto asked = checkReply(*m_options.reply, count); !asked) {
            end(usageStatus, QString::fromStdString(asked.error()));
            return;
        }
    }
    if (count == 1 && !m_options.reply && !m_options.newMessage) {
        m_options.reply = 1;
    }
    m_mail.setMessages(listing.value());
    if (m_options.newMessage) {
        m_mail.writeNew();
    }
    if (m_options.reply) {
        replyTo(*m_options.reply - 1);
    }
    const bool composesAtOnce = m_options.reply || m_options.newMessage;
    if (!composesAtOnce || (count != 1 && !m_options.screenshotFile)) {
        showMailWindow();
    }
    if (!composesAtOnce && m_options.screenshotFile) {
        takePicture(*m_mailWindow);
    }
}

void PreviewProgram::replyTo(int index)
{
    m_mail.setCurrentIndex(index);
    // The reply opens when its message has been read.
    connect(
        &m_mail, &MailWindowState::messageChanged, this,
        [this] {
            if (m_mail.isLoaded()) {
                m_mail.reply();
            } else {
                end(usageStatus, m_mail.failure());
            }
        },
        Qt::SingleShotConnection);
}

void PreviewProgram::showMailWindow()
{
    if (!m_mailWindow) {
        m_mailWindow =
            makeWindow(QStringLiteral("MailWindow"), {{QStringLiteral("mail"), QVariant::fromValue(&m_mail)}});
    }
    if (m_mailWindow->isVisible()) {
        m_mailWindow->raise();
        m_mailWindow->requestActivate();
    } else {
        m_mailWindow->show();
    }
}

void PreviewProgram::openCompose(ComposeKind kind, std::shared_ptr<const MailDocument> original)
{
    const auto state = std::make_shared<ComposeWindowState>(kind, std::move(original));
    // Later, since both come from within the window that is to be hidden or destroyed.
    connect(
        state.get(), &ComposeWindowState::closed, this, [this, closing = state.get()] { closeCompose(closing); },
        Qt::QueuedConnection);
    connect(state.get(), &ComposeWindowState::messagesRequested, this, &PreviewProgram::showMailWindow,
            Qt::QueuedConnection);
    auto window =
        makeWindow(QStringLiteral("ComposeWindow"), {{QStringLiteral("compose"), QVariant::fromValue(state.get())}});
    window->show();
    QQuickWindow& shown = *window;
    m_composeWindows.push_back({state, std::move(window)});
    m_sessions.begin(state);
    if (m_options.screenshotFile && !m_picture) {
        takePicture(shown);
    }
}

void PreviewProgram::closeCompose(const ComposeWindowState* state)
{
    const auto found = std::find_if(m_composeWindows.begin(), m_composeWindows.end(),
                                    [state](const ComposeWindow& open) { return open.state.get() == state; });
    if (found != m_composeWindows.end()) {
        m_sessions.end(found->state);
        found->window.reset(); // Before its state, which its bindings read.
        m_composeWindows.erase(found);
    }
}

void PreviewProgram::takePicture(QQuickWindow& window)
{
    m_picture = std::make_unique<WindowPicture>(window, QString::fromStdString(*m_options.screenshotFile),
                                                [this] { return m_sessions.isSettled() && !m_mail.isLoading(); });
    connect(m_picture.get(), &WindowPicture::taken, this,
            [this](const QString& failure) { end(failure.isEmpty() ? 0 : usageStatus, failure); });
}

void PreviewProgram::end(int status, const QString& failure)
{
    if (m_ending) {
        return;
    }
    m_ending = true;
    if (!failure.isEmpty()) {
        complain(programName, failure.toStdString());
    }
    for (const ComposeWindow& open : m_composeWindows) {
        m_sessions.end(open.state);
        open.window->hide();
    }
    if (m_mailWindow) {
        m_mailWindow->hide();
    }
    QCoreApplication::exit(status);
}

} // namespace quillmate
