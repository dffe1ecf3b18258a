#include "base/TerminationSignals.h"

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
std::atomic<unsigned> secondsToEnd = 0;

constexpr std::array endings = {SIGTERM, SIGINT, SIGHUP};

void overdue(int)
{
    ::_exit(0);
}

void signalled(int)
{
    ::alarm(secondsToEnd.load());
    const int saved = errno;
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(writeEnd.load(), &byte, 1);
    errno = saved;
}

} // namespace

TerminationSignals::TerminationSignals(std::chrono::seconds limit)
    : m_end(&QCoreApplication::quit)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // The signals keep their own way of ending the process.
    }
    m_readEnd = ends[0];
    writeEnd = ends[1];
    secondsToEnd = static_cast<unsigned>(limit.count());
    m_notifier = std::make_unique<QSocketNotifier>(m_readEnd, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        m_notifier->setEnabled(false);
        m_end();
    });
    struct sigaction action = {};
    action.sa_handler = signalled;
    action.sa_flags = SA_RESTART;
    for (const int number : endings) {
        struct sigaction before = {};
        ::sigaction(number, nullptr, &before);
        if (number != SIGHUP || before.sa_handler != SIG_IGN) {
            ::sigaction(number, &action, nullptr);
        }
    }
    std::signal(SIGALRM, overdue);
}

TerminationSignals::~TerminationSignals()
{
    ::alarm(0);
    for (const int number : endings) {
        struct sigaction now = {};
        ::sigaction(number, nullptr, &now);
        if (now.sa_handler == signalled) {
            std::signal(number, SIG_DFL);
        }
    }
    if (m_readEnd >= 0) {
        ::close(writeEnd.exchange(-1));
        ::close(m_readEnd);
    }
}

} // namespace quillmate
