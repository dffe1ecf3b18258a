#pragma once

#include <QImage>
#include <QObject>
#include <QQuickWindow>
#include <QTimer>
#include <functional>

namespace quillmate
{

/// Writes a window as a PNG file once it has settled: what it waits for is there, and it shows the same twice in a row.
/// Main thread only.
class WindowPicture : public QObject
{
    Q_OBJECT

public:
    /// `isReady` says whether everything has come that the window is to show. A window that keeps moving is taken two
    /// seconds after that.
    WindowPicture(QQuickWindow& window, QString file, std::function<bool()> isReady);

Q_SIGNALS:
    /// `failure` is empty when the file was written, else a sentence.
    void taken(const QString& failure);

private:
    void look();

    QQuickWindow& m_window;
    const QString m_file;
    const std::function<bool()> m_isReady;
    QTimer m_timer;
    QImage m_before;
    int m_looks = 0;
};

} // namespace quillmate
