#include "../Session/SessionFixture.h"
#include "Theme/Theme.h"
#include "Views/BannerView.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/ConversationListView/ConversationListView.h"
#include "Views/MainSplitView.h"
#include "Views/RootView.h"
#include "Views/SidebarView.h"
#include "Views/VisitorPanel/VisitorPanel.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Sheet.h"
#include "Views/Widgets/SidebarList.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/TextField.h"

#include <QAccessible>
#include <QTest>

namespace orvia::test {

using namespace std::chrono_literals;

namespace {

constexpr auto loginPath = "/v1/agent/login";
constexpr auto inboxPath = "/v1/agent/conversations";

template <class Widget>
Widget* named(const QWidget& root, const QString& name)
{
    for (Widget* widget : root.findChildren<Widget*>())
        if (widget->accessibleName() == name)
            return widget;
    return nullptr;
}

/// Every text that shows, in the order of creation.
QStringList shownTexts(const QWidget& root)
{
    QStringList texts;
    for (const QLabel* label : root.findChildren<QLabel*>())
        if (label->isVisible() && !label->text().isEmpty())
            texts.append(label->text());
    return texts;
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

    RootView& openSignIn()
    {
        makeSession();
        return openRoot();
    }

    RootView& openMain()
    {
        service.always("GET", inboxPath, ScriptedAnswer::json("{\"conversations\":[]}"));
        signIn();
        return openRoot();
    }

    qsizetype inboxRequests() const
    {
        return static_cast<qsizetype>(service.requests("GET", inboxPath).size());
    }

    Sheet* openSettings()
    {
        qobject_cast<MainSplitView*>(root->screen())->setShowSettings(true);
        return Sheet::topmost(root.get());
    }

    std::unique_ptr<RootView> root;
};

} // namespace

TEST_F(ShellTest, SignInWaitsForBothFieldsAndShowsTheRefusal)
{
    const RootView& window = openSignIn();
    auto* email = named<TextField>(window, u"Email"_s);
    auto* password = named<SecureField>(window, u"Password"_s);
    auto* button = named<Button>(window, u"Sign In"_s);
    ASSERT_TRUE(email && password && button);
    EXPECT_TRUE(email->hasFocus());
    EXPECT_FALSE(button->isEnabled());
    email->setText(u"mara@tessaly.example"_s);
    EXPECT_FALSE(button->isEnabled());
    QTest::keyClick(email, Qt::Key_Return);
    QTest::keyClick(password, Qt::Key_Return);
    EXPECT_TRUE(service.requests("POST", loginPath).empty());

    const auto held = service.hold("POST", loginPath);
    password->setText(u" secret "_s);
    EXPECT_TRUE(button->isEnabled());
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
    EXPECT_THAT(shownTexts(window), testing::Contains(u"Invalid email or password"_s));
    EXPECT_EQ(email->text(), u"mara@tessaly.example"_s);
    EXPECT_EQ(password->text(), u" secret "_s);
    EXPECT_THAT(bodyOf(service.requests("POST", loginPath)).toStdString(),
                testing::HasSubstr("\" secret \""));

    // The next attempt starts without the old error.
    const auto second = service.hold("POST", loginPath);
    button->click();
    EXPECT_THAT(shownTexts(window), testing::Not(testing::Contains(u"Invalid email or password"_s)));
    second->answer(refusal(500, "x"));
    EXPECT_TRUE(waitUntil([&] { return button->isEnabled(); }));
}

TEST_F(ShellTest, SettingsShowTheAgentAndCountTheMutedConversations)
{
    struct Case {
        std::optional<QStringList> muted;
        QString caption;
    };
    const Case cases[] = {{std::nullopt, {}},
                          {QStringList{}, {}},
                          {QStringList{u"a"_s}, u"1 muted conversation"_s},
                          {QStringList{u"a"_s, u"b"_s, u"c"_s}, u"3 muted conversations"_s}};
    for (const Case& one : cases) {
        self.mutedConversationIds = one.muted;
        self.notifyMode = std::nullopt;
        openMain();
        const Sheet* sheet = openSettings();
        const QStringList captions = shownTexts(*sheet).filter(u"muted conversation"_s);
        EXPECT_EQ(captions, one.caption.isEmpty() ? QStringList() : QStringList{one.caption});
        EXPECT_EQ(named<Picker>(*sheet, u"Notify me about"_s)->currentText(), u"Everything"_s);
        EXPECT_THAT(shownTexts(*sheet),
                    testing::IsSupersetOf({u"Mara Ellison"_s, u"agent"_s, u"127.0.0.1"_s}));
        EXPECT_THAT(shownTexts(*sheet), testing::Not(testing::Contains(u"Admin"_s)));
        root.reset();
    }
}

TEST_F(ShellTest, ThePickerShowsWhatTheServiceKeeps)
{
    self.notifyMode = NotifyMode::mine;
    openMain();
    auto* picker = named<Picker>(*openSettings(), u"Notify me about"_s);
    EXPECT_EQ(picker->currentText(), u"Mine and unassigned"_s);
    QStringList rows;
    for (int row = 0; row < picker->count(); ++row)
        rows.append(picker->itemText(row));
    EXPECT_EQ(rows, (QStringList{u"Everything"_s, u"Mine and unassigned"_s, u"Mentions only"_s}));

    picker->setFocus();
    picker->setCurrentIndex(2);
    const auto held = service.hold("PATCH", "/v1/agent/me/preferences");
    Q_EMIT picker->activated(2);
    EXPECT_EQ(picker->currentText(), u"Mine and unassigned"_s) << "not before the service has it";
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    self.notifyMode = NotifyMode::mentions;
    held->answer(answerOf(AgentResponse{self}));
    EXPECT_TRUE(waitUntil([&] { return picker->currentText() == u"Mentions only"_s; }));
}

TEST_F(ShellTest, TheSidebarWritesTheFiltersAndReloadsWhenItMust)
{
    Product second;
    second.id = u"p2"_s;
    second.name = u"Halden & Cycles"_s;
    products.push_back(second);
    RootView& window = openMain();
    auto* productList = named<SidebarList>(window, u"Products"_s);
    auto* queue = named<SidebarList>(window, u"Queue"_s);
    auto* status = named<SidebarList>(window, u"Status"_s);
    ASSERT_TRUE(productList && queue && status);
    const auto texts = [](const SidebarList* list) {
        QStringList rows;
        for (int row = 0; row < list->model()->rowCount(); ++row)
            rows.append(list->model()->index(row, 0).data(Qt::AccessibleTextRole).toString());
        return rows;
    };
    EXPECT_EQ(texts(productList),
              (QStringList{u"All Products"_s, u"Larkspur Coffee"_s, u"Halden & Cycles"_s}));
    EXPECT_EQ(texts(queue), (QStringList{u"All"_s, u"Unassigned"_s, u"Mine"_s}));
    EXPECT_EQ(texts(status), (QStringList{u"Open"_s, u"Closed"_s}));
    EXPECT_EQ(productList->selectedRow(), 0);

    const auto click = [](SidebarList* list, int row, Qt::KeyboardModifiers modifiers = {}) {
        const QPoint middle = list->visualRect(list->model()->index(row, 0)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, middle);
    };
    click(productList, 2);
    EXPECT_EQ(session->productFilter(), u"p2"_s);
    click(productList, 2, Qt::ControlModifier);
    EXPECT_EQ(session->productFilter(), u"p2"_s) << "a choice is not taken back";
    click(productList, 0);
    EXPECT_EQ(session->productFilter(), std::nullopt);
    queue->setFocus();
    QTest::keyClick(queue, Qt::Key_Down);
    EXPECT_EQ(session->queue(), InboxQueue::unassigned);
    click(status, 1);
    EXPECT_EQ(session->statusFilter(), ConversationStatus::closed);

    // What the session changes by itself shows as well.
    session->setProductFilter(u"p1"_s);
    session->setQueue(InboxQueue::mine);
    EXPECT_EQ(productList->selectedRow(), 1);
    EXPECT_EQ(queue->selectedRow(), 2);

    ASSERT_TRUE(waitUntil([&] { return !session->isLoadingList(); }));
    const qsizetype before = inboxRequests();
    named<Switch>(window, u"Show snoozed"_s)->click();
    EXPECT_TRUE(session->showSnoozed());
    EXPECT_TRUE(waitUntil([&] { return inboxRequests() > before; }));
    EXPECT_TRUE(waitUntil([&] { return !session->isLoadingList(); }));
}

TEST_F(ShellTest, TheStripTellsWhetherTheChannelStands)
{
    service.always("GET", inboxPath, ScriptedAnswer::json("{\"conversations\":[]}"));
    connectLive();
    RootView& window = openRoot();
    EXPECT_THAT(shownTexts(window), testing::Contains(u"Connected"_s));
    service.pause();
    EXPECT_TRUE(waitUntil([&] { return shownTexts(window).contains(u"Reconnecting"_s); }));
}

TEST_F(ShellTest, TheBannerComesWithItsWholeTextAndTakesNothing)
{
    RootView& window = openMain();
    BannerView* banner = window.banner();
    EXPECT_FALSE(banner->isVisible());
    const QString text = u"Network error: "_s + u"<b>very long</b> "_s.repeated(20);
    QWidget* focused = QApplication::focusWidget();
    session->showBanner(text);
    EXPECT_TRUE(banner->isVisible());
    EXPECT_TRUE(banner->isElided());
    EXPECT_EQ(QApplication::focusWidget(), focused);
    EXPECT_TRUE(banner->testAttribute(Qt::WA_TransparentForMouseEvents));
    EXPECT_TRUE(waitUntil([&] { return banner->panelInParent().top() == 10; }));
    EXPECT_EQ(banner->panelInParent().width(), 560);
    QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(banner);
    EXPECT_EQ(spoken->role(), QAccessible::AlertMessage);
    EXPECT_EQ(spoken->text(QAccessible::Name), text);

    session->showBanner(u"Short"_s);
    EXPECT_FALSE(banner->isElided());
    // A sheet does not hide what it causes.
    openSettings();
    const QObjectList& children = window.children();
    EXPECT_GT(children.indexOf(banner), children.indexOf(Sheet::topmost(&window)));
}

TEST_F(ShellTest, ThePanelTakesItsRoomFromInboxAndSidebarAndGivesItBack)
{
    scriptInbox({makeConversation(u"c1"_s), makeConversation(u"c2"_s)});
    for (const char* path :
         {"/v1/agent/conversations/c1", "/v1/agent/conversations/c2", "/v1/agent/conversations/c1/messages",
          "/v1/agent/conversations/c2/messages", "/v1/agent/visitors/conversations", "/v1/agent/canned"})
        service.always("GET", path, refusal(404, "Nothing here"));
    signIn();
    RootView& window = openRoot();
    const auto* sidebar = window.findChild<SidebarView*>();
    const auto* inbox = window.findChild<ConversationListView*>();
    const auto widths = [&] {
        QStringList texts{QString::number(sidebar->width()), QString::number(inbox->width())};
        for (const auto* view :
             window.findChildren<ConversationDetailView*>(QString(), Qt::FindChildrenRecursively))
            if (view->isVisible())
                texts.append(QString::number(view->width()));
        for (const auto* view : window.findChildren<VisitorPanel*>())
            if (view->isVisible())
                texts.append(QString::number(view->width()));
        return texts.join(u' ');
    };
    // The line after a column is part of its share.
    EXPECT_EQ(widths(), u"209 319"_s);
    session->setSelectedConversationId(u"c1"_s);
    EXPECT_EQ(widths(), u"209 319 550"_s);
    session->setShowVisitorPanel(true);
    EXPECT_EQ(widths(), u"179 279 319 300"_s);
    EXPECT_EQ(window.screen()->minimumSizeHint().width(), 1080);
    session->setShowVisitorPanel(false);
    EXPECT_EQ(widths(), u"209 319 550"_s);
    EXPECT_EQ(window.screen()->minimumSizeHint().width(), 820);

    const QPointer<ConversationDetailView> first = window.findChild<ConversationDetailView*>();
    session->setSelectedConversationId(u"c2"_s);
    EXPECT_TRUE(waitUntil([&] { return first.isNull(); })) << "another conversation gets a view of its own";
    EXPECT_EQ(widths(), u"209 319 550"_s);
    session->setSelectedConversationId(std::nullopt);
    EXPECT_EQ(widths(), u"209 319"_s);
}

TEST_F(ShellTest, WithoutASelectionTheScreenSaysSo)
{
    RootView& window = openMain();
    EXPECT_THAT(shownTexts(window),
                testing::IsSupersetOf({u"No Conversation"_s, u"Select a conversation from the list."_s}));
    EXPECT_GE(window.minimumSizeHint().width(), 820);
    EXPECT_GE(window.minimumSizeHint().height(), 480);
}

} // namespace orvia::test
