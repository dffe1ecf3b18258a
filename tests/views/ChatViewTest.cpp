#include "features/MessageHistory.h"
#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "support/TestProgram.h"
#include "views/HostedViewOf.h"
#include "views/ViewFixture.h"
#include "views/ViewTestApplication.h"
#include "views/chat/ChatViewState.h"
#include "views/widgets/ShownText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

using namespace quillmate;

namespace
{

const std::string key = "reply m1";

void store(const std::vector<std::string>& conversation)
{
    MessageHistory history;
    for (std::size_t i = 0; i < conversation.size(); ++i) {
        history.append(i % 2 == 0 ? Message::question(conversation[i]) : Message::answer(conversation[i]));
    }
    UserDefaults::standard().setData(key, std::string(history.encode().value()));
}

std::vector<std::string> numbered(int count)
{
    std::vector<std::string> texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back("Message " + std::to_string(i) + std::string(static_cast<std::size_t>(i * 37 % 400), 'x'));
    }
    return texts;
}

QQuickItem* within(QQuickItem* item, const char* name)
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

} // namespace

class ChatViewTest : public QObject
{
    Q_OBJECT

private:
    void show(const std::vector<std::string>& conversation, QSize size = {440, 420})
    {
        m_fixture.close(); // Which keeps what was said there.
        store(conversation);
        ReplyEmail record;
        record.messageId = "m1";
        m_state = makeMainOwned<ChatViewState>(std::make_shared<const RepliedMessage>(std::move(record)));
        m_fixture.window().resize(size);
        m_fixture.show(hostedViewOf(QStringLiteral("ChatView"), m_state));
        QTRY_COMPARE(messages(), conversation.size()); // A long one comes later.
        QTest::qWait(0);                               // A turn of the loop, in which the list lays itself out.
    }
    [[nodiscard]] QQuickItem* list() const { return m_fixture.item("chatMessages"); }
    /// The rows that are there, by their numbers.
    [[nodiscard]] QMap<int, QQuickItem*> rows() const
    {
        QMap<int, QQuickItem*> found;
        const auto children = list()->property("contentItem").value<QQuickItem*>()->childItems();
        for (QQuickItem* child : children) {
            if (child->property("sentByCurrentUser").isValid() && child->isVisible()) {
                found.insert(child->property("index").toInt(), child);
            }
        }
        return found;
    }
    [[nodiscard]] QQuickItem* row(int index) const { return rows().value(index); }
    [[nodiscard]] std::size_t messages() const { return m_state->chat().messages().size(); }
    void say(const QString& text)
    {
        m_state->setNewMessageText(text);
        m_state->sendMessage();
    }
    /// Whether the last row's bottom is at the bottom of what is seen; a short conversation stands at the top.
    [[nodiscard]] bool isAtEnd() const
    {
        const auto* last = row(static_cast<int>(messages()) - 1);
        return last && std::abs(last->mapToItem(list(), {0, last->height()}).y() -
                                std::min(list()->height(), list()->property("contentHeight").toDouble())) < 0.5;
    }

    ViewFixture m_fixture;
    std::shared_ptr<ChatViewState> m_state;

private Q_SLOTS:
    void init()
    {
        m_state.reset();
        m_fixture.reset();
    }

    void bubbles()
    {
        show({"When?", "يوم الخميس", "متى؟ (Thursday)", "Thursday, يوم"}, {440, 800});
        QTRY_COMPARE(rows().size(), 4);
        auto* question = within(row(0), "bubble");
        auto* answer = within(row(1), "bubble");
        QCOMPARE(question->mapToItem(row(0), {question->width(), 0}).x(), row(0)->width() - 5);
        QVERIFY(!within(row(0), "disc"));
        QCOMPARE(within(row(1), "disc")->size(), QSizeF(38, 38));
        QCOMPARE(answer->mapToItem(row(1), {0, 0}).x(), 5 + 38 + 5.0);
        QCOMPARE(within(question, "bubbleField")->property("color").value<QColor>(), QColor("#2563eb"));
        QCOMPARE(within(question, "bubbleText")->property("color").value<QColor>(), QColor(Qt::white));
        QCOMPARE(within(answer, "bubbleField")->property("color").value<QColor>().alpha(), 0);
        const int alignments[] = {Qt::AlignLeft, Qt::AlignRight, Qt::AlignRight, Qt::AlignLeft};
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(within(row(i), "bubbleText")->property("horizontalAlignment").toInt(), alignments[i]);
        }
    }

    void areaAndBubbleBounds()
    {
        show({std::string(2000, 'a') + ' ' + std::string(2000, 'b'), std::string(3000, 'c')}, {700, 900});
        QCOMPARE(list()->height(), 300.0);
        for (QQuickItem* item : rows()) {
            QCOMPARE(within(item, "bubble")->width(), 300.0);
        }
        m_fixture.shown()->setSize({400, 250});
        QTRY_VERIFY(list()->height() < 300);
        QTRY_VERIFY(isAtEnd());
    }

    void errorLine_data() { ViewFixture::addManners({"mouse", "Space", "accessible action"}); }

    /// Under the question that failed, with a way to send it again.
    void errorLine()
    {
        QFETCH(const QString, manner);
        const auto text = QStringLiteral("Something went wrong, please try again");
        const auto again = QStringLiteral("Try again");
        m_fixture.server().reply("POST /api/v1/chat/start", TestReply{500});
        show(numbered(20));
        say(QStringLiteral("And?"));
        QVERIFY(!m_fixture.accessible(QAccessible::StaticText, text));
        QTRY_VERIFY(m_fixture.accessible(QAccessible::StaticText, text));
        QTRY_VERIFY(row(20) && within(row(20), "errorText"));
        QTRY_VERIFY(isAtEnd()); // All of it is in sight.
        QVERIFY(within(row(20), "againButton")->mapToItem(list(), {0, 0}).y() <= list()->height() - 20);
        m_fixture.server().reply("POST /api/v1/chat/start", TestReply{200, {}, {}, TestReply::Manner::Silence});
        m_fixture.choose(QAccessible::Button, again, manner);
        QVERIFY(!m_fixture.accessible(QAccessible::StaticText, text));
        QVERIFY(!m_fixture.accessible(QAccessible::Button, again));
        QVERIFY(m_fixture.item("chatSpinner"));
        QVERIFY(m_fixture.item("chatInput")->hasActiveFocus());
        QTRY_COMPARE(m_fixture.server().requests().size(), std::size_t(2));
    }

    void sending_data()
    {
        ViewFixture::addManners({"mouse", "Return", "Enter", "Space on the button", "accessible action"});
    }

    void sending()
    {
        QFETCH(const QString, manner);
        m_fixture.server().reply("POST /api/v1/chat/start", TestReply{200, {}, {}, TestReply::Manner::Silence});
        show({});
        auto* input = m_fixture.item("chatInput");
        QCOMPARE(m_fixture.accessibleItem(QAccessible::EditableText, QStringLiteral("Ask questions here")), input);
        const auto send = [&] {
            input->forceActiveFocus();
            if (manner == QLatin1String("Return") || manner == QLatin1String("Enter")) {
                m_fixture.hold(manner == QLatin1String("Return") ? Qt::Key_Return : Qt::Key_Enter);
            } else if (manner == QLatin1String("Space on the button")) {
                m_fixture.press(Qt::Key_Tab);
                m_fixture.press(Qt::Key_Space);
            } else {
                m_fixture.choose(QAccessible::Button, QStringLiteral("Send"), manner);
            }
        };
        send(); // Nothing to send.
        QCOMPARE(messages(), std::size_t(0));
        input->forceActiveFocus();
        m_fixture.press(Qt::Key_H);
        m_fixture.press(Qt::Key_I);
        QCOMPARE(m_state->newMessageText(), QStringLiteral("hi"));
        send();
        QCOMPARE(messages(), std::size_t(1));
        QCOMPARE(m_state->chat().messages()[0].text, std::optional<std::string>("hi"));
        QCOMPARE(input->property("text").toString(), QString());
        // The spinner stands in the button's place, and the return key still sends.
        QVERIFY(m_fixture.item("chatSpinner") && !m_fixture.item("sendButton"));
        input->forceActiveFocus();
        m_fixture.press(Qt::Key_X);
        m_fixture.press(Qt::Key_Return);
        QCOMPARE(messages(), std::size_t(2));
    }

    void endAfterEveryChange()
    {
        for (const int count : {3, 17, 60, 500, 100'000}) {
            show(numbered(count));
            QCOMPARE(list()->property("count").toInt(), count);
            QTRY_VERIFY2(isAtEnd(), qPrintable(QString::number(count)));
            QVERIFY(rows().size() < 60); // Only what is seen, and a little around it.
            say(QStringLiteral("One more, ").repeated(count % 40 + 1));
            QTRY_VERIFY(isAtEnd());
            m_fixture.shown()->setSize({360, 380});
            QTRY_VERIFY(isAtEnd());
        }
    }

    void staysWhereTheReaderIs_data() { ViewFixture::addManners({"keyboard", "wheel", "scroll bar"}); }

    void staysWhereTheReaderIs()
    {
        QFETCH(const QString, manner);
        show(numbered(51));
        QTRY_VERIFY(isAtEnd());
        const auto at = [this](double x, double y) { return list()->mapToScene({x, y}).toPoint(); };
        const auto top = [this] { return list()->property("contentY").toDouble(); };
        if (manner == QLatin1String("keyboard")) {
            list()->forceActiveFocus(Qt::TabFocusReason);
            m_fixture.press(Qt::Key_Home);
        } else if (manner == QLatin1String("wheel")) {
            m_fixture.wheel(list(), 20);
        } else {
            const double right = list()->width() - 3;
            QTest::mousePress(&m_fixture.window(), Qt::LeftButton, {}, at(right, list()->height() - 10));
            QTest::mouseMove(&m_fixture.window(), at(right, list()->height() / 2));
            QTest::mouseMove(&m_fixture.window(), at(right, 5));
            QTest::mouseRelease(&m_fixture.window(), Qt::LeftButton, {}, at(right, 5));
        }
        QTRY_VERIFY(!list()->property("moving").toBool() && !row(50));
        // What is not said does not scroll: another width, and the error under the last question.
        const double before = top();
        const Message question = m_state->chat().messages().back();
        m_state->chat().setFailedQuestion(FailedQuestion{question.id, "Something went wrong"});
        m_fixture.shown()->setSize({440, 390});
        QTest::qWait(0);
        QCOMPARE(top(), before);
        QVERIFY(!row(50));
        say(QStringLiteral("And?"));
        QTRY_VERIFY(isAtEnd());
        m_fixture.shown()->setSize({440, 350});
        QTRY_VERIFY(isAtEnd());
    }

    void keyboardCopies()
    {
        show({"First", "Second", std::string(300'000, 'z')});
        list()->forceActiveFocus(Qt::TabFocusReason);
        const auto copiedAfter = [&](std::initializer_list<Qt::Key> keys) {
            for (const Qt::Key pressed : keys) {
                m_fixture.press(pressed);
            }
            m_fixture.press(Qt::Key_C, Qt::ControlModifier);
            return QGuiApplication::clipboard()->text();
        };
        QCOMPARE(copiedAfter({}).size(), 300'000); // All of it, though only a part is shown.
        QCOMPARE(copiedAfter({Qt::Key_Up}), QStringLiteral("Second"));
        QCOMPARE(copiedAfter({Qt::Key_Up, Qt::Key_Up}), QStringLiteral("First"));
        QCOMPARE(copiedAfter({Qt::Key_Down}), QStringLiteral("Second"));
        say(QStringLiteral("Fourth")); // The keyboard goes along with what is said.
        QCOMPARE(copiedAfter({}), QStringLiteral("Fourth"));
        m_state->copyMessage(-1); // Nothing there: nothing happens.
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("Fourth"));
    }

    void clickKeepsThePlace()
    {
        show(numbered(50));
        list()->forceActiveFocus(Qt::TabFocusReason);
        m_fixture.press(Qt::Key_Home);
        QTRY_VERIFY(row(0));
        m_fixture.shown()->forceActiveFocus();
        list()->setProperty("walkedIndex", -1);
        m_fixture.click(within(row(0), "bubbleText"));
        QTest::qWait(0);
        QVERIFY(row(0) && row(0)->mapToItem(list(), {0, 0}).y() >= 0);
    }

    void selecting()
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
            m_fixture.press(Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(QGuiApplication::clipboard()->text(), text->property("text").toString());
        }
    }

    void hostileTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("shown"); // null: a part of it, which ends so
        QTest::addColumn<QString>("end");
        const auto whole = [](const char* name, const QByteArray& text, const char* shown) {
            QTest::newRow(name) << text << QString::fromUtf8(shown) << QString();
        };
        const auto part = [](const char* name, const QByteArray& text, const char* end) {
            QTest::newRow(name) << text << QString() << QString::fromUtf8(end);
        };
        whole("markup", "<h1>a</h1> &amp;", "<h1>a</h1> &amp;");
        whole("control characters", "a\x01\x1b[0m\x7f\tb", "a��[0m�\tb");
        whole("a NUL", QByteArray("a\0b", 3), "a�b");
        whole("a document's own marks", "\xEF\xBF\xBC\xEF\xB7\x90x", "��x");
        whole("emoji sequences", "👩‍👩‍👧‍👦🇧🇷👍🏽",
              "👩‍👩‍👧‍👦🇧🇷👍🏽");
        part("10 MB", QByteArray(10'000'000, 'x'), "x");
        // Not in the middle of what a reader takes for one character, unless that is the whole text.
        part("10 MB of emoji sequences", QByteArray("👩‍👩‍👧‍👦").repeated(400'000),
             "👩‍👩‍👧‍👦");
        part("10 MB of marks", QByteArray("e\xCC\x81\xCC\x81").repeated(2'000'000), "e\xCC\x81\xCC\x81");
        part("one letter under 10 MB of marks", "e" + QByteArray("\xCC\x81").repeated(5'000'000), "\xCC\x81");
    }

    void hostileTexts()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QString, shown);
        QFETCH(const QString, end);
        show({"And?", text.toStdString()});
        const QString body = within(row(1), "bubbleText")->property("text").toString();
        if (!shown.isNull()) {
            QCOMPARE(body, shown);
            QVERIFY(!m_fixture.accessible(QAccessible::Button, QStringLiteral("Copy all of it")));
            return;
        }
        QVERIFY(body.endsWith(end) && body.size() <= longestShownText);
        QVERIFY(m_fixture.pressAccessible(QAccessible::Button, QStringLiteral("Copy all of it")));
        QCOMPARE(QGuiApplication::clipboard()->text().toUtf8(), text);
    }

    void shownAndHidden()
    {
        m_fixture.server().reply("POST /api/v1/chat/start", TestReply{200, {}, {}, TestReply::Manner::Silence});
        show({"Kept"});
        QCOMPARE(rows().size(), 1);
        UserDefaults::standard().removeObject(key);
        m_fixture.shown()->setVisible(false);
        QVERIFY(!UserDefaults::standard().data(key)); // Nothing was said.
        store({"Kept", "and more"});
        m_fixture.shown()->setVisible(true);
        QTRY_COMPARE(rows().size(), 3); // Read as it is shown: the other one is a message of its own.
        say(QStringLiteral("And now?"));
        UserDefaults::standard().removeObject(key);
        m_fixture.takeOut();
        m_fixture.close();
        QVERIFY(!UserDefaults::standard().data(key)); // It was stored when it was said.
    }

    /// Where the user writes.
    void field()
    {
        m_fixture.server().reply("POST /api/v1/chat/start", TestReply{200, {}, {}, TestReply::Manner::Silence});
        show({});
        auto* input = m_fixture.item("chatInput");
        auto* field = m_fixture.item("chatField");
        input->forceActiveFocus();
        const double oneLine = field->height();
        QCOMPARE(oneLine, 40.0);
        // As high as its lines, up to five; what is typed is in sight.
        const auto height = [&] { return input->property("contentHeight").toDouble(); };
        const double line = height();
        for (int lines = 2; lines <= 8; ++lines) {
            m_fixture.press(Qt::Key_A);
            m_fixture.press(Qt::Key_Return, Qt::ShiftModifier);
            QTRY_COMPARE(field->height(), std::max(40.0, std::min(5, lines) * line + 16));
            QTRY_COMPARE(height(), lines * line);
        }
        const auto cursor = [&] { return input->property("cursorRectangle").toRectF(); };
        QTRY_VERIFY(input->mapToItem(field, cursor().bottomLeft()).y() <= field->height());
        QCOMPARE(messages(), std::size_t(0));
        QCOMPARE(m_state->newMessageText(), QStringLiteral("a\n").repeated(7));
        m_fixture.press(Qt::Key_Tab);
        QVERIFY(m_fixture.item("sendButton")->hasActiveFocus());
        m_fixture.press(Qt::Key_Backtab, Qt::ShiftModifier);
        QVERIFY(input->hasActiveFocus());

        // A half-typed character of an input method is no question.
        input->setProperty("text", QStringLiteral("x"));
        input->setProperty("cursorPosition", 1);
        QInputMethodEvent preedit(QStringLiteral("ni"), {});
        QCoreApplication::sendEvent(input, &preedit);
        QVERIFY(input->property("inputMethodComposing").toBool());
        m_fixture.press(Qt::Key_Return);
        QCOMPARE(messages(), std::size_t(0));
        QInputMethodEvent finished;
        finished.setCommitString(QStringLiteral("你"));
        QCoreApplication::sendEvent(input, &finished);

        // All of a long text goes.
        QString pasted = QStringLiteral("line of a paste\n").repeated(10'000);
        QGuiApplication::clipboard()->setText(pasted);
        m_fixture.press(Qt::Key_V, Qt::ControlModifier);
        m_fixture.press(Qt::Key_Return);
        QCOMPARE(messages(), std::size_t(1));
        QVERIFY(m_state->chat().messages()[0].text == ("x你" + pasted).toStdString());
        QTRY_COMPARE(field->height(), oneLine);
    }
};

QUILLMATE_TEST(ChatViewTest, quillmate::ViewTestApplication)
#include "ChatViewTest.moc"
