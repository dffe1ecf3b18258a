#include "base/Descriptors.h"
#include "hosts/startup/CommandLine.h"
#include "hosts/startup/DesktopProgram.h"
#include "hosts/startup/ServiceAccess.h"
#include "platform/appkit/NSHostingController.h"
#include "platform/appkit/WindowAppearance.h"
#include "views/chat/ChatViewState.h"

#include <QQuickItem>
#include <QQuickWindow>

namespace
{

using namespace quillmate;

constexpr DesktopProgram::Texts texts{"quillmate-chat",
                                      "there is no display to show the chat on; set DISPLAY or WAYLAND_DISPLAY",
                                      "check DISPLAY or WAYLAND_DISPLAY."};

constexpr auto help =
    "Usage: quillmate-chat\n"
    "\n"
    "The chat with the assistant in a window of its own, about no message. Nobody signs in here, so only\n"
    "a service that takes requests without a token answers.\n"
    "\n"
    "  --help     shows this text and ends\n"
    "  --version  shows the version and ends\n"
    "\n"
    "QUILLMATE_SERVICE=local starts an assistant service on this machine when it is first needed, remote\n"
    "asks the host of the build; without it that of this machine is asked where the build has no host of\n"
    "its own. QUILLMATE_CONNECT_TO=HOST=ADDRESS:PORT[,…] connects to the address in the host's place;\n"
    "QUILLMATE_CA_FILE=FILE names a PEM file with further roots to trust.\n";

constexpr QSize leastSize(280, 240);

/// The one window, which shows the chat without a message.
class ChatWindow : public QQuickWindow
{
public:
    ChatWindow()
    {
        followAppearance(*this);
        setTitle(QStringLiteral("Quillmate"));
        setMinimumSize(leastSize);
        const QQuickItem* content = m_content.view()->item();
        resize(static_cast<int>(content->implicitWidth()), static_cast<int>(content->implicitHeight()));
        m_content.view()->item()->setParentItem(contentItem());
        m_content.view()->item()->setSize(size());
    }
    ~ChatWindow() override { m_content.view()->item()->setParentItem(nullptr); }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QQuickWindow::resizeEvent(event);
        m_content.view()->item()->setSize(size());
    }

private:
    NSHostingController m_content{ChatViewState::makeContentView()};
};

} // namespace

int main(int argc, char** argv)
{
    openMissingStandardDescriptors();
    CommandLine line({});
    if (const auto status = line.readProcess(argc, argv, texts.name, help)) {
        return *status;
    }
    if (const auto words = line.words(); !words.empty()) {
        return complain(texts.name, "the argument " + words.front() + " is unknown; --help lists what there is");
    }
    const auto program = DesktopProgram::open(texts, argv);
    if (!program) {
        return complain(texts.name, program.error());
    }
    const ServiceAccess service(program.value()->service().choice, program.value()->environment());
    ChatWindow window;
    window.show();
    window.requestActivate();
    return QGuiApplication::exec();
}
