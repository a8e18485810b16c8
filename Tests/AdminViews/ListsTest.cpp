#include "AdminFixture.h"

#include "Views/Widgets/EmptyState.h"
#include "Views/Widgets/Label.h"

#include <QMenu>

namespace orvia::test {

namespace {

class AdminLists : public AdminFixture {
protected:
    AdminLists()
    {
        canned = {makeCanned(u"k1"_s), makeCanned(u"k2"_s, u"p2"_s), makeCanned(u"k3"_s, u"p9"_s)};
    }

    static QByteArray pathOf(const QString& id) { return "/v1/admin/canned/" + id.toUtf8(); }
    /// Accepts the deletion of these, which the lists no longer have then.
    void acceptDeletion(const QStringList& deleted)
    {
        for (const QString& id : deleted) {
            service.always("DELETE", pathOf(id), [this, id](const ReceivedRequest&) {
                std::erase_if(canned, [&id](const CannedResponse& response) { return response.id == id; });
                return accepted();
            });
        }
    }
    static QStringList rowTexts(const AdminPage& page)
    {
        QStringList texts;
        for (int row = 0; row < page.list()->model()->rowCount(); ++row)
            texts.append(page.list()->model()->index(row, 0).data(Qt::AccessibleTextRole).toString());
        return texts;
    }
    /// The visible buttons on rows.
    static std::vector<IconButton*> deleteButtons(const AdminPage& page)
    {
        std::vector<IconButton*> found;
        for (auto* button : page.findChildren<IconButton*>()) {
            if (button->isVisible() && button->accessibleName() == u"Delete"_s)
                found.push_back(button);
        }
        return found;
    }
    bool hasDeleted(const QStringList& deleted, const AdminCannedView& page)
    {
        return waitUntil([&] {
            return std::all_of(deleted.begin(), deleted.end(),
                               [&](const QString& id) { return count("DELETE", pathOf(id)) == 1; })
                   && ids(page.canned()) == ids(canned);
        });
    }
};

} // namespace

TEST_F(AdminLists, SayEverythingAboutTheirRows)
{
    teammates[1].role = AgentRole::admin;
    products[1].publicKey = u"pk_<b>1"_s;
    const auto& agents = show<AdminAgentsView>();
    EXPECT_EQ(agents.title(), u"Agents"_s);
    EXPECT_EQ(agents.trailingButton()->toolTip(), u"New agent"_s);
    EXPECT_EQ(ids(agents.agents()), (QStringList{u"a1"_s, u"a2"_s}));
    EXPECT_FALSE(rowTexts(agents)[0].contains(u"admin"_s));
    for (const QString& part : {u"Dana Whitfield"_s, u"a2@orvia.example"_s, u"admin"_s})
        EXPECT_TRUE(rowTexts(agents)[1].contains(part)) << part.toStdString();

    const auto& shown = show<AdminProductsView>();
    EXPECT_EQ(shown.trailingButton()->toolTip(), u"New product"_s);
    for (const QString& part : {u"Halden & Cycles"_s, u"halden"_s, u"pk_<b>1"_s})
        EXPECT_TRUE(rowTexts(shown)[1].contains(part)) << part.toStdString();
    std::vector<Label*> keys;
    for (Label* label : shown.findChildren<Label*>())
        if (label->isVisible() && label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse))
            keys.push_back(label);
    ASSERT_EQ(keys.size(), 1u) << "a product without a key has none to copy";
    EXPECT_EQ(keys.front()->text(), u"pk_<b>1"_s);
    EXPECT_TRUE(keys.front()->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
    QTest::mouseDClick(keys.front(), Qt::LeftButton, {}, QPoint(4, keys.front()->height() / 2));
    EXPECT_TRUE(keys.front()->hasSelectedText());
    EXPECT_FALSE(form()) << "selecting a key does not edit its product";

    const auto& responses = show<AdminCannedView>();
    EXPECT_EQ(responses.title(), u"Canned Responses"_s);
    EXPECT_EQ(responses.trailingButton()->toolTip(), u"New canned response"_s);
    const QStringList tags{u"All products"_s, u"Halden & Cycles"_s, u"All products"_s};
    for (int row = 0; row < 3; ++row) {
        EXPECT_TRUE(rowTexts(responses)[row].contains(tags[row])) << row;
        EXPECT_TRUE(rowTexts(responses)[row].startsWith(u'/' + canned[std::size_t(row)].shortcut)) << row;
        EXPECT_TRUE(rowTexts(responses)[row].contains(canned[std::size_t(row)].body)) << row;
    }
}

TEST_F(AdminLists, LoadWheneverTheyAreShownAndKeepTheirRowsOnAFailure)
{
    auto& page = show<AdminAgentsView>();
    EXPECT_EQ(count("GET", agentsPath), 1u);
    settings->pushPage(u"Other"_s, new QWidget);
    service.answer("GET", agentsPath, refusal(503, "try later"));
    settings->popPage();
    ASSERT_TRUE(waitUntil([&] { return session->banner().has_value(); }));
    EXPECT_EQ(session->banner(), u"try later"_s);
    EXPECT_EQ(count("GET", agentsPath), 2u);
    EXPECT_EQ(page.records(), teammates);

    // The answer to an older load does not undo a newer one.
    const auto older = service.hold("GET", agentsPath);
    const auto slow = startTask(page.reload());
    ASSERT_TRUE(waitUntil([&] { return older->isWaiting(); }));
    const std::vector<Agent> before = teammates;
    teammates.push_back(makeAgent(u"a3"_s, u"New"_s));
    runTask(page.reload());
    older->answer(answerOf(AgentsResponse{{before}}));
    ASSERT_TRUE(waitUntil([&] { return slow->finished(); }));
    EXPECT_EQ(page.records(), teammates);
}

TEST_F(AdminLists, OpenOneFormByPointerAndByKeyboard)
{
    auto& page = show<AdminAgentsView>();
    AdminListView* list = page.list();
    const auto sheets = [this] {
        const auto all = window->findChildren<FormSheet*>();
        return std::count_if(all.begin(), all.end(), [](const FormSheet* sheet) { return sheet->isOpen(); });
    };
    ASSERT_TRUE(list->hasFocus());
    EXPECT_EQ(list->currentIndex().row(), 0);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(page.editingAgent(), teammates[1]);
    EXPECT_EQ(sheets(), 1);
    QTest::keyClick(form(), Qt::Key_Escape);
    EXPECT_EQ(page.editingAgent(), std::nullopt);

    openEdit(page);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(list->currentIndex()).center());
    EXPECT_EQ(sheets(), 1);
    EXPECT_EQ(page.editingAgent(), teammates[0]);
    EXPECT_FALSE(page.showCreate());
    form()->dismiss();
    openCreate(page);
    EXPECT_TRUE(page.showCreate());
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(sheets(), 1);
}

TEST_F(AdminLists, WhatCannotBeDeletedComesBack)
{
    auto& page = show<AdminCannedView>();
    const auto first = service.hold("DELETE", pathOf(u"k1"_s));
    service.answer("DELETE", pathOf(u"k2"_s), refusal(409, "in use"));
    const Notifications banners(*session, &Session::bannerChanged);
    page.deleteAt({0, 1});
    EXPECT_EQ(ids(page.canned()), QStringList{u"k3"_s});
    ASSERT_TRUE(waitUntil([&] { return first->isWaiting(); }));
    // A load meanwhile does not bring back what is about to go.
    runTask(page.reload());
    EXPECT_EQ(ids(page.canned()), QStringList{u"k3"_s});
    EXPECT_EQ(count("DELETE", pathOf(u"k2"_s)), 0u) << "one after the other";
    canned.erase(canned.begin());
    const std::size_t loads = count("GET", cannedPath);
    first->answer(accepted());
    ASSERT_TRUE(waitUntil([&] { return page.canned().size() == 2; }));
    EXPECT_EQ(ids(page.canned()), (QStringList{u"k2"_s, u"k3"_s}));
    EXPECT_EQ(count("GET", cannedPath), loads + 1);
    EXPECT_EQ(banners.count, 1);
    EXPECT_EQ(session->banner(), u"in use"_s);
    EXPECT_TRUE(service.requests("DELETE", pathOf(u"k1"_s)).front().body.isEmpty());

    // A deletion that fails first does not keep the next from being tried; none at all loads the list.
    service.answer("DELETE", pathOf(u"k2"_s), refusal(500, "again"));
    acceptDeletion({u"k3"_s});
    page.deleteAt({0, 1});
    EXPECT_TRUE(waitUntil([&] { return ids(page.canned()) == QStringList{u"k2"_s}; }));
    const std::size_t before = count("GET", cannedPath);
    page.deleteAt({});
    EXPECT_TRUE(waitUntil([&] { return count("GET", cannedPath) == before + 1; }));
}

TEST_F(AdminLists, RowsAreDeletedWithTheKeyboardAndThePointer)
{
    canned.push_back(makeCanned(u"k4"_s));
    canned.push_back(makeCanned(u"k5"_s));
    auto& page = show<AdminCannedView>();
    AdminListView* list = page.list();
    acceptDeletion({u"k1"_s, u"k2"_s, u"k3"_s, u"k4"_s, u"k5"_s});

    // The button of the current row comes next to the list.
    ASSERT_TRUE(list->hasFocus());
    ASSERT_EQ(deleteButtons(page).size(), 1u);
    QTest::keyClick(list, Qt::Key_Tab);
    IconButton* button = deleteButtons(page).front();
    ASSERT_TRUE(button->hasFocus());
    settle();
    EXPECT_TRUE(button->isVisible()) << "it stays while it has the focus";
    QTest::keyClick(button, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(list->hasFocus());
    QTest::keyClick(list, Qt::Key_Tab);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_TRUE(hasDeleted({u"k1"_s}, page));
    settle();
    EXPECT_TRUE(list->hasFocus()) << "the focus does not leave the list with the button";
    EXPECT_EQ(list->currentIndex().row(), 0);

    // The rows chosen with Shift go together.
    clickRow(page, 0);
    clickRow(page, 1, Qt::ShiftModifier);
    EXPECT_EQ(list->chosenRows(), (std::vector<int>{0, 1}));
    settle();
    ASSERT_EQ(deleteButtons(page).size(), 2u);
    // Tab goes through their buttons from top to bottom, and on to the next control.
    int above = -1;
    for (int step = 0; step < 2; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        settle();
        QWidget* focused = QApplication::focusWidget();
        ASSERT_THAT(deleteButtons(page), testing::Contains(focused));
        EXPECT_GT(focused->y(), above);
        above = focused->y();
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_THAT(deleteButtons(page), testing::Not(testing::Contains(QApplication::focusWidget())));
    list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(ids(page.canned()), (QStringList{u"k4"_s, u"k5"_s}));
    EXPECT_TRUE(hasDeleted({u"k2"_s, u"k3"_s}, page));

    // The menu acts on the row under the pointer.
    const QPoint second =
        list->viewport()->mapTo(window.get(), list->visualRect(list->model()->index(1, 0)).center());
    QTest::mouseClick(window->windowHandle(), Qt::RightButton, {}, second);
    QPointer<QMenu> menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_EQ(menu->actions().front()->text(), u"Delete"_s);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_EQ(ids(page.canned()), QStringList{u"k4"_s});
    EXPECT_TRUE(hasDeleted({u"k5"_s}, page));
    EXPECT_FALSE(menu && menu->isVisible());

    // With the last row the empty state comes, and a new response takes it away.
    auto* empty = page.findChild<EmptyState*>();
    EXPECT_FALSE(empty->isVisible());
    list->setFocus();
    settle();
    ASSERT_EQ(deleteButtons(page).size(), 1u);
    deleteButtons(page).front()->click();
    EXPECT_TRUE(empty->isVisible());
    EXPECT_TRUE(hasDeleted({u"k4"_s}, page));
    settle();
    EXPECT_TRUE(deleteButtons(page).empty());
    QWidget* focused = QApplication::focusWidget();
    EXPECT_TRUE(focused && focused->isVisible() && settings->isAncestorOf(focused));
    canned = {makeCanned(u"k6"_s)};
    runTask(page.reload());
    EXPECT_FALSE(empty->isVisible());
    EXPECT_TRUE(list->isVisible());
}

TEST_F(AdminLists, TheButtonFollowsThePointer)
{
    auto& page = show<AdminCannedView>();
    AdminListView* list = page.list();
    acceptDeletion({u"k2"_s});
    settings->confirmButton()->setFocus();
    settle();
    EXPECT_TRUE(deleteButtons(page).empty());
    const QModelIndex row = list->model()->index(1, 0);
    const auto moveTo = [this](QWidget* widget, const QPoint& place) {
        QTest::mouseMove(window->windowHandle(), widget->mapTo(window.get(), place));
        settle();
    };
    moveTo(list->viewport(), list->visualRect(row).center());
    ASSERT_EQ(deleteButtons(page).size(), 1u);
    IconButton* button = deleteButtons(page).front();
    EXPECT_EQ(button->accessibleDescription(), u"/k2-short"_s);
    moveTo(button, button->rect().center());
    EXPECT_TRUE(button->isVisible());
    EXPECT_TRUE(list->isUnderPointer(row)) << "the row stays hovered under its button";
    moveTo(list->viewport(), list->visualRect(list->model()->index(2, 0)).center());
    ASSERT_EQ(deleteButtons(page).size(), 1u);
    EXPECT_EQ(deleteButtons(page).front()->accessibleDescription(), u"/k3-short"_s);
    moveTo(list->viewport(), list->visualRect(row).center());
    button = deleteButtons(page).front();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {},
                      button->mapTo(window.get(), button->rect().center()));
    EXPECT_EQ(ids(page.canned()), (QStringList{u"k1"_s, u"k3"_s}));
    EXPECT_TRUE(hasDeleted({u"k2"_s}, page));
    settle();
    // The click left the focus on the list, whose current row has its button.
    EXPECT_TRUE(list->hasFocus());
    moveTo(settings, {2, 2});
    ASSERT_EQ(deleteButtons(page).size(), 1u);
    settings->confirmButton()->setFocus();
    settle();
    EXPECT_TRUE(deleteButtons(page).empty());
}

TEST_F(AdminLists, SurviveWhatGoesAwayWhileTheyLoadAndDelete)
{
    enum class Gone { thePage, theWindow, theSession, theSignIn };
    for (const Gone gone : {Gone::thePage, Gone::theWindow, Gone::theSession, Gone::theSignIn}) {
        SCOPED_TRACE(static_cast<int>(gone));
        tokens.texts.insert(u"agentToken"_s, u"t1"_s);
        auto& page = show<AdminCannedView>();
        const QPointer<AdminCannedView> watched = &page;
        const auto load = service.hold("GET", cannedPath);
        const auto reload = startTask(page.reload());
        const std::size_t before = count("DELETE", pathOf(u"k2"_s));
        const auto deletion = service.hold("DELETE", pathOf(u"k1"_s));
        const bool goesOn = gone == Gone::thePage || gone == Gone::theWindow;
        if (goesOn)
            service.answer("DELETE", pathOf(u"k2"_s), accepted());
        page.deleteAt({0, 1});
        ASSERT_TRUE(waitUntil([&] { return load->isWaiting() && deletion->isWaiting(); }));
        if (gone == Gone::thePage)
            settings->popPage();
        else if (gone == Gone::theWindow)
            window.reset();
        else if (gone == Gone::theSession)
            session.reset();
        else
            session->logout();
        settle();
        load->answer(answerOf(CannedResponsesResponse{{canned}}));
        deletion->answer(accepted());
        EXPECT_TRUE(waitUntil([&] { return reload->finished(); }));
        EXPECT_TRUE(waitUntil([&] { return !goesOn || count("DELETE", pathOf(u"k2"_s)) == before + 1; }));
        settle();
        EXPECT_EQ(count("DELETE", pathOf(u"k2"_s)), before + (goesOn ? 1 : 0));
        if (gone == Gone::theSession) {
            ASSERT_TRUE(watched);
            page.deleteAt({0});
            page.trailingButton()->click();
            EXPECT_FALSE(form());
            page.grab();
        }
        window.reset();
        session.reset();
    }
}

} // namespace orvia::test
