#include "features/RepliedMessage.h"
#include "panelProcess.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "views/HostedViewOf.h"
#include "views/session/SessionTabsViewState.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <sys/resource.h>

namespace
{

double cpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void pass(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// CPU milliseconds that the process takes in so many seconds of the clock.
double work(int seconds)
{
    const double before = cpuSeconds();
    pass(seconds * 1000);
    return (cpuSeconds() - before) * 1000;
}

/// Milliseconds from a change to the end of the frame that shows it.
template<typename Change>
double untilFrame(QQuickWindow& window, Change change)
{
    QEventLoop loop;
    const auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
    QElapsedTimer timer;
    timer.start();
    change();
    loop.exec();
    QObject::disconnect(connection);
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

/// What the panel costs while it waits and while its spinner turns, and how soon a click shows.
int main(int argc, char** argv)
{
    const QTemporaryDir folder;
    qputenv("QUILLMATE_CONNECT_TO", "quillmate.example=127.0.0.1:1");
    quillmate::beginPanelProcess(folder.path().toLocal8Bit());
    const QGuiApplication application(argc, argv);
    const auto message = std::make_shared<const quillmate::RepliedMessage>(
        quillmate::ReplyEmail{"ana@mail.example", "Plans", std::nullopt, std::string(3000, 'c'), "<m1@mail.example>"});
    auto state = quillmate::makeMainOwned<quillmate::SessionTabsViewState>(message, nullptr);
    quillmate::NSHostingController controller(quillmate::hostedViewOf(QStringLiteral("SessionTabsView"), state));
    QQuickWindow window;
    window.resize(440, 640);
    QQuickItem* panel = controller.view()->item();
    panel->setSize(window.size());
    panel->setParentItem(window.contentItem());
    window.show();
    pass(1500);

    const double frame = untilFrame(window, [&] { window.update(); });
    const double click = untilFrame(window, [&] { state->modal()->reply()->generateClicked(); });
    std::printf("click on \"Generate response\" to the overlay's frame: %.1f ms, an empty frame %.1f ms, ratio %.2f\n",
                click, frame, click / frame);
    pass(6000); // The toast of the failed request goes.
    std::printf("idle panel: %.0f ms of CPU in 10 s\n", work(10));
    state->buttonStateManager().setGenerateResponseLoading(true);
    pass(300);
    std::printf("spinner: %.1f ms of CPU a second\n", work(5) / 5);
    panel->setParentItem(nullptr);
}
