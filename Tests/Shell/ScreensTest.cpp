#include "../Session/SessionFixture.h"
#include "Views/BannerView.h"
#include "Views/LoginView.h"
#include "Views/MainSplitView.h"
#include "Views/RootView.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Sheet.h"
#include "Views/Widgets/SidebarList.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/TextField.h"

#include <QAccessible>
#include <QFocusFrame>
#include <QPlainTextEdit>
#include <QTest>

namespace orvia::test {

using namespace std::chrono_literals;

namespace {

constexpr auto loginPath = "/v1/agent/login";

template <class Widget>
Widget* named(const QWidget& root, const QString& name)
{
    for (Widget* widget : root.findChildren<Widget*>())
        if (widget->accessibleName() == name)
            return widget;
    return nullptr;
}

/// Whether a label with @p text shows.
bool shows(const QWidget& root, const QString& text)
{
    const QList<QLabel*> labels = root.findChildren<QLabel*>();
    return std::ranges::any_of(
        labels, [&](const QLabel* label) { return label->isVisible() && label->text() == text; });
}

class ShellTest : public SessionFixture {
protected:
    ShellTest() { timings.bannerDismiss = 10s; }

    RootView& openRoot()
    {
        root = std::make_unique<RootView>(*session);
        root->resize(1080, 700);
        root->show();
        root->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(root.get()));
        return *root;
    }

    RootView& openMain()
    {
        scriptInbox({});
        signIn();
        return openRoot();
    }

    Sheet* openSettings()
    {
        qobject_cast<MainSplitView*>(root->screen())->setShowSettings(true);
        return Sheet::topmost(root.get());
    }

    std::unique_ptr<RootView> root;
};

} // namespace

TEST_F(ShellTest, SignInSendsOnceAndShowsTheRefusalUntilTheNextAttempt)
{
    makeSession();
    const RootView& window = openRoot();
    auto* email = named<TextField>(window, u"Email"_s);
    auto* password = named<SecureField>(window, u"Password"_s);
    auto* button = named<Button>(window, u"Sign In"_s);
    ASSERT_TRUE(email && password && button);
    email->setText(u"mara@tessaly.example"_s);
    EXPECT_FALSE(button->isEnabled());
    QTest::keyClick(email, Qt::Key_Return);
    EXPECT_TRUE(service.requests("POST", loginPath).empty());

    const auto held = service.hold("POST", loginPath);
    password->setText(u" secret "_s);
    QTest::keyClick(password, Qt::Key_Return);
    EXPECT_TRUE(button->isBusy());
    EXPECT_FALSE(button->isEnabled());
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    QTest::keyClick(password, Qt::Key_Return);
    held->answer(refusal(401, "Invalid email or password"));
    EXPECT_TRUE(waitUntil([&] { return button->isEnabled(); }));
    EXPECT_EQ(service.requests("POST", loginPath).size(), 1U)
        << "a second Return while working sends nothing";
    EXPECT_FALSE(button->isBusy());
    EXPECT_TRUE(shows(window, u"Invalid email or password"_s));
    EXPECT_EQ(bodyOf(service.requests("POST", loginPath)),
              R"({"email":"mara@tessaly.example","password":" secret "})");

    const auto second = service.hold("POST", loginPath);
    button->click();
    EXPECT_FALSE(shows(window, u"Invalid email or password"_s));
    second->answer(refusal(500, "x"));
    EXPECT_TRUE(waitUntil([&] { return button->isEnabled(); }));
}

TEST_F(ShellTest, TheKeyboardIsAtTheListOrInWhatALinkOpened)
{
    scriptEstablishing();
    const std::vector<Conversation> inbox{makeConversation(u"c1"_s, 1), makeConversation(u"c2"_s, 2)};
    scriptInbox(inbox);
    for (const Conversation& conversation : inbox)
        service.always("GET", "/v1/agent/conversations/" + conversation.id.toUtf8(),
                       answerOf(ConversationDetailResponse{conversation, {}}));
    service.always("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
    service.answer("POST", loginPath, answerOf(LoginResponse{u"t1"_s, self}));
    makeSession();
    openRoot();
    auto* password = named<SecureField>(*root, u"Password"_s);
    named<TextField>(*root, u"Email"_s)->setText(self.email);
    password->setText(u"secret"_s);
    QTest::keyClick(password, Qt::Key_Return);
    const auto focused = [] { return QApplication::focusWidget(); };
    const auto isAtList = [&] { return focused() && focused()->objectName() == u"conversations"_s; };
    const auto isAtComposer = [&] { return qobject_cast<QPlainTextEdit*>(focused()) != nullptr; };
    EXPECT_TRUE(waitUntil([&] { return session->conversations().size() == 2 && isAtList(); }));
    EXPECT_TRUE(waitUntil([&] { return root->findChildren<LoginView*>().isEmpty(); }));
    EXPECT_FALSE(root->findChild<QFocusFrame*>());
    EXPECT_TRUE(waitUntil([&] {
        QTest::keyClick(focused(), Qt::Key_Down);
        return session->selectedConversationId().has_value();
    }));
    EXPECT_TRUE(isAtList()) << "the arrow keys go on";

    session->openFromDeepLink(u"c2"_s);
    EXPECT_TRUE(isAtComposer());
    const Sheet* settings = openSettings();
    session->openFromDeepLink(u"c1"_s);
    EXPECT_TRUE(settings->isAncestorOf(focused()));

    // The next start, without a link and with one.
    root.reset();
    signIn();
    openRoot();
    EXPECT_TRUE(isAtList());
    session->openFromDeepLink(u"c2"_s);
    openRoot();
    EXPECT_TRUE(isAtComposer());
}

TEST_F(ShellTest, SettingsShowWhatTheServiceKeeps)
{
    self.mutedConversationIds = QStringList{u"c1"_s};
    openMain();
    const Sheet* sheet = openSettings();
    EXPECT_TRUE(shows(*sheet, u"1 muted conversation"_s));
    auto* picker = named<Picker>(*sheet, u"Notify me about"_s);
    EXPECT_EQ(picker->currentText(), u"Everything"_s) << "what the service does not say";

    picker->setCurrentIndex(2);
    const auto held = service.hold("PATCH", "/v1/agent/me/preferences");
    Q_EMIT picker->activated(2);
    EXPECT_EQ(picker->currentText(), u"Everything"_s) << "not before the service has it";
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    self.notifyMode = NotifyMode::mentions;
    held->answer(answerOf(AgentResponse{self}));
    EXPECT_TRUE(waitUntil([&] { return picker->currentText() == u"Mentions only"_s; }));
}

TEST_F(ShellTest, TheSidebarWritesTheFiltersAndFollowsThem)
{
    Product second;
    second.id = u"p2"_s;
    second.name = u"Halden & Cycles"_s;
    products.push_back(second);
    RootView& window = openMain();
    auto* productList = named<SidebarList>(window, u"Products"_s);
    auto* queue = named<SidebarList>(window, u"Queue"_s);
    ASSERT_TRUE(productList && queue);
    const QModelIndex row = productList->model()->index(2, 0);
    EXPECT_EQ(row.data(Qt::AccessibleTextRole), u"Halden & Cycles"_s);
    for (const Qt::KeyboardModifiers modifiers : {Qt::NoModifier, Qt::ControlModifier}) {
        QTest::mouseClick(productList->viewport(), Qt::LeftButton, modifiers,
                          productList->visualRect(row).center());
        EXPECT_EQ(session->productFilter(), u"p2"_s) << "a choice is not taken back";
    }
    queue->setFocus();
    QTest::keyClick(queue, Qt::Key_Down);
    EXPECT_EQ(session->queue(), InboxQueue::unassigned);

    // What the session changes by itself shows as well.
    session->setProductFilter(std::nullopt);
    session->setQueue(InboxQueue::mine);
    EXPECT_EQ(productList->selectedRow(), 0);
    EXPECT_EQ(queue->selectedRow(), 2);

    ASSERT_TRUE(waitUntil([&] { return !session->isLoadingList(); }));
    named<Switch>(window, u"Show snoozed"_s)->click();
    EXPECT_TRUE(session->showSnoozed());
    EXPECT_TRUE(session->isLoadingList()) << "another page is needed";
    EXPECT_TRUE(waitUntil([&] { return !session->isLoadingList(); }));
}

TEST_F(ShellTest, TheTitleNamesAVisitorOnlyWhileTheConversationIsOpen)
{
    Conversation conversation = makeConversation(u"c1"_s);
    conversation.visitor.name = u"Helen Brandt"_s;
    scriptInbox({conversation});
    signIn();
    service.always("GET", "/v1/agent/conversations/c1",
                   answerOf(ConversationDetailResponse{conversation, {}}));
    service.always("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
    const RootView& window = openRoot();
    const auto openConversation = [this] {
        session->setSelectedConversationId(u"c1"_s);
        QCoreApplication::processEvents();
    };
    EXPECT_EQ(window.windowTitle(), u"Orvia"_s);
    openConversation();
    EXPECT_EQ(window.windowTitle(), u"Helen Brandt — Orvia"_s);
    session->setSelectedConversationId(std::nullopt);
    EXPECT_EQ(window.windowTitle(), u"Orvia"_s);
    openConversation();
    session->logout();
    QCoreApplication::processEvents();
    EXPECT_EQ(window.windowTitle(), u"Orvia"_s);
}

TEST_F(ShellTest, TheBannerComesWithItsWholeTextAndTakesNothing)
{
    RootView& window = openMain();
    BannerView* banner = window.banner();
    const QString text = u"Network error: "_s + u"<b>very long</b> "_s.repeated(20);
    const QWidget* focused = QApplication::focusWidget();
    session->showBanner(text);
    EXPECT_TRUE(banner->isVisible());
    EXPECT_TRUE(banner->isElided());
    EXPECT_EQ(QApplication::focusWidget(), focused);
    EXPECT_TRUE(banner->testAttribute(Qt::WA_TransparentForMouseEvents));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(banner)->text(QAccessible::Name), text);
    // A sheet does not hide what it causes.
    openSettings();
    const QObjectList& children = window.children();
    EXPECT_GT(children.indexOf(banner), children.indexOf(Sheet::topmost(&window)));
}

} // namespace orvia::test
