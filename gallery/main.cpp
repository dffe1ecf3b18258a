#include "Page.h"
#include "Shots.h"
#include "Stage.h"

#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/ViewEngine.h"
#include "platform/foundation/net/URLSession.h"
#include "platform/foundation/text/print.h"
#include "state/APIManager.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr int usageStatus = 2;
constexpr auto help = "Usage: quillmate-gallery DIR\n"
                      "\n"
                      "Renders every view in its states into DIR, as pictures and one page, index.html.\n"
                      "\n"
                      "  --help     shows this text and ends\n"
                      "  --version  shows the version and ends\n";

int fail(const std::string& sentence)
{
    std::fprintf(stderr, "quillmate-gallery: %s\n", sentence.c_str());
    return usageStatus;
}

/// The made-up panels ask for a version, as every panel does: nobody answers.
void stayAlone()
{
    quillmate::NetworkEnvironment nobody;
    if (const auto url = quillmate::URL::parseAbsolute(quillmate::currentApiURL())) {
        nobody.connectTo[url->host()] = {"127.0.0.1", 1};
    }
    quillmate::URLSession::configure(std::move(nobody));
}

QString fileName(const quillmate::Shot& shot, const char* appearance)
{
    static const QRegularExpression other(QStringLiteral("[^a-z0-9]+"));
    QString name = QString::fromStdString(shot.view + ' ' + shot.state).toLower();
    return name.replace(other, QStringLiteral("-")) + QLatin1Char('-') + QString::fromLatin1(appearance) +
           QStringLiteral(".png");
}

int render(const QDir& folder)
{
    quillmate::Stage stage;
    std::vector<quillmate::GalleryEntry> entries;
    const auto shots = quillmate::allShots();
    for (const quillmate::Shot& shot : shots) {
        entries.push_back({shot.view, shot.state, fileName(shot, "light"), fileName(shot, "dark")});
        for (const bool dark : {false, true}) {
            quillmate::NSAppearance::shared().setDark(dark);
            const QString name = dark ? entries.back().dark : entries.back().light;
            if (!stage.take(shot).save(folder.filePath(name))) {
                return fail("cannot write " + folder.filePath(name).toStdString() +
                            "; look at its rights and the room left");
            }
        }
    }
    QFile page(folder.filePath(QStringLiteral("index.html")));
    const QByteArray text = quillmate::galleryPage(entries).toUtf8();
    if (!page.open(QIODevice::WriteOnly) || page.write(text) != text.size()) {
        return fail("cannot write " + page.fileName().toStdString() + "; look at its rights and the room left");
    }
    std::printf("%zu states in %s\n", shots.size(), page.fileName().toLocal8Bit().constData());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string argument = argc == 2 ? argv[1] : "";
    if (argument == "--help") {
        std::fputs(help, stdout);
        return 0;
    }
    if (argument == "--version") {
        std::puts("quillmate-gallery " QUILLMATE_VERSION);
        return 0;
    }
    if (argument.empty() || argument.front() == '-') {
        return fail(argc == 2 && !argument.empty()
                        ? "the option " + argument + " is unknown; --help lists what there is"
                        : "name one folder to write to");
    }
    const QDir folder(QString::fromLocal8Bit(argument.c_str()));
    if (!folder.mkpath(QStringLiteral("."))) {
        return fail("cannot make the folder " + argument + "; choose another one");
    }
    const QTemporaryDir own;
    qputenv("XDG_DATA_HOME", own.path().toLocal8Bit());
    qputenv("XDG_CACHE_HOME", own.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen"); // Pictures need no display.
    quillmate::setPrintDescriptor(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    quillmate::ViewEngine::chooseRendering();
    const QGuiApplication application(argc, argv);
    stayAlone();
    return render(folder);
}
