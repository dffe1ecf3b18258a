#include "features/ChatErrorMessage.h"
#include "features/MessageHistory.h"
#include "platform/foundation/MainOwned.h"
#include "platform/foundation/UserDefaults.h"
#include "state/ReplyEmailManager.h"
#include "views/ChatViewState.h"
#include "views/HostedViewOf.h"
#include "views/ShownText.h"
#include "views/ViewFixture.h"
#include "views/ViewTestMain.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

using namespace quillmate;

class ChatViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void bubbles();
    void areaAndBubbleBounds();
    void directions();
    void errorLine_data();
    void errorLine();
    void sending_data();
    void sending();
    void hugeHistory();
    void endAfterEveryChange();
    void staysWhereTheUserIs();
    void keyboardCopies();
    void answerWhileWalking();
    void clickKeepsThePlace();
    void selecting();
    void hostileTexts_data();
    void hostileTexts();
    void shownAndHidden();

private:
    void show(const std::vector<std::string>& conversation, QSize size = {440, 420});
    [[nodiscard]] QQuickItem* list() const { return m_fixture.item("chatMessages"); }
    [[nodiscard]] QList<QQuickItem*> rows() const;
    [[nodiscard]] QQuickItem* row(int index) const;
    [[nodiscard]] static QQuickItem* within(QQuickItem* item, const char* name);
    /// How far the last row's bottom is from the bottom of what is seen.
    [[nodiscard]] double distanceToEnd() const;

    ViewFixture m_fixture;
    std::shared_ptr<ChatViewState> m_state;
};

namespace
{

const std::string key = "reply compose";

void store(const std::vector<std::string>& conversation)
{
    MessageHistory history;
    for (std::size_t i = 0; i < conversation.size(); ++i) {
        history.append(i % 2 == 0 ? Message::question(conversation[i]) : Message::answer(conversation[i]));
    }
    UserDefaults::standard().setData(key, history.encode().value());
}

std::vector<std::string> numbered(int count)
{
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back("Message " + std::to_string(i) + std::string(static_cast<std::size_t>(i * 37 % 400), 'x'));
    }
    return texts;
}

} // namespace

void ChatViewTest::init()
{
    m_state.reset();
    m_fixture.reset();
    ChatErrorMessage::shared().setChatErrorMessage(std::nullopt);
}

void ChatViewTest::show(const std::vector<std::string>& conversation, QSize size)
{
    store(conversation);
    m_state = makeMainOwned<ChatViewState>();
    m_fixture.window().resize(size);
    m_fixture.show(hostedViewOf(QStringLiteral("ChatView"), m_state));
    QTest::qWait(0); // A turn of the loop, in which the list lays itself out.
}

QList<QQuickItem*> ChatViewTest::rows() const
{
    QList<QQuickItem*> found;
    const auto children = list()->property("contentItem").value<QQuickItem*>()->childItems();
    for (QQuickItem* child : children) {
        if (child->property("sentByCurrentUser").isValid() && child->isVisible()) {
            found << child;
        }
    }
    std::sort(found.begin(), found.end(), [](const auto* a, const auto* b) { return a->y() < b->y(); });
    return found;
}

QQuickItem* ChatViewTest::row(int index) const
{
    const auto all = rows();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto* item) { return item->property("index") == index; });
    return found == all.end() ? nullptr : *found;
}

QQuickItem* ChatViewTest::within(QQuickItem* item, const char* name)
{
    const auto children = item->childItems();
    for (QQuickItem* child : children) {
        if (child->objectName() == QLatin1String(name)) {
            return child->isVisible() ? child : nullptr;
        }
        if (auto* found = within(child, name)) {
            return found;
        }
    }
    return nullptr;
}

double ChatViewTest::distanceToEnd() const
{
    const auto* last = row(static_cast<int>(m_state->chat().messages().size()) - 1);
    if (!last) {
        return 1e6;
    }
    // A short conversation stands at the top.
    const double bottom = last->mapToItem(list(), {0, last->height()}).y();
    return bottom - std::min(list()->height(), list()->property("contentHeight").toDouble());
}

void ChatViewTest::bubbles()
{
    show({"When?", "On Thursday."});
    QCOMPARE(rows().size(), 2);
    auto* question = within(row(0), "bubble");
    auto* answer = within(row(1), "bubble");
    const auto right = [](QQuickItem* item, QQuickItem* of) { return item->mapToItem(of, {item->width(), 0}).x(); };
    QCOMPARE(right(question, row(0)), row(0)->width() - 5);
    QVERIFY(!within(row(0), "disc"));
    auto* disc = within(row(1), "disc");
    QCOMPARE(disc->size(), QSizeF(38, 38));
    QCOMPARE(answer->mapToItem(row(1), {0, 0}).x(), 5 + 38 + 5.0);
    QCOMPARE(within(question, "bubbleField")->property("color").value<QColor>(), QColor("#2563eb"));
    QCOMPARE(within(question, "bubbleText")->property("color").value<QColor>(), QColor(Qt::white));
    QCOMPARE(within(answer, "bubbleField")->property("color").value<QColor>().alpha(), 0);
}

void ChatViewTest::areaAndBubbleBounds()
{
    show({std::string(2000, 'a') + ' ' + std::string(2000, 'b'), std::string(3000, 'c')}, {700, 900});
    QCOMPARE(list()->height(), 300.0);
    for (QQuickItem* item : rows()) {
        QCOMPARE(within(item, "bubble")->width(), 300.0);
    }
    m_fixture.shown()->setSize({400, 250});
    QTRY_VERIFY(list()->height() < 300);
    QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5);
}

void ChatViewTest::directions()
{
    show({"When?", "يوم الخميس", "متى؟ (Thursday)", "Thursday, يوم"});
    const auto alignment = [&](int index) {
        return within(row(index), "bubbleText")->property("horizontalAlignment").toInt();
    };
    m_fixture.shown()->setSize({440, 800});
    QTRY_COMPARE(rows().size(), 4);
    QCOMPARE(alignment(0), int(Qt::AlignLeft));
    QCOMPARE(alignment(1), int(Qt::AlignRight));
    QCOMPARE(alignment(2), int(Qt::AlignRight));
    QCOMPARE(alignment(3), int(Qt::AlignLeft));
}

void ChatViewTest::errorLine_data()
{
    QTest::addColumn<int>("messages");
    QTest::addColumn<bool>("shown");
    QTest::newRow("nothing said") << 0 << false;
    QTest::newRow("after a question") << 1 << true;
    QTest::newRow("after an answer") << 2 << false;
    QTest::newRow("after the next question") << 3 << true;
}

void ChatViewTest::errorLine()
{
    QFETCH(const int, messages);
    QFETCH(const bool, shown);
    const auto text = QStringLiteral("Something went wrong, please try again");
    show(numbered(messages));
    QVERIFY(!m_fixture.accessible(QAccessible::StaticText, text));
    ChatErrorMessage::shared().setChatErrorMessage(text.toStdString());
    QCOMPARE(m_fixture.item("errorText") != nullptr, shown);
    QCOMPARE(m_fixture.accessible(QAccessible::StaticText, text) != nullptr, shown);
    if (shown) {
        QVERIFY(within(row(messages - 1), "errorText"));
        QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5); // The error is in sight too.
        ChatErrorMessage::shared().setChatErrorMessage(std::nullopt);
        QVERIFY(!m_fixture.item("errorText"));
    }
}

void ChatViewTest::sending_data()
{
    QTest::addColumn<QString>("manner");
    for (const char* manner : {"mouse", "Return", "Enter", "Space on the button", "accessible action"}) {
        QTest::newRow(manner) << QString::fromLatin1(manner);
    }
}

void ChatViewTest::sending()
{
    QFETCH(const QString, manner);
    m_fixture.server().reply("POST /api/v1/chat/start", TestReply{200, {}, {}, TestReply::Manner::Silence});
    show({});
    auto* input = m_fixture.item("chatInput");
    QVERIFY(m_fixture.accessible(QAccessible::EditableText, QStringLiteral("Ask questions here")));
    const auto send = [&] {
        if (manner == QLatin1String("mouse")) {
            m_fixture.click(m_fixture.item("sendButton"));
        } else if (manner == QLatin1String("Return") || manner == QLatin1String("Enter")) {
            input->forceActiveFocus();
            m_fixture.press(manner == QLatin1String("Return") ? Qt::Key_Return : Qt::Key_Enter);
        } else if (manner == QLatin1String("accessible action")) {
            QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Send")));
        } else {
            input->forceActiveFocus();
            m_fixture.press(Qt::Key_Tab);
            m_fixture.press(Qt::Key_Space);
        }
    };
    send(); // Nothing to send.
    QVERIFY(m_state->chat().messages().empty());
    input->forceActiveFocus();
    for (const Qt::Key letter : {Qt::Key_H, Qt::Key_I}) {
        m_fixture.press(letter);
    }
    QCOMPARE(m_state->newMessageText(), QStringLiteral("hi"));
    send();
    QCOMPARE(m_state->chat().messages().size(), std::size_t(1));
    QCOMPARE(m_state->chat().messages()[0].text, std::optional<std::string>("hi"));
    QCOMPARE(input->property("text").toString(), QString());
    // The spinner stands in the button's place, and the return key still sends.
    QVERIFY(m_fixture.item("chatSpinner"));
    QVERIFY(!m_fixture.item("sendButton"));
    input->forceActiveFocus();
    m_fixture.press(Qt::Key_X);
    m_fixture.press(Qt::Key_Return);
    QCOMPARE(m_state->chat().messages().size(), std::size_t(2));
    m_state->chat().setLoading(false);
    QVERIFY(m_fixture.item("sendButton"));
    QVERIFY(!m_fixture.item("chatSpinner"));
}

void ChatViewTest::hugeHistory()
{
    show(numbered(100'000));
    QCOMPARE(list()->property("count").toInt(), 100'000);
    QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5);
    QVERIFY(rows().size() < 60); // Only what is seen, and a little around it.
}

void ChatViewTest::endAfterEveryChange()
{
    for (const int count : {3, 17, 60, 500}) {
        show(numbered(count));
        QTRY_VERIFY2(std::abs(distanceToEnd()) < 0.5, qPrintable(QString::number(count)));
        m_state->setNewMessageText(QStringLiteral("One more, ").repeated(count % 40 + 1));
        m_state->sendMessage();
        QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5);
        m_fixture.shown()->setSize({360, 380});
        QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5);
    }
}

void ChatViewTest::staysWhereTheUserIs()
{
    show(numbered(50));
    QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5);
    list()->forceActiveFocus(Qt::TabFocusReason);
    m_fixture.press(Qt::Key_Home);
    QTRY_VERIFY(row(0));
    m_fixture.shown()->setSize({430, 390}); // Nothing was said, so nothing scrolls.
    QTest::qWait(0);
    QVERIFY(row(0));
    m_fixture.press(Qt::Key_End);
    QTRY_VERIFY(std::abs(distanceToEnd()) < 0.5);
}

void ChatViewTest::keyboardCopies()
{
    show({"First", "Second", std::string(300'000, 'z')});
    list()->forceActiveFocus(Qt::TabFocusReason);
    const auto copied = [&] {
        m_fixture.press(Qt::Key_C, Qt::ControlModifier);
        return QGuiApplication::clipboard()->text();
    };
    QCOMPARE(copied().size(), 300'000); // All of it, though only a part is shown.
    m_fixture.press(Qt::Key_Up);
    QCOMPARE(copied(), QStringLiteral("Second"));
    m_fixture.press(Qt::Key_Up);
    m_fixture.press(Qt::Key_Up);
    QCOMPARE(copied(), QStringLiteral("First"));
    m_fixture.press(Qt::Key_Down);
    QCOMPARE(copied(), QStringLiteral("Second"));
}

void ChatViewTest::answerWhileWalking()
{
    show({"First", "Second"});
    QGuiApplication::clipboard()->setText(QStringLiteral("the user's own"));
    list()->forceActiveFocus(Qt::TabFocusReason);
    m_state->setNewMessageText(QStringLiteral("Third"));
    m_state->sendMessage();
    m_fixture.press(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Third"));
    m_state->copyMessage(-1); // Nothing there: nothing happens.
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Third"));
}

void ChatViewTest::clickKeepsThePlace()
{
    show(numbered(50));
    list()->forceActiveFocus(Qt::TabFocusReason);
    m_fixture.press(Qt::Key_Home);
    QTRY_VERIFY(row(0));
    m_fixture.shown()->forceActiveFocus();
    list()->setProperty("walkedIndex", -1);
    m_fixture.click(within(row(0), "bubbleText"));
    QTest::qWait(0);
    QVERIFY(row(0));
    QVERIFY(row(0)->mapToItem(list(), {0, 0}).y() >= 0);
}

void ChatViewTest::selecting()
{
    show({"Select me", "And me"});
    for (int i = 0; i < 2; ++i) {
        auto* text = within(row(i), "bubbleText");
        const QPoint left = text->mapToScene({1, text->height() / 2}).toPoint();
        const QPoint right = text->mapToScene({text->width() - 1, text->height() / 2}).toPoint();
        QTest::mousePress(&m_fixture.window(), Qt::LeftButton, Qt::NoModifier, left);
        QTest::mouseMove(&m_fixture.window(), (left + right) / 2);
        QTest::mouseMove(&m_fixture.window(), right);
        QTest::mouseRelease(&m_fixture.window(), Qt::LeftButton, Qt::NoModifier, right);
        QCOMPARE(text->property("selectedText"), text->property("text"));
        m_fixture.press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), text->property("text").toString());
    }
}

void ChatViewTest::hostileTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("shown"); // null: only that it is bounded and can be shown
    QTest::newRow("markup") << QByteArray("<h1>a</h1> &amp;") << QStringLiteral("<h1>a</h1> &amp;");
    QTest::newRow("control characters") << QByteArray("a\x01\x1b[0m\x7f\tb") << QString::fromUtf8("a��[0m�\tb");
    QTest::newRow("a NUL") << QByteArray("a\0b", 3) << QString::fromUtf8("a�b");
    QTest::newRow("a document's own marks") << QByteArray("\xEF\xBF\xBC\xEF\xB7\x90x") << QString::fromUtf8("��x");
    QTest::newRow("emoji sequences") << QByteArray("👩‍👩‍👧‍👦🇧🇷👍🏽")
                                     << QString::fromUtf8("👩‍👩‍👧‍👦🇧🇷👍🏽");
    QTest::newRow("a word of 10,000 letters") << QByteArray(10'000, 'w') << QString(10'000, u'w');
    QTest::newRow("10 MB") << QByteArray(10'000'000, 'x') << QString();
    QTest::newRow("10 MB of emoji sequences") << QByteArray("👩‍👩‍👧‍👦").repeated(400'000) << QString();
    QTest::newRow("10 MB of marks") << QByteArray("e\xCC\x81\xCC\x81").repeated(2'000'000) << QString();
    QTest::newRow("one letter under 10 MB of marks") << "e" + QByteArray("\xCC\x81").repeated(5'000'000) << QString();
}

void ChatViewTest::hostileTexts()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QString, shown);
    show({"And?", text.toStdString()});
    const QString body = within(row(1), "bubbleText")->property("text").toString();
    if (!shown.isNull()) {
        QCOMPARE(body, shown);
        QCOMPARE(ShownText::of(text.toStdString()).note, QString());
        return;
    }
    QVERIFY(!body.isEmpty() && body.size() <= longestShownText);
    // Not in the middle of what a reader takes for one character, unless that is the whole text.
    QVERIFY(!body.back().isHighSurrogate());
    QVERIFY(body.endsWith(u'x') || body.endsWith(QString::fromUtf8("👦")) ||
            body.back().category() == QChar::Mark_NonSpacing);
    QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Copy all of it")));
    QCOMPARE(QGuiApplication::clipboard()->text().toUtf8(), text);
}

void ChatViewTest::shownAndHidden()
{
    show({"Kept"});
    QCOMPARE(rows().size(), 1);
    UserDefaults::standard().removeObject(key);
    m_fixture.shown()->setVisible(false);
    QVERIFY(UserDefaults::standard().data(key)); // Stored as it is hidden.
    store({"Kept", "and more"});
    m_fixture.shown()->setVisible(true);
    QTRY_COMPARE(rows().size(), 2); // Read as it is shown.
    UserDefaults::standard().removeObject(key);
    m_fixture.takeOut();
    QVERIFY(UserDefaults::standard().data(key));
    UserDefaults::standard().removeObject(key);
    m_fixture.close();
    QVERIFY(!UserDefaults::standard().data(key)); // It was hidden already.
}

int main(int argc, char** argv)
{
    return runViewTest<ChatViewTest>(argc, argv);
}
#include "ChatViewTest.moc"
