#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QQuickWindow>
#include <QTimer>
#include <functional>

namespace quillmate
{

/// Writes a window as a PNG file once it has settled: what it waits for is there, and it has stopped redrawing itself.
/// Main thread only.
class WindowPicture : public QObject
{
    Q_OBJECT

public:
    /// `isReady` says whether everything has come that the window is to show. A window that keeps moving is taken two
    /// seconds after that.
    WindowPicture(QQuickWindow& window, QString file, std::function<bool()> isReady, QObject* parent = nullptr);

Q_SIGNALS:
    /// `failure` is empty when the file was written, else a sentence.
    void taken(const QString& failure);

private:
    void look();

    QQuickWindow& m_window;
    QString m_file;
    std::function<bool()> m_isReady;
    QTimer m_timer;
    QElapsedTimer m_sinceReady;
    bool m_redrawn = true;
};

} // namespace quillmate
