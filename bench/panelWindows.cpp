#include "extension/MailExtension.h"
#include "hosts/link/Frame.h"
#include "hosts/link/LinkPanels.h"
#include "hosts/link/LinkThread.h"
#include "panelProcess.h"
#include "state/AuthManager.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

/// Ends the loop with the next first frame of a window.
class FirstFrames : public QObject
{
public:
    /// Milliseconds from the call of `begin` to the frame.
    template<typename Begin>
    double of(Begin begin)
    {
        QElapsedTimer timer;
        timer.start();
        begin();
        m_loop.exec();
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* window = event->type() == QEvent::Show ? qobject_cast<QQuickWindow*>(object) : nullptr;
        if (window) {
            connect(window, &QQuickWindow::frameSwapped, &m_loop, &QEventLoop::quit, Qt::SingleShotConnection);
        }
        return false;
    }

private:
    QEventLoop m_loop;
};

std::string framed(const std::string& body)
{
    const auto length = static_cast<std::uint32_t>(body.size());
    std::string frame(sizeof length, '\0');
    std::memcpy(frame.data(), &length, sizeof length);
    return frame + body;
}

/// The frames that show the panel of a reply.
std::string replyFrames(int number)
{
    const std::string session = "\"session\":\"s" + std::to_string(number) + "\"";
    return framed(
               "{\"type\":\"composeSessionDidBegin\"," + session +
               ",\"originalMessage\":{\"rawData\":\"U3ViamVjdDogUGxhbnMKClRoZSBjb250ZW50Cg==\",\"subject\":\"Plans\","
               "\"fromAddress\":{\"addressString\":\"ana@a.example\"},\"headers\":{\"message-id\":[\"<" +
               std::to_string(number) + ">\"]}}}") +
           framed("{\"type\":\"viewControllerForSession\"," + session +
                  ",\"frame\":{\"left\":100,\"top\":100,\"width\":700,\"height\":650}}");
}

/// Proportional set size: what this process adds to the machine's memory, in MiB.
double memory()
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("Pss:")) {
            return line.mid(4).trimmed().split(' ').front().toDouble() / 1024;
        }
    }
    return 0;
}

} // namespace

/// The windows of replies opened one after the other while signed in, each from the arrival of its frames to its first
/// frame on the screen, against a bare window in the same process; and the memory with them open.
int main(int argc, char** argv)
{
    const QTemporaryDir folder;
    quillmate::beginPanelProcess(folder.path().toLocal8Bit());
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    quillmate::AuthManager::shared().accessToken.set("token");

    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return 1;
    }
    quillmate::MailExtension extension;
    quillmate::FrameWriter output(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    quillmate::LinkPanels panels;
    quillmate::LinkAnswers answers(extension, {});
    const quillmate::LinkThread link(pipe[0], output, answers, extension, panels, [](const std::string&) {});
    FirstFrames frames;
    application.installEventFilter(&frames);

    std::vector<double> times;
    for (int number = 1; number <= 5; ++number) {
        const std::string bytes = replyFrames(number);
        times.push_back(frames.of([&] {
            if (::write(pipe[1], bytes.data(), bytes.size()) < 0) {
                std::perror("panel-windows");
            }
        }));
        if (number == 1 || number == 5) {
            std::printf("memory with %d panel%s: %.0f MiB\n", number, number == 1 ? "" : "s", memory());
        }
    }
    std::vector<double> bare;
    std::vector<std::unique_ptr<QQuickWindow>> windows;
    for (int number = 0; number < 5; ++number) {
        windows.push_back(std::make_unique<QQuickWindow>());
        windows.back()->resize(440, 650);
        bare.push_back(frames.of([&] { windows.back()->show(); }));
    }
    std::sort(bare.begin(), bare.end());
    const double median = bare[bare.size() / 2];
    std::printf("from its frames to the first panel: %.0f ms\n", times[0]);
    std::printf("to the second: %.0f ms, a bare window %.1f ms, ratio %.1f\n", times[1], median, times[1] / median);
    std::printf("to the fifth: %.0f ms\n", times[4]);
    ::close(pipe[1]);
    return 0;
}
