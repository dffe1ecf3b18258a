#include "features/ButtonStateManager.h"
#include "features/SummarizeStateManager.h"
#include "platform/appkit/ViewEngine.h"
#include "views/DeveloperMenuState.h"
#include "views/LoginViewState.h"
#include "views/SessionTabsViewState.h"
#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QDir>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

using namespace quillmate;

/// Every view opens alone, without a warning.
class ModuleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture.reset(); }
    void opensAlone_data();
    void opensAlone();

private:
    [[nodiscard]] QVariantMap requiredProperties(const QString& view);

    ViewFixture m_fixture;
    LoginViewState m_login{[] {}};
    SessionTabsViewState m_tabs{nullptr};
};

QVariantMap ModuleTest::requiredProperties(const QString& view)
{
    const auto state = [](QObject* object) { return QVariantMap{{"viewState", QVariant::fromValue(object)}}; };
    const QVariantMap button = {
        {"label", "Go"}, {"iconName", "wand.and.stars"}, {"backgroundColor", "red"}, {"borderColor", "blue"}};
    const QVariantMap bubble = {
        {"sentByCurrentUser", true}, {"body", "A text"}, {"note", "A note"}, {"rightToLeft", false}};
    const auto with = [](QVariantMap properties, const QVariantMap& more) {
        properties.insert(more);
        return properties;
    };
    const QVariantMap chat = state(m_tabs.modal()->chat());
    const std::map<QString, QVariantMap> known = {
        {"ChatBubble", with(bubble, {{"maximumWidth", 300}})},
        {"ChatContentView", chat},
        {"ChatInput", chat},
        {"ChatMessageList", chat},
        {"ChatRow", with(bubble, {{"index", 0}, {"hasBody", true}})},
        {"ChatView", chat},
        {"CustomButton", {{"title", "Login"}, {"backgroundColor", "red"}, {"iconName", "wand.and.stars"}}},
        {"DeveloperMenu", {{"menuState", QVariant::fromValue(m_login.developerMenu())}}},
        {"FallbackEditor", state(m_tabs.modal())},
        {"FocusRing", {{"shown", true}}},
        {"LoadingOverlay", {{"shown", true}}},
        {"LoginView", state(&m_login)},
        {"LongTextNote", {{"note", "A note"}}},
        {"PanelScroll", {{"contentMinimumHeight", 900}}},
        {"PanelTab", {{"text", "Tab"}, {"iconName", "wand.and.stars"}}},
        {"PanelTabs", state(m_tabs.modal())},
        {"ReplySection", state(m_tabs.modal()->reply())},
        {"ScrollableText", {{"text", "A text"}}},
        {"SegmentedPicker", {{"options", DeveloperMenuState::environments()}, {"selection", "live"}}},
        {"SessionButton", button},
        {"IconLabel", {{"text", "Text"}, {"iconName", "wand.and.stars"}, {"color", "black"}}},
        {"SessionModalView", state(m_tabs.modal())},
        {"SessionTabsView", state(&m_tabs)},
        {"SummaryResult", {{"summary", "A summary"}}},
        {"SummarySection", state(m_tabs.modal())},
        {"ToastView", {{"message", "A message"}}},
        {"TooltipView", {{"message", "A message"}}},
        {"UpdateModalView", state(&m_tabs)},
    };
    const auto found = known.find(view);
    return found == known.end() ? QVariantMap() : found->second;
}

void ModuleTest::opensAlone_data()
{
    QTest::addColumn<QString>("view");
    const auto files = QDir(QStringLiteral(":/qt/qml/Quillmate/Views")).entryInfoList({"*.qml"});
    QVERIFY(files.size() > 10);
    for (const QFileInfo& file : files) {
        QTest::newRow(qPrintable(file.baseName())) << file.baseName();
    }
}

void ModuleTest::opensAlone()
{
    QFETCH(const QString, view);
    QQmlComponent component(&ViewEngine::shared());
    if (view == QLatin1String("Theme")) { // No view: a singleton has no instances of its own.
        component.setData("import QtQuick; import Quillmate.Views; Item { implicitWidth: Theme.panelMinimumWidth }",
                          QUrl());
    } else {
        component.loadUrl(QUrl("qrc:/qt/qml/Quillmate/Views/" + view + ".qml"));
    }
    QVERIFY2(component.isReady(), qPrintable(component.errorString()));
    const std::unique_ptr<QObject> made(component.createWithInitialProperties(requiredProperties(view)));
    auto* item = qobject_cast<QQuickItem*>(made.get());
    QVERIFY2(item && !component.isError(), qPrintable(component.errorString()));
    item->setSize({420, 600});
    item->setParentItem(m_fixture.window().contentItem());
    QVERIFY(!m_fixture.window().grabWindow().isNull()); // Laid out and drawn once.
    QCoreApplication::processEvents();
    item->setParentItem(nullptr);
}

int main(int argc, char** argv)
{
    return runViewTest<ModuleTest>(argc, argv);
}
#include "ModuleTest.moc"
