#include "features/CurrentMessage.h"
#include "platform/appkit/ViewEngine.h"
#include "support/TestProgram.h"
#include "views/ViewFixture.h"
#include "views/ViewTestApplication.h"
#include "views/login/LoginViewState.h"
#include "views/session/SessionTabsViewState.h"

#include <QDir>
#include <QJsonDocument>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

using namespace quillmate;

class ModuleTest : public QObject
{
    Q_OBJECT

private:
    /// Something for each property of the view that has to be told.
    [[nodiscard]] QVariantMap propertiesOf(const QObject& view)
    {
        static const QVariantMap known = QJsonDocument::fromJson(R"({
            "backgroundColor": "red", "body": "A text", "borderColor": "blue", "color": "black", "hasBody": true,
            "contentMinimumHeight": 90, "iconName": "doc.on.doc", "index": 0, "label": "Go", "maximumWidth": 90,
            "message": "A message", "note": "A note", "options": [{"key": "live", "name": "Live"}],
            "rightToLeft": false, "selection": "live", "sentByCurrentUser": true, "shown": true,
            "summary": "A summary", "text": "A text", "title": "Login"})")
                                             .toVariant()
                                             .toMap();
        const std::initializer_list<QVariant> states = {QVariant::fromValue(&m_login),
                                                        QVariant::fromValue(m_login.developerMenu()),
                                                        QVariant::fromValue(&m_tabs),
                                                        QVariant::fromValue(m_tabs.modal()),
                                                        QVariant::fromValue(m_tabs.modal()->reply()),
                                                        QVariant::fromValue(m_tabs.modal()->chat())};
        QVariantMap properties;
        for (int i = 0; i < view.metaObject()->propertyCount(); ++i) {
            const QMetaProperty property = view.metaObject()->property(i);
            const QString name = QString::fromLatin1(property.name());
            if (known.contains(name)) {
                properties.insert(name, known[name]);
            }
            for (const QVariant& state : states) {
                if (property.metaType() == state.metaType()) {
                    properties.insert(name, state);
                }
            }
        }
        return properties;
    }

    ViewFixture m_fixture;
    LoginViewState m_login{*currentMessage(), [] {}};
    SessionTabsViewState m_tabs{currentMessage(), nullptr};

private Q_SLOTS:
    void init() { m_fixture.reset(); }

    void opensAlone_data()
    {
        QTest::addColumn<QString>("view");
        const auto files = QDir(QStringLiteral(":/qt/qml/Quillmate/Views")).entryInfoList({"*.qml"});
        QVERIFY(files.size() > 10);
        for (const QFileInfo& file : files) {
            if (file.baseName() != QLatin1String("Theme")) { // No view.
                QTest::newRow(qPrintable(file.baseName())) << file.baseName();
            }
        }
    }

    /// Without a warning, and without taking the keyboard from where the user is writing.
    void opensAlone()
    {
        QFETCH(const QString, view);
        QQuickItem written(m_fixture.window().contentItem());
        written.forceActiveFocus();
        QQmlComponent component(&ViewEngine::shared(), QUrl("qrc:/qt/qml/Quillmate/Views/" + view + ".qml"));
        QVERIFY2(component.isReady(), qPrintable(component.errorString()));
        const std::unique_ptr<QObject> made(component.beginCreate(ViewEngine::shared().rootContext()));
        auto* item = qobject_cast<QQuickItem*>(made.get());
        QVERIFY2(item, qPrintable(component.errorString()));
        component.setInitialProperties(item, propertiesOf(*item));
        component.completeCreate();
        QVERIFY2(!component.isError(), qPrintable(component.errorString()));
        item->setSize({420, 600});
        item->setParentItem(m_fixture.window().contentItem());
        QVERIFY(!m_fixture.window().grabWindow().isNull()); // Laid out and drawn once.
        QCoreApplication::processEvents();
        QVERIFY(written.hasActiveFocus());
        item->setParentItem(nullptr);
    }
};

QUILLMATE_TEST(ModuleTest, quillmate::ViewTestApplication)
#include "ModuleTest.moc"
