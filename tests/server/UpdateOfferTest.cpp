#include "server/UpdateOffer.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate::server;

/// Which versions are newer.
class UpdateOfferTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void versionsRise()
    {
        // Each over the one before; Semantic Versioning 2.0.0, 11.
        const std::vector<std::string> rising = {
            "",    "1.0.0-alpha", "1.0.0-alpha.1", "1.0.0-alpha.beta", "1.0.0-beta.2", "1.0.0-beta.11",
            "1.0", "1.1.0-alpha", "v1.2",          "1.2.0.1",          "1.9",          "1.10"};
        for (std::size_t index = 1; index < rising.size(); ++index) {
            QVERIFY2(isNewerVersion(rising[index], rising[index - 1]), rising[index].c_str());
            QVERIFY2(!isNewerVersion(rising[index - 1], rising[index]), rising[index].c_str());
        }
        for (const auto& [candidate, current] : std::vector<std::pair<const char*, const char*>>{
                 {"1.2", "1.2.0"}, {"1.02", "V1.2"}, {"0.0", ""}, {"1.0.0-rc.1", "1.0.0-rc.1+7"}, {"1+2", "1+1"}}) {
            QVERIFY2(!isNewerVersion(candidate, current) && !isNewerVersion(current, candidate), candidate);
        }
        QVERIFY(isNewerVersion("1.0", "nonsense"));
    }
};

QUILLMATE_TEST(UpdateOfferTest, QCoreApplication)
#include "UpdateOfferTest.moc"
