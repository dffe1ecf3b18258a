#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/UserDefaults.h"
#include "state/APIManager.h"
#include "state/Notifications.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"

#include <QTest>

using namespace quillmate;

/// Where the service is, by what is stored.
class EndpointTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void lookUps_data();
    void lookUps();
    void selectedEndpoint();
    void endpointChanged();

private:
    TestEnvironment m_environment;
    LogCapture m_log;
};

namespace
{

const auto live = QStringLiteral("https://quillmate.example");
const auto staging = QStringLiteral("https://staging.quillmate.example");
const auto dev = QStringLiteral("https://quillmate-dev.test");
const auto api = QStringLiteral("/api/v1");
const auto apiFallback =
    QStringLiteral("Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.");
const auto baseFallback =
    QStringLiteral("Error: Invalid or missing Base API endpoint in UserDefaults. Falling back to live.");

UserDefaults& defaults()
{
    return UserDefaults::standard();
}

} // namespace

void EndpointTest::init()
{
    defaults().removeObject("selectedApiEndpoint");
    std::ignore = APIManager::shared().apiURL(); // It listens from its first use on.
    m_log.take();
}

void EndpointTest::lookUps_data()
{
    QTest::addColumn<QString>("stored"); // null: nothing; else "text:", "bool:" or "data:" and the value
    QTest::addColumn<QString>("origin");
    QTest::addColumn<bool>("fallsBack");
    QTest::newRow("nothing stored") << QString() << live << true;
    QTest::newRow("dev") << "text:dev" << dev << false;
    QTest::newRow("staging") << "text:staging" << staging << false;
    QTest::newRow("live") << "text:live" << live << false;
    QTest::newRow("capital letter") << "text:Live" << live << true;
    QTest::newRow("empty") << "text:" << live << true;
    QTest::newRow("blank behind") << "text:dev " << live << true;
    QTest::newRow("Boolean") << "bool:dev" << live << true;
    QTest::newRow("data") << "data:dev" << live << true;
}

void EndpointTest::lookUps()
{
    QFETCH(const QString, stored);
    QFETCH(const QString, origin);
    QFETCH(const bool, fallsBack);
    const std::string value = stored.mid(5).toStdString();
    if (stored.startsWith(QLatin1String("text:"))) {
        defaults().setString("selectedApiEndpoint", value);
    } else if (stored.startsWith(QLatin1String("bool:"))) {
        defaults().setBoolean("selectedApiEndpoint", true);
    } else if (stored.startsWith(QLatin1String("data:"))) {
        defaults().setData("selectedApiEndpoint", value);
    }
    // Every look-up that falls back says so.
    for (int time = 0; time < 2; ++time) {
        QCOMPARE(QString::fromStdString(APIManager::shared().apiURL()), origin + api);
        QCOMPARE(m_log.take(), fallsBack ? QStringList{apiFallback} : QStringList());
        QCOMPARE(QString::fromStdString(APIManager::shared().baseURL()), origin);
        QCOMPARE(m_log.take(), fallsBack ? QStringList{baseFallback} : QStringList());
    }
}

void EndpointTest::selectedEndpoint()
{
    QCOMPARE(APIManager::selectedApiEndpoint(), std::string("live"));
    defaults().setString("selectedApiEndpoint", "staging");
    QCOMPARE(APIManager::selectedApiEndpoint(), std::string("staging"));
    QCOMPARE(m_log.take(), QStringList());
    QStringList offered;
    for (const ServiceEnvironment& environment : serviceEnvironments()) {
        offered.append(QString::fromStdString(std::string(environment.key) + ' ' + std::string(environment.name)));
    }
    QCOMPARE(offered, (QStringList{"dev Dev", "staging Staging", "live Live"}));
}

void EndpointTest::endpointChanged()
{
    defaults().setString("selectedApiEndpoint", "dev");
    NotificationCenter::defaultCenter().post(apiEndpointChanged);
    QCOMPARE(m_log.take(),
             (QStringList{"API Endpoint changed to: " + dev + api, "BASE API Endpoint changed to : " + dev}));
    defaults().removeObject("selectedApiEndpoint");
    NotificationCenter::defaultCenter().post(apiEndpointChanged);
    QCOMPARE(m_log.take(), (QStringList{apiFallback, "API Endpoint changed to: " + live + api, baseFallback,
                                        "BASE API Endpoint changed to : " + live}));
}

QTEST_GUILESS_MAIN(EndpointTest)
#include "EndpointTest.moc"
