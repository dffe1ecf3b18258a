#include "platform/foundation/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace quillmate
{
namespace
{

// A signal handler may do little more than write to a descriptor.
std::atomic<int> writeEnd = -1;

constexpr unsigned secondsToEnd = 5;

void overdue(int)
{
    ::_exit(0);
}

void signalled(int)
{
    ::alarm(secondsToEnd);
    const int saved = errno;
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(writeEnd.load(), &byte, 1);
    errno = saved;
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // The signals keep their own way of ending the process.
    }
    m_readEnd = ends[0];
    writeEnd = ends[1];
    auto* notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = signalled;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        ::sigaction(number, &action, nullptr);
    }
    std::signal(SIGALRM, overdue);
}

TerminationSignals::~TerminationSignals()
{
    ::alarm(0);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        std::signal(number, SIG_DFL);
    }
    if (m_readEnd >= 0) {
        ::close(writeEnd.exchange(-1));
        ::close(m_readEnd);
    }
}

} // namespace quillmate
