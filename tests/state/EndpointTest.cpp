#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/APIManager.h"
#include "state/Notifications.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

/// Where the service is, by what is stored.
class EndpointTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void lookUps();
    void selectedEndpoint();
    void endpointChanged();

private:
    TestEnvironment m_environment;
    LogCapture m_log;
};

namespace
{

const auto live = QStringLiteral("https://" QUILLMATE_LIVE_HOST);
const auto staging = QStringLiteral("https://" QUILLMATE_STAGING_HOST);
const auto dev = QStringLiteral("https://" QUILLMATE_DEV_HOST);
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

void EndpointTest::lookUps()
{
    const auto expect = [this](const QString& origin, bool fallsBack) {
        // Every look-up that falls back says so.
        for (int time = 0; time < 2; ++time) {
            QCOMPARE(QString::fromStdString(APIManager::shared().apiURL()), origin + api);
            QCOMPARE(m_log.take(), fallsBack ? QStringList{apiFallback} : QStringList());
            QCOMPARE(QString::fromStdString(APIManager::shared().baseURL()), origin);
            QCOMPARE(m_log.take(), fallsBack ? QStringList{baseFallback} : QStringList());
        }
    };
    expect(live, true);
    for (const auto& [key, origin] : {std::pair("dev", dev), std::pair("staging", staging), std::pair("live", live)}) {
        defaults().setString("selectedApiEndpoint", key);
        expect(origin, false);
    }
    for (const char* unknown : {"Live", "", "dev "}) {
        defaults().setString("selectedApiEndpoint", unknown);
        expect(live, true);
    }
    defaults().setBoolean("selectedApiEndpoint", true);
    expect(live, true);
    defaults().setData("selectedApiEndpoint", "dev");
    expect(live, true);
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

QUILLMATE_TEST(EndpointTest, QCoreApplication)
#include "EndpointTest.moc"
