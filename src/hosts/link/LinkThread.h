#pragma once

#include "hosts/link/Frame.h"
#include "hosts/link/LinkFrame.h"
#include "hosts/link/LinkPanels.h"
#include "platform/mailkit/MEExtension.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
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
    LinkThread(int input, FrameWriter& output, MEExtension& extension, LinkPanels& panels,
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
    // Each tells why the frame could not be obeyed, absent when all went well.
    using Wrong = std::optional<std::string>;
    Wrong perform(const ComposeSessionDidBegin& frame);
    Wrong perform(const ViewControllerForSession& frame);
    Wrong perform(const ComposeSessionFrameDidChange& frame);
    Wrong perform(const ComposeSessionDidEnd& frame);
    Wrong perform(const LinkQuestion& frame);
    void answerError(const LinkError& error);
    /// Runs the work on the main thread and waits for it, or for the end of the program.
    void onMainThread(std::function<void()> work);

    FrameReader m_reader;
    FrameWriter& m_output;
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
