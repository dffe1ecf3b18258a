#pragma once

#include "hosts/link/Frame.h"
#include "hosts/link/LinkAnswers.h"
#include "hosts/link/LinkFrame.h"
#include "hosts/link/LinkPanels.h"
#include "platform/mailkit/MEExtension.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace quillmate
{

/// Reads frames on a thread of its own and turns them into calls of the extension, one after the other: what a frame
/// brings about on the main thread is done before the next frame is looked at, so that the panel of one message is
/// built before another message is taken in. Made and destroyed on the main thread.
class LinkThread
{
public:
    /// `ended` runs once on the main thread: with a sentence when the input was broken, with an empty text at its end.
    LinkThread(int input, FrameWriter& output, LinkAnswers& answers, MEExtension& extension, LinkPanels& panels,
               std::function<void(std::string)> ended);
    ~LinkThread();
    LinkThread(const LinkThread&) = delete;
    LinkThread& operator=(const LinkThread&) = delete;

private:
    struct Session {
        MEComposeSession session;
        std::shared_ptr<MEComposeSessionHandler> handler;
    };

    void run();
    // A failure is a sentence for the other end: why the frame could not be obeyed.
    using Performed = Result<void, std::string>;
    Performed perform(const ComposeSessionDidBegin& frame);
    Performed perform(const ViewControllerForSession& frame);
    Performed perform(const ComposeSessionFrameDidChange& frame);
    Performed perform(const ComposeSessionDidEnd& frame);
    Performed perform(const LinkQuestion& frame);
    void answerError(const LinkError& error);
    /// Runs the work on the main thread and waits for it, or for the end of the program.
    void onMainThread(std::function<void()> work);

    FrameReader m_reader;
    FrameWriter& m_output;
    LinkAnswers& m_answers;
    MEExtension& m_extension;
    LinkPanels& m_panels;
    std::function<void(std::string)> m_ended;
    int m_stopDescriptor;
    std::mutex m_stopMutex;
    bool m_stopping = false;
    std::map<std::string, Session> m_sessions;
    std::thread m_thread; // Last: it uses the members above.
};

} // namespace quillmate
