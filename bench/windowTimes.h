#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <ctime>
#include <sys/resource.h>
#include <unistd.h>

namespace quillmate
{

/// Seconds since this process was started, by the kernel's account (proc(5), field 22 of stat).
inline double secondsSinceStart()
{
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray stat = file.readAll();
    const auto fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    const double started = fields.value(19).toDouble() / static_cast<double>(::sysconf(_SC_CLK_TCK));
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - started;
}

/// Prints, once the window has shown its first frame, how long after the start of the process that was (milliseconds)
/// and the most memory that the process has held (KiB), and ends the program.
inline void reportFirstFrame(QQuickWindow& window)
{
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window,
        [] {
            const double milliseconds = secondsSinceStart() * 1000;
            rusage usage{};
            ::getrusage(RUSAGE_SELF, &usage);
            std::printf("%.0f %ld\n", milliseconds, usage.ru_maxrss);
            std::fflush(stdout);
            QCoreApplication::quit();
        },
        Qt::SingleShotConnection);
}

} // namespace quillmate
