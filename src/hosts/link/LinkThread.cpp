#include "hosts/link/LinkThread.h"

#include "platform/appkit/MEExtensionViewController.h"
#include "platform/foundation/schedule/DispatchQueue.h"

#include <future>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace quillmate
{
namespace
{

std::string named(const std::string& session)
{
    constexpr std::size_t longest = 100;
    return session.size() <= longest ? '"' + session + '"' : "of " + std::to_string(session.size()) + " bytes";
}

Failure<std::string> unknown(const std::string& session)
{
    return Failure("The session " + named(session) + " is unknown.");
}

} // namespace

LinkThread::LinkThread(int input, FrameWriter& output, LinkAnswers& answers, MEExtension& extension, LinkPanels& panels,
                       std::function<void(std::string)> ended)
    : m_reader(input, -1)
    , m_output(output)
    , m_answers(answers)
    , m_extension(extension)
    , m_panels(panels)
    , m_ended(std::move(ended))
    , m_stopDescriptor(::eventfd(0, EFD_CLOEXEC))
{
    m_reader = FrameReader(input, m_stopDescriptor);
    m_thread = std::thread([this] { run(); });
}

LinkThread::~LinkThread()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(m_stopDescriptor, &one, sizeof one);
    {
        const std::lock_guard lock(m_stopMutex);
        m_stopping = true;
    }
    // The thread may be waiting for main-thread work that will not run any more: dropping that work ends its wait.
    MainSchedule::shared().clear();
    m_thread.join();
    ::close(m_stopDescriptor);
}

void LinkThread::run()
{
    for (;;) {
        auto next = m_reader.next();
        if (!next || !next.value()) {
            DispatchQueue::main().async(
                [ended = m_ended, reason = next ? std::string() : next.error()] { ended(reason); });
            return;
        }
        auto read =
            readLinkFrame(*std::move(next).value()); // Moved: a message of many megabytes is held once, not twice.
        if (!read) {
            answerError(read.error());
            continue;
        }
        const LinkRequest request = std::move(read).value();
        if (const auto done = std::visit([this](const auto& frame) { return perform(frame); }, request.frame); !done) {
            answerError({done.error(), request.request});
        }
    }
}

LinkThread::Performed LinkThread::perform(const ComposeSessionDidBegin& frame)
{
    const MEComposeSession session(frame.session, MEComposeContext(frame.originalMessage));
    if (const auto found = m_sessions.find(frame.session); found != m_sessions.end()) {
        found->second.handler->mailComposeSessionDidBegin(session);
        return {};
    }
    const auto handler = m_extension.handlerForComposeSession(session);
    handler->mailComposeSessionDidBegin(session);
    // The message has done its work; a session may stay open for hours.
    m_sessions.emplace(frame.session, Session{MEComposeSession(frame.session, MEComposeContext()), handler});
    return {};
}

LinkThread::Performed LinkThread::perform(const ViewControllerForSession& frame)
{
    const auto found = m_sessions.find(frame.session);
    if (found == m_sessions.end()) {
        return unknown(frame.session);
    }
    onMainThread([this, session = found->second, frame] {
        m_panels.show(
            frame.session, [&session] { return session.handler->viewControllerForSession(session.session); },
            frame.frame);
    });
    return {};
}

LinkThread::Performed LinkThread::perform(const ComposeSessionFrameDidChange& frame)
{
    if (!m_sessions.contains(frame.session)) {
        return unknown(frame.session);
    }
    onMainThread([this, frame] { m_panels.follow(frame.session, frame.frame); });
    return {};
}

LinkThread::Performed LinkThread::perform(const ComposeSessionDidEnd& frame)
{
    const auto found = m_sessions.find(frame.session);
    if (found == m_sessions.end()) {
        return unknown(frame.session);
    }
    found->second.handler->mailComposeSessionDidEnd(found->second.session);
    m_sessions.erase(found);
    onMainThread([this, name = frame.session] { m_panels.close(name); });
    return {};
}

LinkThread::Performed LinkThread::perform(const LinkQuestion& frame)
{
    const std::string answer = m_answers.answerTo(frame);
    if (answer.size() > largestOutgoingFrame) {
        return Failure(std::string("The answer is too long for a frame."));
    }
    m_output.write(answer); // When nobody reads any more, the input ends as well, and with it this thread.
    return {};
}

void LinkThread::answerError(const LinkError& error)
{
    m_output.write(writeLinkError(error));
}

void LinkThread::onMainThread(std::function<void()> work)
{
    auto done = std::make_shared<std::promise<void>>(); // Owned by the work alone, so that it ends with it.
    std::future<void> finished = done->get_future();
    {
        const std::lock_guard lock(m_stopMutex);
        if (m_stopping) {
            return;
        }
        DispatchQueue::main().async([work = std::move(work), done = std::move(done)] {
            work();
            done->set_value();
        });
    }
    finished.wait(); // Also returns when the work is dropped.
}

} // namespace quillmate
