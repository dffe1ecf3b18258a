#include "features/MessageHistory.h"
#include "panelProcess.h"
#include "platform/appkit/NSHostingController.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "views/chat/ChatViewState.h"
#include "windowTimes.h"

#include <QGuiApplication>
#include <QQuickItem>

/// chat-first-frame FOLDER [COUNT]: the chat with the conversation that is stored in the folder; with a count, stores
/// one of so many messages there instead.
int main(int argc, char** argv)
{
    quillmate::beginPanelProcess(argv[1]);
    QGuiApplication application(argc, argv);
    if (argc > 2) {
        quillmate::MessageHistory history;
        for (int i = 0; i < std::atoi(argv[2]); ++i) {
            const std::string text = std::string(static_cast<std::size_t>(40 + i * 37 % 400), 't') + " and so on";
            history.append(i % 2 == 0 ? quillmate::Message::question(text) : quillmate::Message::answer(text));
        }
        quillmate::UserDefaults::standard().setData("reply compose", std::string(history.encode().value()));
        return 0;
    }
    quillmate::NSHostingController controller(quillmate::ChatViewState::makeContentView());
    QQuickWindow window;
    window.resize(400, 500);
    QQuickItem* chat = controller.view()->item();
    chat->setSize(window.size());
    chat->setParentItem(window.contentItem());
    quillmate::reportFirstFrame(window);
    window.show();
    const int status = QGuiApplication::exec();
    chat->setParentItem(nullptr);
    return status;
}
