#include "Shots.h"

#include "MadeUpState.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "state/SettingsKeys.h"
#include "views/chat/ChatViewState.h"
#include "views/login/LoginViewState.h"
#include "views/session/SessionTabsViewState.h"

#include <QQuickItem>
#include <QVariant>

namespace quillmate
{
namespace
{

using Panel = SessionTabsViewState;

constexpr QSize narrow(400, 550);
constexpr QSize wide(500, 760);
const auto rightToLeft =
    "تقترح ليلى نقل الاجتماع إلى يوم الخميس الساعة العاشرة.\nتحتاج إلى الميزانية قبل مساء الأربعاء.";

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

QQuickItem* find(QQuickItem& item, const QString& name)
{
    if (item.objectName() == name) {
        return &item;
    }
    const auto children = item.childItems();
    for (QQuickItem* child : children) {
        if (QQuickItem* found = find(*child, name)) {
            return found;
        }
    }
    return nullptr;
}

void openChat(QQuickItem& root)
{
    if (QQuickItem* tabs = find(root, QStringLiteral("panelTabs"))) {
        tabs->setProperty("currentIndex", 1);
    }
}

void focusOn(QQuickItem& root, const char* name)
{
    if (QQuickItem* item = find(root, QString::fromLatin1(name))) {
        item->forceActiveFocus(Qt::TabFocusReason);
    }
}

/// A usual scene with one thing different.
Scene with(const std::function<void(Scene&)>& change)
{
    Scene scene = usualScene();
    change(scene);
    return scene;
}

Scene withConversation(std::vector<std::string> conversation)
{
    return with([&](Scene& scene) { scene.conversation = std::move(conversation); });
}

HostedView signIn(bool message, bool menu,
                  const std::shared_ptr<LoginProgress>& progress = std::make_shared<LoginProgress>())
{
    const Scene scene = message ? usualScene() : Scene();
    setUp(scene);
    auto view = LoginViewState::makeView(
        *messageOf(scene), [] {}, progress);
    if (menu) {
        static_cast<LoginViewState*>(view.state.get())->developerMenu()->setShown(true);
    }
    return view;
}

void addSignIn(std::vector<Shot>& shots)
{
    const auto add = [&](const char* state, bool message, bool menu, QSize size, double scale = 1) {
        shots.push_back({"Sign-in screen", state, [=] { return signIn(message, menu); }, {}, size, scale});
    };
    add("without a message", false, false, {400, 400});
    add("with a message", true, false, narrow);
    add("developer menu", true, true, narrow);
    add("wide", true, false, wide);
    add("large text", false, false, {400, 400}, 2);
    add("developer menu, large text", true, true, narrow, 2);
    const auto tell = [&](const char* state, const QString& problem, QSize size, double scale = 1) {
        const auto view = [problem] {
            const auto progress = std::make_shared<LoginProgress>();
            progress->ask();
            if (!problem.isEmpty()) {
                progress->finish(problem);
            }
            return signIn(true, false, progress);
        };
        shots.push_back({"Sign-in screen", state, view, {}, size, scale});
    };
    const auto problem = QStringLiteral("The service cannot be reached. The assistant service on this machine is not "
                                        "available: it ended before it was ready. Try it once more; if that does not "
                                        "help, install Quillmate again. Press \"Login\" to try again.");
    tell("asking for the page", {}, narrow);
    tell("service out of reach", problem, narrow);
    tell("service out of reach, large text", problem, narrow, 2);
    const auto again = [] {
        setUp(usualScene());
        UserDefaults::standard().setBoolean(SettingsKeys::hasSignedIn, true);
        return LoginViewState::makeView(*messageOf(usualScene()), [] {});
    };
    shots.push_back({"Sign-in screen", "signed in before", again, {}, narrow});
    shots.push_back({"Sign-in screen", "signed in before, large text", again, {}, narrow, 2});
    shots.push_back({"Sign-in screen", "keyboard on the button", [] { return signIn(true, false); },
                     [](QQuickItem& root) { focusOn(root, "loginButton"); }, narrow});
}

void addSummary(std::vector<Shot>& shots)
{
    const auto add = [&](const char* state, const Scene& scene, const std::function<void(Panel&)>& change = {},
                         QSize size = {440, 640}, double scale = 1) {
        shots.push_back({"Summary", state, [=] { return panelIn(scene, change); }, {}, size, scale});
    };
    const Scene none = with([](Scene& scene) {
        scene.summary.clear();
        scene.reply.clear();
    });
    add("nothing known", none);
    add("loading", none, [](Panel& panel) { panel.summarizeStateManager().setSummarizeLoading(true); });
    add("result", usualScene());
    add("long result", with([](Scene& scene) { scene.summary = repeated(scene.summary + '\n', 12); }), {}, narrow);
    add("right to left", with([](Scene& scene) { scene.summary = rightToLeft; }));
    add("too long to be shown whole", with([](Scene& scene) { scene.summary = repeated("All of it. ", 900'000); }));
    const auto failed = [](const std::string& kept) {
        return [kept](Panel& panel) {
            panel.summarizeStateManager().setFailed(true);
            if (!kept.empty()) {
                panel.modal()->setTextareaInput(QString::fromStdString(kept));
            }
        };
    };
    add("could not be loaded", none, failed(""), narrow);
    add("could not be loaded, pasted text", none, failed("Dear Maria,\n\nthis is the text of the message."), wide);
    add("could not be loaded, being sent", none, [failed](Panel& panel) {
        failed("Dear Maria,\n\nthis is the text of the message.")(panel);
        panel.summarizeStateManager().setSummarizeLoading(true);
    });
    add("large text", usualScene(), {}, narrow, 2);
    shots.push_back({"Summary", "no message", [] { return panelIn({}); }, {}, {400, 400}});
}

void addReply(std::vector<Shot>& shots)
{
    const auto add = [&](const char* state, const Scene& scene, const std::function<void(Panel&)>& change = {},
                         QSize size = {440, 640}, double scale = 1) {
        shots.push_back({"Replies", state, [=] { return panelIn(scene, change); }, {}, size, scale});
    };
    const Scene none = with([](Scene& scene) { scene.reply.clear(); });
    add("first reply", none);
    add("loading", none, [](Panel& panel) { panel.buttonStateManager().setGenerateResponseLoading(true); });
    add("reply", usualScene());
    add("narrow", usualScene(), {}, narrow);
    add("wide", usualScene(), {}, wide);
    add("right to left", with([](Scene& scene) { scene.reply = rightToLeft; }));
    add("long, one word of 10,000 characters", with([](Scene& scene) {
            scene.reply = "<b>Not bold</b> " + std::string(10'000, 'w') + repeated("\nThe end.", 20);
        }));
    add("too long to be shown whole", with([](Scene& scene) { scene.reply = repeated("All of it. ", 900'000); }));
    add("toast", usualScene(),
        [](Panel& panel) { panel.buttonStateManager().announce("Response generated successfully."); });
    add("error", usualScene(), [](Panel& panel) {
        panel.buttonStateManager().announce("Error sending request: " +
                                            repeated("The server could not be reached. ", 30));
    });
    add("copied", usualScene(), [](Panel& panel) { panel.modal()->reply()->setShowTooltip(true); });
    add("large text", usualScene(), {}, narrow, 2);
    add("developer menu", usualScene(), [](Panel& panel) { panel.modal()->developerMenu()->setShown(true); });
    shots.push_back({"Replies", "keyboard on a button", [] { return panelIn(usualScene()); },
                     [](QQuickItem& root) { focusOn(root, "submitButton"); }});
}

void addChat(std::vector<Shot>& shots)
{
    const auto add = [&](const char* state, const Scene& scene, const std::function<void(ChatViewState&)>& change = {},
                         QSize size = {440, 640}, double scale = 1) {
        shots.push_back({"Chat", state,
                         [=] {
                             return panelIn(scene, [change](Panel& panel) {
                                 if (change) {
                                     change(*panel.modal()->chat());
                                 }
                             });
                         },
                         openChat, size, scale});
    };
    const auto failWith = [](const char* sentence) {
        return [sentence](ChatViewState& view) {
            view.chat().loadMessages();
            view.chat().setFailedQuestion(FailedQuestion{view.chat().messages().back().id, sentence});
        };
    };
    const auto fail = failWith("Something went wrong, please try again");
    const auto write = [](const std::string& text) {
        return [text](ChatViewState& view) { view.chat().setNewMessageText(text); };
    };
    add("empty", withConversation({}));
    add("conversation", usualScene());
    add("awaiting an answer", withConversation({"When does she want to meet?"}),
        [](ChatViewState& chat) { chat.chat().setLoading(true); });
    add("failed", withConversation({"When?", "On Thursday.", "And where does she want to meet this time?"}), fail,
        narrow);
    add("failed, large text", withConversation({"And where?"}), fail, {500, 1000}, 2);
    add("a question of three lines", usualScene(), write("When?\nWhere?\nAnd who comes along?"));
    add("a long question", usualScene(), write(repeated("And one more thing that I want to know. ", 12)), narrow);
    add("a question from right to left", usualScene(), write(rightToLeft), narrow);
    add("both directions",
        withConversation({"متى الاجتماع؟", rightToLeft, "And the budget?", "By Wednesday evening."}));
    add("emoji, markup, control characters",
        withConversation({"👩‍👩‍👧‍👦 👍🏽 🇧🇷 ok?",
                          "<h1>No heading</h1> & \x01\x02 https://a.example/", "", std::string(300, 'w')}));
    add("too long to be shown whole", withConversation({"All of it?", repeated("All of it. ", 80'000)}));
    add("narrow", usualScene(), {}, narrow);
    add("wide", usualScene(), {}, wide);
    add("large text", usualScene(), {}, narrow, 2);
    shots.push_back({"Chat", "keyboard on a message", [] { return panelIn(usualScene()); },
                     [](QQuickItem& root) {
                         openChat(root);
                         focusOn(root, "chatMessages");
                     }});
    shots.push_back({"Chat", "stand-alone", [] { return chatIn(usualScene()); }, {}, {400, 500}});
    shots.push_back({"Chat",
                     "stand-alone, sign-in wanted",
                     [=] {
                         return chatIn(withConversation({"When does she want to meet?"}),
                                       failWith("The service answers only after a sign-in, and nobody can sign in "
                                                "here. Use the chat in the panel beside a message."));
                     },
                     {},
                     {400, 500}});
}

void addUpdate(std::vector<Shot>& shots)
{
    const auto add = [&](const char* state, QSize size, double scale = 1) {
        const Scene scene = with([](Scene& changed) { changed.updateAnnounced = true; });
        shots.push_back({"Update notice", state, [=] { return panelIn(scene); }, {}, size, scale});
    };
    add("over the panel", {440, 640});
    add("narrow", narrow);
    add("wide", wide);
    add("large text", narrow, 2);
}

} // namespace

std::vector<Shot> allShots()
{
    std::vector<Shot> shots;
    addSignIn(shots);
    addSummary(shots);
    addReply(shots);
    addChat(shots);
    addUpdate(shots);
    return shots;
}

} // namespace quillmate
