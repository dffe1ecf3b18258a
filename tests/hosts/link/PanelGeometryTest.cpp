#include "hosts/link/PanelWindow.h"
#include "support/TestProgram.h"

#include <QCoreApplication>

using namespace quillmate;

class PanelGeometryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void geometry()
    {
        const QRect screen(0, 0, 1920, 1080);
        const QSize least(400, 550);
        const struct {
            const char* name;
            QRect compose;
            QSize least;
            QRect available;
            QRect panel;
        } rows[] = {
            {"at the right", {100, 100, 800, 700}, least, screen, {908, 100, 440, 700}},
            {"just fits at the right", {672, 0, 800, 700}, least, screen, {1480, 0, 440, 700}},
            {"one too far right", {673, 0, 800, 700}, least, screen, {225, 0, 440, 700}},
            {"just fits at the left", {448, 0, 1100, 700}, least, screen, {0, 0, 440, 700}},
            {"room at neither side", {447, 50, 1100, 900}, least, screen, {1480, 50, 440, 900}},
            {"fills the screen", {0, 0, 1920, 1080}, least, screen, {1480, 0, 440, 1080}},
            {"low", {100, 900, 800, 700}, least, screen, {908, 380, 440, 700}},
            {"above the screen", {100, -50, 800, 600}, least, screen, {908, 0, 440, 600}},
            {"taller than the screen", {100, 10, 800, 3000}, least, screen, {908, 0, 440, 1080}},
            {"low and flat", {100, 1000, 300, 60}, least, screen, {408, 530, 440, 550}},
            {"no size at all", {100, 100, 0, 0}, least, screen, {108, 100, 440, 550}},
            {"wider panel", {100, 100, 800, 700}, {480, 400}, screen, {908, 100, 480, 700}},
            {"below a bar", {100, 0, 800, 700}, least, {0, 30, 1920, 1050}, {908, 30, 440, 700}},
            {"screen at the left of the first",
             {-1900, 100, 800, 700},
             least,
             {-1920, 0, 1920, 1080},
             {-1092, 100, 440, 700}},
            {"keeps off the next screen", {-900, 100, 800, 700}, least, {-1920, 0, 1920, 1080}, {-1348, 100, 440, 700}},
            {"screen narrower than the panel", {10, 20, 300, 300}, least, {0, 0, 420, 700}, {0, 20, 440, 550}},
            {"small screen", {10, 20, 500, 300}, least, {0, 0, 640, 480}, {200, 0, 440, 550}},
        };
        for (const auto& row : rows) {
            QVERIFY2(panelGeometry(row.compose, row.least, row.available) == row.panel, row.name);
        }
    }
};

QUILLMATE_TEST(PanelGeometryTest, QCoreApplication)
#include "PanelGeometryTest.moc"
