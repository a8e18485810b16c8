#include "PanelFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QTest>

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(PanelFixture, LeavesOutWhatIsUnknown)
{
    showPanel();
    EXPECT_THAT(sections(), ElementsAre(u"Location"_s));
    EXPECT_THAT(names(), ElementsAre(u"Location"_s));

    // The conversation becomes known while the panel stands, without a name and an address.
    conversation.visitor.name.clear();
    conversation.visitor.email.clear();
    conversation.createdAt.reset();
    tell(conversation);
    EXPECT_THAT(names(), ElementsAre(u"Visitor"_s, u"Location"_s));
    EXPECT_THAT(service.requests(), IsEmpty());
}

TEST_F(PanelFixture, ShowsEverySectionInOrder)
{
    VisitorMeta& meta = *conversation.visitor.meta;
    meta.geo = VisitorGeo{u"Bremen"_s, u"Bremen"_s, u"Germany"_s, u"de"_s, u"Europe/Berlin"_s, u"Weser"_s};
    meta.ip = u"203.0.113.42"_s;
    meta.url = u"https://shop.example/Lids"_s;
    meta.pages = {makePage(u"Lids"_s, clock, 1)};
    meta.data = OrderedStringMap{{{u"Plan"_s, u"Roaster <b>club</b>"_s},
                                  {u"Empty"_s, u""_s},
                                  {u"Order"_s, u"https://shop.example/orders/1"_s}}};
    meta.userAgent = u"Firefox/120 (X11; Linux)"_s;
    meta.referrer = u"https://search.example/"_s;
    Conversation earlier = makeConversation(u"c0"_s);
    earlier.status = ConversationStatus::closed;
    earlier.lastMessageAt = instantFromISO8601("2025-09-14T12:00:00Z");
    earlier.lastMessagePreview = u"Thanks."_s;
    scriptHistory({conversation, earlier});
    tell(conversation);
    showPanel();
    ASSERT_TRUE(waitUntil([this] { return !all<HistoryRow>().empty(); }));

    EXPECT_THAT(sections(), ElementsAre(u"Location"_s, u"Now viewing"_s, u"Custom data"_s,
                                        u"Previous conversations"_s, u"Journey"_s, u"Device"_s));
    EXPECT_THAT(names(),
                testing::IsSupersetOf({u"Helen Brandt"_s, u"helen@example.de"_s, u"Started 5 hours ago"_s,
                                       u"Bremen, Germany (DE)"_s, u"Europe/Berlin \u00B7 Weser"_s,
                                       u"203.0.113.42"_s, u"Lids, https://shop.example/Lids"_s, u"Plan"_s,
                                       u"Roaster <b>club</b>"_s, u"https://shop.example/orders/1"_s,
                                       u"Closed, Sep 14, 2025, Thanks."_s, u"Lids"_s, u"Browser"_s,
                                       u"Firefox on Linux"_s, u"Referrer"_s, u"https://search.example/"_s}));
    EXPECT_THAT(names(), Not(Contains(u"Empty"_s)));
    EXPECT_EQ(all<HistoryRow>().size(), 1U); // the conversation itself is left out
    // Values are text to select, web addresses are links.
    EXPECT_TRUE(only<SelectableLine>(u"Roaster <b>club</b>"_s));
    EXPECT_TRUE(only<LinkButton>(u"https://shop.example/orders/1"_s));
    const QAccessibleInterface* row = QAccessible::queryAccessibleInterface(only<JourneyRow>(u"Lids"_s));
    EXPECT_EQ(row->role(), QAccessible::Button);
    EXPECT_EQ(row->text(QAccessible::Description), u"1 minute ago"_s);
}

TEST_F(PanelFixture, OpensWhatIsAnAddress)
{
    VisitorMeta& meta = *conversation.visitor.meta;
    meta.url = u"https://shop.example/now"_s;
    meta.data =
        OrderedStringMap{{{u"Link"_s, u" HTTP://Shop.example/x "_s}, {u"Mail"_s, u"mailto:a@b.example"_s}}};
    meta.pages = {{u"no address"_s, u"Nowhere"_s, {}}, {{}, u"None"_s, {}}, {u"app:open"_s, u"App"_s, {}}};
    tell(conversation);
    scriptHistory({});
    showPanel();
    QTest::mouseClick(only<LinkButton>(u"https://shop.example/now"_s), Qt::LeftButton);
    QTest::keyClick(only<LinkButton>(u" HTTP://Shop.example/x "_s), Qt::Key_Enter);
    EXPECT_TRUE(only<SelectableLine>(u"mailto:a@b.example"_s));
    for (JourneyRow* row : all<JourneyRow>())
        QTest::mouseClick(row, Qt::LeftButton);
    EXPECT_THAT(opened, ElementsAre(QUrl(u"https://shop.example/now"_s), QUrl(u"http://shop.example/x"_s),
                                    QUrl(u"app:open"_s)));
}

TEST_F(PanelFixture, LoadsEarlierConversationsWhenShownAndWhenTheAddressChanges)
{
    Conversation known = makeConversation(u"c0"_s);
    known.lastMessageAt.reset();
    known.createdAt = instantFromISO8601("2025-06-02T12:00:00Z");
    known.lastMessagePreview.reset();
    scriptHistory({known});
    tell(conversation);
    const auto asked = [this] { return service.requests("GET", "/v1/agent/visitors/conversations").size(); };
    showPanel();
    EXPECT_TRUE(waitUntil([this] { return only<HistoryRow>(u"Open, Jun 2, 2025"_s) != nullptr; }));
    EXPECT_EQ(asked(), 1U);
    conversation.visitor.name = u"Helen"_s;
    tell(conversation);
    panel->hide();
    panel->show();
    EXPECT_TRUE(waitUntil([&] { return asked() == 2; }));
    conversation.visitor.email = u"other@example.de"_s;
    tell(conversation);
    EXPECT_FALSE(sections().contains(u"Previous conversations"_s)); // these were somebody else's
    EXPECT_TRUE(waitUntil([this] { return sections().contains(u"Previous conversations"_s); }));
    EXPECT_EQ(service.requests().back().query(), "email=other%40example.de");
    conversation.visitor.email.clear();
    tell(conversation);
    EXPECT_FALSE(sections().contains(u"Previous conversations"_s));
    EXPECT_EQ(asked(), 3U);
}

TEST_F(PanelFixture, IgnoresALateAnswerAboutAnOlderAddress)
{
    const auto first = service.hold("GET", "/v1/agent/visitors/conversations");
    const auto second = service.hold("GET", "/v1/agent/visitors/conversations");
    tell(conversation);
    showPanel();
    ASSERT_TRUE(waitUntil([&] { return first->isWaiting(); }));
    conversation.visitor.email = u"other@example.de"_s;
    tell(conversation);
    ASSERT_TRUE(waitUntil([&] { return second->isWaiting(); }));
    second->answer(answerOf(ConversationsResponse{{{makeConversation(u"right"_s)}}}));
    ASSERT_TRUE(waitUntil([this] { return all<HistoryRow>().size() == 1; }));
    first->answer(answerOf(ConversationsResponse{{{makeConversation(u"a"_s), makeConversation(u"b"_s)}}}));
    spinFor(50ms);
    EXPECT_EQ(all<HistoryRow>().size(), 1U);
}

TEST_F(PanelFixture, MayEndWhileItWaitsForAnAnswer)
{
    const auto held = service.hold("GET", "/v1/agent/visitors/conversations");
    tell(conversation);
    showPanel();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    panel.reset();
    held->answer(answerOf(ConversationsResponse{{{makeConversation(u"late"_s)}}}));
    spinFor(30ms);
    EXPECT_FALSE(session->banner());
}

TEST_F(PanelFixture, OpensAnEarlierConversation)
{
    scriptHistory({makeConversation(u"c0"_s)});
    tell(conversation);
    showPanel();
    ASSERT_TRUE(waitUntil([this] { return !all<HistoryRow>().empty(); }));
    QTest::keyClick(all<HistoryRow>().front(), Qt::Key_Return);
    EXPECT_TRUE(waitUntil([this] { return session->selectedConversationId() == u"c0"_s; }));
}

TEST_F(PanelFixture, FoldsALongJourney)
{
    scriptHistory({});
    auto& pages = conversation.visitor.meta->pages.emplace();
    for (int page = 1; page <= 8; ++page)
        pages.push_back(makePage(QString::number(page), clock, 60 - page));
    tell(conversation);
    showPanel();
    EXPECT_EQ(journey(), QStringList({u"8"_s, u"7"_s, u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s, u"1"_s}));
    EXPECT_EQ(only<LinkButton>(u"Show all 8"_s), nullptr);

    pages.push_back(makePage(u"9"_s, clock, 1));
    tell(conversation);
    EXPECT_EQ(journey(), QStringList({u"9"_s, u"8"_s, u"7"_s, u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s}));
    auto* toggle = only<LinkButton>(u"Show all 9"_s);
    ASSERT_TRUE(toggle);
    QTest::mouseClick(toggle, Qt::LeftButton);
    EXPECT_EQ(journey().size(), 9);
    EXPECT_EQ(toggle->accessibleName(), u"Show less"_s);

    // It stays unfolded when the visitor goes on, and the newest page is also the first that is read out.
    pages.push_back(makePage(u"10"_s, clock, 0));
    tell(conversation);
    EXPECT_EQ(journey().size(), 10);
    EXPECT_EQ(journey().first(), u"10"_s);
    EXPECT_EQ(panel->findChildren<JourneyRow*>().front()->accessibleName(), u"10"_s);
    QTest::keyClick(toggle, Qt::Key_Return);
    EXPECT_EQ(journey().size(), 8);
    EXPECT_EQ(toggle->accessibleName(), u"Show all 10"_s);
}

TEST_F(PanelFixture, KeepsFocusAndPlaceWhenTheVisitorGoesOn)
{
    scriptHistory({});
    auto& pages = conversation.visitor.meta->pages.emplace();
    for (int page = 1; page <= 40; ++page)
        pages.push_back(makePage(QString::number(page), clock, 60));
    tell(conversation);
    showPanel();
    QTest::mouseClick(only<LinkButton>(u"Show all 40"_s), Qt::LeftButton);
    QCoreApplication::processEvents();
    JourneyRow* row = only<JourneyRow>(u"15"_s);
    row->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(waitUntil([this] { return area().verticalScrollBar()->maximum() > 250; }));
    area().verticalScrollBar()->setValue(250);
    pages.push_back(makePage(u"41"_s, clock, 0));
    conversation.visitor.name = u"Helen B."_s;
    tell(conversation);
    EXPECT_TRUE(names().contains(u"Helen B."_s));
    EXPECT_EQ(area().verticalScrollBar()->value(), 250);
    ASSERT_TRUE(QApplication::focusWidget());
    EXPECT_EQ(QApplication::focusWidget()->accessibleName(), u"15"_s);
}

TEST_F(PanelFixture, KeepsRelativeTimesTrue)
{
    scriptHistory({});
    conversation.createdAt = clock - 59'980ms; // the next minute is about to begin
    conversation.visitor.meta->pages = {makePage(u"Page"_s, clock, 2)};
    tell(conversation);
    showPanel();
    EXPECT_TRUE(names().contains(u"Started now"_s));
    clock += 90s;
    EXPECT_TRUE(names().contains(u"Started now"_s));
    EXPECT_TRUE(waitUntil([this] { return names().contains(u"Started 2 minutes ago"_s); }));
    EXPECT_EQ(only<JourneyRow>(u"Page"_s)->accessibleDescription(), u"3 minutes ago"_s);
}

TEST_F(PanelFixture, StopsAtEveryLineByTheKeyboard)
{
    VisitorMeta& meta = *conversation.visitor.meta;
    meta.url = u"https://shop.example/a"_s;
    meta.data = OrderedStringMap{{{u"k1"_s, u"v1"_s}, {u"k2"_s, u"https://v2.example"_s}}};
    meta.pages = {makePage(u"p1"_s, clock, 2), makePage(u"p2"_s, clock, 1)};
    meta.language = u"de"_s;
    scriptHistory({makeConversation(u"c0"_s)});
    tell(conversation);
    showPanel();
    ASSERT_TRUE(waitUntil([this] { return !all<HistoryRow>().empty(); }));
    QCoreApplication::processEvents();
    area().setFocus(Qt::TabFocusReason);
    QStringList stops;
    for (int stop = 0; stop < 8; ++stop) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        stops.append(QApplication::focusWidget()->accessibleName());
    }
    EXPECT_EQ(stops, QStringList({u"helen@example.de"_s, u"https://shop.example/a"_s, u"v1"_s,
                                  u"https://v2.example"_s, all<HistoryRow>().front()->accessibleName(),
                                  u"p2"_s, u"p1"_s, u"de"_s}));
}

} // namespace
} // namespace orvia::test
