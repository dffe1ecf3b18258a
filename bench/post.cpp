#include "platform/foundation/net/URLSession.h"
#include "stopwatch.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>

#include <cstdio>
#include <functional>
#include <semaphore>

namespace
{

constexpr int runs = 400;
const std::string body(4096, 'b');

void throughSession()
{
    std::binary_semaphore done(0);
    quillmate::URLSession::shared()
        .dataTask({quillmate::URL::parseAbsolute("https://quillmate.example/post").value(),
                   "POST",
                   {{"Content-Type", "application/json"}},
                   std::make_shared<const std::string>(body)},
                  [&](auto, auto, auto) { done.release(); })
        ->resume();
    done.acquire();
}

} // namespace

/// One POST of 4 KB over a kept HTTPS connection to a loopback server, against a QNetworkAccessManager used directly.
int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const quillmate::TestEnvironment environment;
    quillmate::TestServer server;
    quillmate::TestEnvironment::connectTo(server);
    server.reply("POST /post", R"({"response":"ok"})");

    QNetworkAccessManager manager;
    QSslConfiguration security = QSslConfiguration::defaultConfiguration();
    security.addCaCertificates(quillmate::TestEnvironment::certificateFile(QStringLiteral("ca.pem")));
    const auto bare = [&] {
        QNetworkRequest request(QUrl(QStringLiteral("https://127.0.0.1:%1/post").arg(server.port())));
        request.setSslConfiguration(security);
        request.setPeerVerifyName(QStringLiteral("quillmate.example"));
        request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        auto* reply = manager.post(request, QByteArray::fromStdString(body));
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        reply->readAll();
        reply->deleteLater();
    };
    // The first of each makes the connection; then the two take turns, so that both meet the same machine.
    bare();
    throughSession();
    const auto median = [](std::vector<double>& times) {
        std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
        return times[runs / 2];
    };
    std::vector<double> bareTimes;
    std::vector<double> sessionTimes;
    for (int i = 0; i < runs; ++i) {
        bareTimes.push_back(quillmate::secondsFor(1, bare));
        sessionTimes.push_back(quillmate::secondsFor(1, throughSession));
    }
    const double bareSeconds = median(bareTimes);
    const double sessionSeconds = median(sessionTimes);
    std::printf("POST 4 KB: %.0f us, bare manager %.0f us, ratio %.2f\n", sessionSeconds * 1e6, bareSeconds * 1e6,
                sessionSeconds / bareSeconds);
    return 0;
}
