#include "hosts/startup/DesktopProgram.h"

#include "platform/appkit/DisplayWatch.h"
#include "platform/appkit/ViewEngine.h"

#include <QIcon>

#include <cstdlib>
#include <malloc.h>
#include <utility>

namespace quillmate
{

void DesktopProgram::drawToMemory()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", QByteArrayLiteral("offscreen"));
    }
}

Result<std::unique_ptr<DesktopProgram>, std::string> DesktopProgram::open(const Texts& texts, char** argv)
{
    if (!DisplayWatch::isDisplayNamed()) {
        return Failure(std::string(texts.noDisplay));
    }
    // Left to itself, the C library keeps what a long message took for the next one (mallopt(3), M_MMAP_THRESHOLD).
    constexpr int longestKept = 1024 * 1024;
    ::mallopt(M_MMAP_THRESHOLD, longestKept);
    ViewEngine::chooseRendering();
    std::unique_ptr<DesktopProgram> program;
    {
        const DisplayWatch watch(texts.name, texts.advice);
        program.reset(new DesktopProgram(argv));
    }
    // Not before: reading certificates wants an application object.
    auto environment = NetworkEnvironment::fromProcessEnvironment();
    if (!environment) {
        return Failure(environment.error());
    }
    const auto service = serviceOffer(std::getenv("QUILLMATE_SERVICE"), environment.value(), storedServiceChoice());
    if (!service) {
        return Failure(service.error());
    }
    program->m_service = service.value();
    program->m_environment = std::move(environment).value();
    QGuiApplication::setApplicationName(QString::fromLatin1(texts.name));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUILLMATE_VERSION));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/quillmate/quillmateLogo.svg")));
    return program;
}

} // namespace quillmate
