#include "Stage.h"

#include "platform/appkit/NSFont.h"
#include "platform/appkit/WindowAppearance.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QQuickItem>
#include <QTimer>

namespace quillmate
{

Stage::Stage()
{
    followAppearance(m_window);
}

QImage Stage::take(const Shot& shot)
{
    NSFont::shared().setTextScale(shot.textScale);
    m_window.resize(shot.size);
    m_window.show();
    m_window.requestActivate();
    NSHostingController controller(shot.make());
    QQuickItem* item = controller.view()->item();
    item->setParentItem(m_window.contentItem());
    item->setSize(shot.size);
    if (shot.then) {
        shot.then(*item);
    }
    QImage picture = item->childItems().isEmpty() ? QImage() : settle();
    item->setParentItem(nullptr);
    return picture;
}

QImage Stage::settle()
{
    constexpr int milliseconds = 250; // Longer than any animation of a view.
    constexpr int most = 4000;        // A spinner never settles.
    QElapsedTimer time;
    time.start();
    QImage before;
    for (;;) {
        QEventLoop pause;
        QTimer::singleShot(milliseconds, &pause, &QEventLoop::quit);
        pause.exec();
        QImage now = m_window.grabWindow();
        if (now == before || time.hasExpired(most)) {
            return now;
        }
        before = std::move(now);
    }
}

} // namespace quillmate
