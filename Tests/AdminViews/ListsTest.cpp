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
        for (const QString& id : ids(canned)) {
            service.always("DELETE", pathOf(id), [this, id](const ReceivedRequest&) {
                std::erase_if(canned, [&id](const CannedResponse& response) { return response.id == id; });
                return accepted();
            });
        }
    }

    static QByteArray pathOf(const QString& id) { return "/v1/admin/canned/" + id.toUtf8(); }
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
    QPoint placeOfRow(int row, const AdminPage& page) const
    {
        const AdminListView& list = *page.list();
        return list.viewport()->mapTo(window.get(), list.visualRect(list.model()->index(row, 0)).center());
    }
    void signInAsAnother()
    {
        session->logout();
        service.answer("POST", "/v1/agent/login", answerOf(LoginResponse{u"t2"_s, self}));
        EXPECT_TRUE(runTask(session->login(u"b"_s, u"c"_s)).value);
        EXPECT_EQ(session->token(), u"t2"_s);
    }
    /// Waits until the page and the service have these responses and no others.
    bool leaves(const QStringList& left, const AdminCannedView& page)
    {
        return waitUntil([&] { return ids(page.canned()) == left && ids(canned) == left; });
    }
};

} // namespace

TEST_F(AdminLists, LetKeysBeCopied)
{
    products[1].publicKey = u"pk_<b>1"_s;
    const auto& shown = show<AdminProductsView>();
    std::vector<Label*> keys;
    for (Label* label : shown.findChildren<Label*>())
        if (label->isVisible() && label->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard))
            keys.push_back(label);
    ASSERT_EQ(keys.size(), 1u) << "a product without a key has none to copy";
    QTest::mouseDClick(keys.front(), Qt::LeftButton, {}, QPoint(4, keys.front()->height() / 2));
    EXPECT_TRUE(keys.front()->hasSelectedText());
    EXPECT_FALSE(form()) << "selecting a key does not edit its product";
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
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(page.editingAgent(), teammates[1]);
    QTest::keyClick(form(), Qt::Key_Escape);
    EXPECT_EQ(page.editingAgent(), std::nullopt);

    openEdit(page);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(list->currentIndex()).center());
    EXPECT_EQ(sheets(), 1);
    EXPECT_EQ(page.editingAgent(), teammates[0]);
}

TEST_F(AdminLists, WhatCannotBeDeletedComesBack)
{
    auto& page = show<AdminCannedView>();
    const auto first = service.hold("DELETE", pathOf(u"k1"_s));
    service.answer("DELETE", pathOf(u"k2"_s), refusal(409, "in use"));
    const Notifications banners(*session, &Session::bannerChanged);
    page.deleteAt({0, 1});
    ASSERT_TRUE(waitUntil([&] { return first->isWaiting(); }));
    // A load meanwhile does not bring back what is about to go.
    runTask(page.reload());
    EXPECT_EQ(ids(page.canned()), (QStringList{u"k3"_s, u"k4"_s, u"k5"_s}));
    EXPECT_EQ(count("DELETE", pathOf(u"k2"_s)), 0u) << "one after the other";
    canned.erase(canned.begin());
    const std::size_t loads = count("GET", cannedPath);
    first->answer(accepted());
    EXPECT_TRUE(leaves({u"k2"_s, u"k3"_s, u"k4"_s, u"k5"_s}, page));
    EXPECT_EQ(count("GET", cannedPath), loads + 1);
    EXPECT_EQ(banners.count, 1);
    EXPECT_EQ(session->banner(), u"in use"_s);
    EXPECT_TRUE(service.requests("DELETE", pathOf(u"k1"_s)).front().body.isEmpty());

    // A deletion that fails first does not keep the next from being tried.
    service.answer("DELETE", pathOf(u"k2"_s), refusal(500, "again"));
    page.deleteAt({0, 1});
    EXPECT_TRUE(leaves({u"k2"_s, u"k4"_s, u"k5"_s}, page));
}

TEST_F(AdminLists, RowsAreDeletedWithTheKeyboardAndThePointer)
{
    auto& page = show<AdminCannedView>();
    AdminListView* list = page.list();

    // The button of the current row comes next to the list.
    QTest::keyClick(list, Qt::Key_Tab);
    settle();
    ASSERT_EQ(deleteButtons(page).size(), 1u) << "it stays while it has the focus";
    QTest::keyClick(deleteButtons(page).front(), Qt::Key_Space);
    EXPECT_TRUE(leaves({u"k2"_s, u"k3"_s, u"k4"_s, u"k5"_s}, page));
    settle();
    EXPECT_TRUE(list->hasFocus()) << "the focus does not leave the list with the button";
    EXPECT_EQ(list->currentIndex().row(), 0);

    // The rows chosen with Shift go together; Tab goes through their buttons and on to the next control.
    clickRow(page, 0);
    clickRow(page, 1, Qt::ShiftModifier);
    settle();
    int above = -1;
    for (int step = 0; step < 2; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        settle();
        ASSERT_THAT(deleteButtons(page), testing::Contains(QApplication::focusWidget()));
        EXPECT_GT(QApplication::focusWidget()->y(), std::exchange(above, QApplication::focusWidget()->y()));
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_THAT(deleteButtons(page), testing::Not(testing::Contains(QApplication::focusWidget())));
    list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_TRUE(leaves({u"k4"_s, u"k5"_s}, page));

    // The menu acts on the row under the pointer, and a button shows there.
    settings->confirmButton()->setFocus();
    settle();
    EXPECT_TRUE(deleteButtons(page).empty());
    QTest::mouseMove(window->windowHandle(), placeOfRow(0, page));
    settle();
    IconButton* button = deleteButtons(page).at(0);
    QTest::mouseMove(window->windowHandle(), button->mapTo(window.get(), button->rect().center()));
    settle();
    EXPECT_TRUE(button->isVisible()) << "the row stays hovered under its button";
    QTest::mouseClick(window->windowHandle(), Qt::RightButton, {}, placeOfRow(1, page));
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_TRUE(leaves({u"k4"_s}, page));

    // With the last row the empty state comes, and a new response takes it away.
    auto* empty = page.findChild<EmptyState*>();
    EXPECT_FALSE(empty->isVisible());
    button = deleteButtons(page).at(0);
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {},
                      button->mapTo(window.get(), button->rect().center()));
    EXPECT_TRUE(empty->isVisible());
    EXPECT_TRUE(leaves({}, page));
    QWidget* focused = QApplication::focusWidget();
    EXPECT_TRUE(focused && focused->isVisible() && settings->isAncestorOf(focused));
    canned = {makeCanned(u"k6"_s)};
    runTask(page.reload());
    EXPECT_FALSE(empty->isVisible());
    EXPECT_TRUE(list->isVisible());
}

TEST_F(AdminLists, SurviveWhatGoesAwayWhileTheyLoadAndDelete)
{
    enum class Gone { thePage, theWindow, theSession, theSignIn };
    for (const Gone gone : {Gone::thePage, Gone::theWindow, Gone::theSession, Gone::theSignIn}) {
        SCOPED_TRACE(static_cast<int>(gone));
        tokens.texts.insert(u"agentToken"_s, u"t1"_s);
        auto& page = show<AdminCannedView>();
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
            signInAsAnother();
        settle();
        load->answer(gone == Gone::theSignIn ? refusal(500, "not yours")
                                             : answerOf(CannedResponsesResponse{{canned}}));
        deletion->answer(accepted());
        EXPECT_TRUE(waitUntil([&] { return reload->finished(); }));
        EXPECT_TRUE(waitUntil([&] { return !goesOn || count("DELETE", pathOf(u"k2"_s)) == before + 1; }));
        settle();
        EXPECT_EQ(count("DELETE", pathOf(u"k2"_s)), before + (goesOn ? 1 : 0));
        if (gone == Gone::theSignIn) {
            EXPECT_NE(session->banner(), u"not yours"_s);
        }
        if (gone == Gone::theSession) {
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
