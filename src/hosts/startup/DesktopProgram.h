#pragma once

#include "base/Result.h"
#include "base/TerminationSignals.h"
#include "hosts/startup/ServiceChoice.h"
#include "platform/foundation/net/NetworkEnvironment.h"

#include <QGuiApplication>

#include <memory>
#include <string>

namespace quillmate
{

/// A program with windows: its application object, what the environment says about its connections, and its end on a
/// signal. Main thread; one per process.
class DesktopProgram
{
public:
    struct Texts {
        const char* name;      ///< of the program, in lower case
        const char* noDisplay; ///< says that no display is named and what to do
        const char* advice;    ///< what to do when the one that is named cannot be opened
    };

    /// The failure is one sentence. A display that cannot be opened ends the process with one line and status 2.
    static Result<std::unique_ptr<DesktopProgram>, std::string> open(const Texts& texts, char** argv);

    /// Before `open`: windows go to memory alone, unless QT_QPA_PLATFORM says otherwise.
    static void drawToMemory();

    [[nodiscard]] const NetworkEnvironment& environment() const { return m_environment; }
    /// Whose service to ask, by the environment and the user's choice as they were at the start.
    [[nodiscard]] const ServiceOffer& service() const { return m_service; }

private:
    explicit DesktopProgram(char** argv)
        : m_application(m_noArguments, argv)
    {
    }

    int m_noArguments = 1; // Ours are read already; Qt's own are given in its environment variables.
    QGuiApplication m_application;
    NetworkEnvironment m_environment;
    ServiceOffer m_service;
    TerminationSignals m_signals;
};

} // namespace quillmate
