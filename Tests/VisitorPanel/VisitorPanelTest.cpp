#include "Views/VisitorPanel/VisitorPanel.h"
#include "Session/SessionFixture.h"
#include "Views/VisitorPanel/PanelRowWidgets.h"
#include "Views/VisitorPanel/PanelSection.h"

#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;

/// A panel on a window of its own beside a session that hears of conversations by live events.
class PanelFixture : public SessionFixture {
protected:
    PanelFixture()
    {
        conversation.visitor.name = u"Helen Brandt"_s;
        conversation.visitor.email = u"helen@example.de"_s;
        conversation.createdAt = clock - 5h;
        surroundings.openURL = [this](const QUrl& url) { opened.push_back(url); };
        surroundings.now = [this] { return clock; };
        surroundings.leastRefresh = 10ms;
        makeSession();
    }
    ~PanelFixture() override { panel.reset(); }

    /// Makes the session know @p told, and lets the panel follow.
    void tell(const Conversation& told)
    {
        deliver(told);
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
    /// Tells of the conversation with what is known in @c meta.
    void tellMeta()
    {
        conversation.visitor.meta = meta;
        tell(conversation);
    }
    /// Scripts the answer about the visitor's conversations.
    void scriptHistory(std::vector<Conversation> conversations)
    {
        service.always("GET", historyPath, answerOf(ConversationsResponse{{std::move(conversations)}}));
    }
    void showPanel()
    {
        panel = std::make_unique<VisitorPanel>(*session, conversation.id, surroundings);
        panel->resize(panel->width(), 700);
        panel->show();
        panel->activateWindow();
        QCoreApplication::processEvents();
    }
    static QString nameAfterTab()
    {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCoreApplication::processEvents();
        return QApplication::focusWidget() ? QApplication::focusWidget()->accessibleName() : QString();
    }
    VisitorPage makePage(const QString& title, int minutes = 60) const
    {
        return {u"https://shop.example/"_s + title, title, clock - std::chrono::minutes(minutes)};
    }

    /// The only visible widget of one class whose accessible name is @p name, or null.
    template <class Widget>
    Widget* only(const QString& name) const
    {
        std::vector<Widget*> found = all<Widget>();
        std::erase_if(found, [&name](const Widget* widget) { return widget->accessibleName() != name; });
        return found.size() == 1 ? found.front() : nullptr;
    }
    /// All visible widgets of one class from top to bottom.
    template <class Widget>
    std::vector<Widget*> all() const
    {
        const QList<Widget*> children = panel->template findChildren<Widget*>();
        std::vector<Widget*> found(children.begin(), children.end());
        std::erase_if(found, [this](const Widget* widget) { return !widget->isVisibleTo(panel.get()); });
        std::ranges::sort(found, {},
                          [this](const Widget* widget) { return widget->mapTo(panel.get(), QPoint()).y(); });
        return found;
    }
    /// The accessible names of the visible widgets of one class from top to bottom.
    template <class Widget>
    QStringList names() const
    {
        QStringList found;
        for (const Widget* widget : all<Widget>())
            found.append(widget->accessibleName());
        return found;
    }
    QStringList sections() const { return names<PanelSection>(); }
    QStringList lines() const { return names<PanelLine>(); }
    QStringList journey() const { return names<JourneyRow>(); }
    QScrollBar& bar() const { return *panel->findChild<QScrollArea*>()->verticalScrollBar(); }

    const QByteArray historyPath = "/v1/agent/visitors/conversations";
    Conversation conversation = makeConversation(u"c1"_s);
    VisitorMeta meta;
    VisitorPanel::Surroundings surroundings;
    std::vector<QUrl> opened;
    std::unique_ptr<VisitorPanel> panel;
};

TEST_F(PanelFixture, ShowsWhatIsKnownAndStopsAtEveryLineByTheKeyboard)
{
    showPanel();
    EXPECT_THAT(sections(), ElementsAre(u"Location"_s));
    EXPECT_TRUE(lines().isEmpty());
    Conversation nameless = makeConversation(u"c1"_s);
    nameless.visitor = {};
    tell(nameless);
    EXPECT_THAT(sections(), ElementsAre(u"Location"_s));
    EXPECT_THAT(lines(), ElementsAre(u"Visitor"_s));
    EXPECT_THAT(service.requests(), testing::IsEmpty());

    meta.url = u"https://shop.example/a"_s;
    meta.data = OrderedStringMap{
        {{u"Plan"_s, u"<b>club</b>"_s}, {u"Empty"_s, u""_s}, {u"Order"_s, u" HTTP://v2.example "_s}}};
    meta.pages = {{u"no address"_s, u"p1"_s, {}}, {{}, u"p2"_s, {}}, {u"app:open"_s, u"p3"_s, {}}};
    meta.language = u"de"_s;
    scriptHistory({conversation, makeConversation(u"c0"_s)});
    tellMeta();
    ASSERT_TRUE(waitUntil([this] { return !all<HistoryRow>().empty(); }));
    QCoreApplication::processEvents();
    EXPECT_THAT(sections(), ElementsAre(u"Location"_s, u"Now viewing"_s, u"Custom data"_s,
                                        u"Previous conversations"_s, u"Journey"_s, u"Device"_s));
    panel->findChild<QScrollArea*>()->setFocus(Qt::TabFocusReason);
    QStringList stops;
    for (int stop = 0; stop < 9; ++stop)
        stops.append(nameAfterTab());
    EXPECT_THAT(stops, ElementsAre(u"helen@example.de"_s, u"https://shop.example/a"_s, u"<b>club</b>"_s,
                                   u" HTTP://v2.example "_s, names<HistoryRow>().front(), u"p3"_s, u"p2"_s,
                                   u"p1"_s, u"de"_s));

    // Only what is an address is opened; other values are text to select.
    EXPECT_TRUE(only<SelectableLine>(u"<b>club</b>"_s));
    QTest::keyClick(only<LinkButton>(u" HTTP://v2.example "_s), Qt::Key_Enter);
    for (JourneyRow* row : all<JourneyRow>())
        row->click();
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Enter, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(only<LinkButton>(u" HTTP://v2.example "_s), &held);
    EXPECT_THAT(opened, ElementsAre(QUrl(u"http://v2.example"_s))) << "once, and no other scheme";
}

TEST_F(PanelFixture, LoadsTheEarlierConversationsOfTheAddressThatItShows)
{
    const auto first = service.hold("GET", historyPath);
    const auto second = service.hold("GET", historyPath);
    const auto third = service.hold("GET", historyPath);
    tell(conversation);
    showPanel();
    ASSERT_TRUE(waitUntil([&] { return first->isWaiting(); }));
    conversation.visitor.email = u"other@example.de"_s;
    tell(conversation);
    ASSERT_TRUE(waitUntil([&] { return second->isWaiting(); }));
    EXPECT_EQ(service.requests().back().query(), "email=other%40example.de");
    Conversation known = makeConversation(u"c0"_s);
    known.lastMessageAt.reset();
    known.createdAt = instantFromISO8601("2025-06-02T12:00:00Z");
    known.lastMessagePreview.reset();
    second->answer(answerOf(ConversationsResponse{{{known}}}));
    ASSERT_TRUE(waitUntil([this] { return only<HistoryRow>(u"Open, Jun 2, 2025"_s) != nullptr; }));
    first->answer(answerOf(ConversationsResponse{{{makeConversation(u"a"_s), makeConversation(u"b"_s)}}}));
    spinFor(50ms);
    EXPECT_EQ(all<HistoryRow>().size(), 1U) << "the late answer is about somebody else";
    conversation.visitor.email.clear();
    tell(conversation);
    EXPECT_FALSE(sections().contains(u"Previous conversations"_s));
    EXPECT_EQ(service.requests("GET", historyPath).size(), 2U);

    conversation.visitor.email = u"other@example.de"_s;
    tell(conversation);
    ASSERT_TRUE(waitUntil([&] { return third->isWaiting(); }));
    panel.reset();
    third->answer(answerOf(ConversationsResponse{{{known}}}));
    spinFor(30ms);
    EXPECT_FALSE(session->banner());
}

TEST_F(PanelFixture, FoldsALongJourneyAndKeepsFocusAndPlaceWhenTheVisitorGoesOn)
{
    scriptHistory({});
    auto& pages = meta.pages.emplace();
    const auto visit = [&](int count) {
        while (std::ssize(pages) < count)
            pages.push_back(makePage(QString::number(pages.size() + 1)));
        tellMeta();
    };
    visit(8);
    showPanel();
    EXPECT_EQ(journey(), QStringList({u"8"_s, u"7"_s, u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s, u"1"_s}));
    EXPECT_FALSE(only<LinkButton>(u"Show all 8"_s));
    visit(40);
    EXPECT_EQ(journey().size(), 8);
    auto* toggle = only<LinkButton>(u"Show all 40"_s);
    ASSERT_TRUE(toggle);
    toggle->click();
    QCoreApplication::processEvents();
    only<JourneyRow>(u"15"_s)->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(waitUntil([this] { return bar().maximum() > 250; }));
    bar().setValue(250);

    visit(41);
    EXPECT_EQ(bar().value(), 250);
    ASSERT_TRUE(QApplication::focusWidget());
    EXPECT_EQ(QApplication::focusWidget()->accessibleName(), u"15"_s);
    EXPECT_EQ(journey().first(), u"41"_s);
    EXPECT_EQ(toggle->accessibleName(), u"Show less"_s) << "it stays unfolded";
    bar().setValue(0);
    EXPECT_EQ(panel->findChildren<JourneyRow*>().front()->accessibleName(), u"41"_s) << "read out first";
    toggle->click();
    EXPECT_EQ(journey().size(), 8);
}

TEST_F(PanelFixture, KeepsRelativeTimesTrue)
{
    scriptHistory({});
    conversation.createdAt = clock - 59'980ms; // the next minute is about to begin
    meta.pages = {makePage(u"Page"_s, 2)};
    tellMeta();
    showPanel();
    EXPECT_THAT(lines(), Contains(u"Started now"_s));
    clock += 90s;
    EXPECT_TRUE(waitUntil([this] { return lines().contains(u"Started 2 minutes ago"_s); }));
    EXPECT_EQ(only<JourneyRow>(u"Page"_s)->accessibleDescription(), u"3 minutes ago"_s);
}

/// More than any window shows, far less than a long list holds.
constexpr std::size_t boundedCount = 250;

class LongLists : public PanelFixture {
protected:
    LongLists()
    {
        scriptHistory({});
        meta.pages.emplace();
        meta.data.emplace();
        for (int entry = 1; entry <= 10'000; ++entry) {
            meta.pages->push_back(makePage(u"page %1"_s.arg(entry)));
            meta.data->pairs.push_back({u"key %1"_s.arg(entry), u"value %1"_s.arg(entry)});
        }
        tellMeta();
        showPanel();
    }

    void scrollTo(int value)
    {
        bar().setValue(value);
        QCoreApplication::processEvents();
    }
};

TEST_F(LongLists, MakeRowsOnlyWhereTheyAreSeenAndShrinkWithTheirData)
{
    only<LinkButton>(u"Show all 10000"_s)->click();
    QCoreApplication::processEvents();
    EXPECT_GT(bar().maximum(), 10'000 * (20 + 22) - 1'000);
    for (const double part : {0.0, 0.3, 0.7, 0.5, 1.0}) {
        scrollTo(static_cast<int>(part * bar().maximum()));
        EXPECT_LT(panel->findChildren<JourneyRow*>().size(), boundedCount);
        EXPECT_LT(panel->findChildren<LabelledRow*>().size(), boundedCount);
        // Where rows belong in the middle of the window, one is.
        QWidget* middle = panel->childAt(panel->rect().center());
        while (middle && !qobject_cast<JourneyRow*>(middle) && !qobject_cast<LabelledRow*>(middle))
            middle = middle->parentWidget();
        EXPECT_TRUE(middle) << part;
    }
    EXPECT_EQ(journey().last(), u"page 1"_s);
    EXPECT_EQ(only<JourneyRow>(u"page 1"_s)->accessibleDescription(), u"1 hour ago, 10000 of 10000"_s);
    only<JourneyRow>(u"page 3"_s)->click();
    EXPECT_THAT(opened, testing::ElementsAre(QUrl(u"https://shop.example/page 3"_s)));

    // They shrink with their data; the focus leaves a column that goes, whatever that makes the panel scroll
    // to.
    all<JourneyRow>().back()->setFocus();
    meta.pages->resize(9'000);
    meta.data->pairs.resize(5'000);
    tellMeta();
    scrollTo(5'000 * 10);
    all<SelectableLine>().back()->setFocus(Qt::TabFocusReason);
    meta.pages->resize(3);
    meta.data->pairs.clear();
    tellMeta();
    EXPECT_EQ(journey(), QStringList({u"page 3"_s, u"page 2"_s, u"page 1"_s}));
    conversation.visitor.meta.reset();
    tell(conversation);
    EXPECT_EQ(sections(), QStringList{u"Location"_s});
}

TEST_F(LongLists, LetTheTabKeyFindTheNextRow)
{
    only<SelectableLine>(u"value 1"_s)->setFocus(Qt::TabFocusReason);
    for (int row = 2; row <= 150; ++row)
        ASSERT_EQ(nameAfterTab(), u"value %1"_s.arg(row));
    // The row with the focus outlives a journey to the other end.
    scrollTo(bar().maximum());
    EXPECT_EQ(nameAfterTab(), u"value 151"_s);
    EXPECT_LT(panel->findChildren<LabelledRow*>().size(), boundedCount);
}

} // namespace
} // namespace orvia::test
