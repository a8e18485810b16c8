#include "Views/ConversationListView/ConversationListModel.h"
#include "InboxFixture.h"
#include "Views/ConversationListView/SnoozeExpiries.h"

#include <QAbstractItemModelTester>

#include <random>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

/// What a model told its views.
struct Recorder {
    explicit Recorder(ConversationListModel& model)
    {
        QObject::connect(&model, &QAbstractItemModel::rowsInserted, &scope, [this] { ++inserts; });
        QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &scope, [this] { ++removals; });
        QObject::connect(&model, &QAbstractItemModel::rowsMoved, &scope, [this] { ++moves; });
        QObject::connect(&model, &QAbstractItemModel::modelReset, &scope, [this] { ++resets; });
        QObject::connect(&model, &QAbstractItemModel::dataChanged, &scope, [this] { ++changes; });
    }

    int inserts = 0;
    int removals = 0;
    int moves = 0;
    int resets = 0;
    int changes = 0;
    QObject scope;
};

/// Inserts, removals, moves, changes, resets.
auto told(const Recorder& recorder)
{
    return std::tuple(recorder.inserts, recorder.removals, recorder.moves, recorder.changes, recorder.resets);
}

QStringList idsOf(const ConversationListModel& model)
{
    QStringList ids;
    for (int row = 0; row < model.rowCount(); ++row)
        ids.append(model.index(row).data(ConversationListModel::conversationIdRole).toString());
    return ids;
}

} // namespace

class ConversationListModelTest : public InboxFixture {
protected:
    template <class Item>
    const Item& pick(const std::vector<Item>& items)
    {
        return items[std::uniform_int_distribution<std::size_t>(0, items.size() - 1)(random)];
    }

    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); }

    /// One of the things that happen to an inbox, at random.
    void happen()
    {
        const QString id = u"c"_s + QString::number(number(0, 59));
        switch (number(0, 9)) {
        case 0:
        case 1:
        case 2:
            deliverMessage(id, minutesAgo(number(0, 30)));
            break;
        case 3:
            deliverTyping(id, u"typing"_s);
            break;
        case 4:
            deliverViewers(id, {u"Dana"_s});
            break;
        default:
            deliver(randomConversation(id));
        }
    }

    Conversation randomConversation(const QString& id)
    {
        Conversation conversation = makeConversation(id, number(0, 20));
        conversation.status =
            pick<ConversationStatus>({ConversationStatus::open, ConversationStatus::closed});
        conversation.productId = pick<QString>({u"p1"_s, u"p2"_s});
        conversation.assigneeId = pick<std::optional<QString>>({std::nullopt, u"a1"_s, u"a2"_s});
        conversation.snoozedUntil =
            pick<std::optional<Instant>>({std::nullopt, minutesAgo(5), minutesAgo(-5)});
        if (number(0, 9) == 0)
            conversation.lastMessageAt.reset();
        return conversation;
    }

    bool changeFilter()
    {
        switch (number(0, 30)) {
        case 0:
            session->setStatusFilter(
                pick<ConversationStatus>({ConversationStatus::open, ConversationStatus::closed}));
            return true;
        case 1:
            session->setProductFilter(pick<std::optional<QString>>({std::nullopt, u"p1"_s}));
            return true;
        case 2:
            session->setQueue(pick<InboxQueue>({InboxQueue::all, InboxQueue::unassigned, InboxQueue::mine}));
            return true;
        case 3:
            session->setShowSnoozed(!session->showSnoozed());
            return true;
        default:
            return false;
        }
    }

    std::mt19937 random{20240601};
};

TEST_F(ConversationListModelTest, EqualsTheSessionsListAfterAnySequenceOfEvents)
{
    sessionWithMany(40);
    ConversationListModel model(*session);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    Recorder recorder(model);
    int filterChanges = 0;
    for (int turn = 0; turn < 1500; ++turn) {
        const bool isOtherList = changeFilter();
        filterChanges += isOtherList ? 1 : 0;
        // A view remembers rows by persistent index; each must go on to stand for its conversation.
        std::vector<std::pair<QPersistentModelIndex, QString>> remembered;
        for (int row = 0; !isOtherList && row < model.rowCount(); ++row)
            remembered.emplace_back(model.index(row), idsOf(model).at(row));
        for (int events = number(1, 6); events > 0; --events)
            happen();
        model.applyChanges();
        ASSERT_EQ(idsOf(model), listedIds(*session)) << "turn " << turn;
        for (const auto& [index, id] : remembered) {
            if (index.isValid()) {
                ASSERT_EQ(index.data(ConversationListModel::conversationIdRole).toString(), id);
            }
            ASSERT_EQ(index.row(), model.rowOf(id));
        }
    }
    EXPECT_LE(recorder.resets, filterChanges);
    EXPECT_GT(recorder.moves, 100);
    EXPECT_GT(recorder.inserts, 100);
    EXPECT_GT(recorder.removals, 100);
}

TEST_F(ConversationListModelTest, TellsOfEachEventNoMoreThanItChanges)
{
    sessionWithMany(5);
    ConversationListModel model(*session);
    const auto toldBy = [&](const std::function<void()>& action) {
        Recorder recorder(model);
        action();
        model.applyChanges();
        EXPECT_EQ(idsOf(model), listedIds(*session));
        return told(recorder);
    };
    Conversation changed = known(u"c2"_s);

    EXPECT_EQ(toldBy([&] { deliverMessage(u"c3"_s, minutesAgo(0)); }), std::tuple(0, 0, 1, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverMessage(u"c3"_s, minutesAgo(-1)); }), std::tuple(0, 0, 0, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverTyping(u"c1"_s, u"Hel"_s); }), std::tuple(0, 0, 0, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverTyping(u"c1"_s, u"Hel"_s); }), std::tuple(0, 0, 0, 0, 0));
    EXPECT_EQ(toldBy([&] { deliverViewers(u"c1"_s, {u"Dana"_s}); }), std::tuple(0, 0, 0, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverViewers(u"elsewhere"_s, {u"Dana"_s}); }), std::tuple(0, 0, 0, 0, 0));

    changed.status = ConversationStatus::closed;
    EXPECT_EQ(toldBy([&] { deliver(changed); }), std::tuple(0, 1, 0, 0, 0));
    EXPECT_EQ(toldBy([&] { deliverMessage(u"c2"_s, minutesAgo(0)); }), std::tuple(0, 0, 0, 0, 0));
    EXPECT_EQ(model.rowOf(u"c2"_s), -1);
    changed.status = ConversationStatus::open;
    EXPECT_EQ(toldBy([&] { deliver(changed); }), std::tuple(1, 0, 0, 0, 0));
    EXPECT_EQ(toldBy([&] { deliver(makeConversation(u"new"_s, 0)); }), std::tuple(1, 0, 0, 0, 0));
    EXPECT_EQ(toldBy([&] { session->setStatusFilter(ConversationStatus::closed); }),
              std::tuple(0, 0, 0, 0, 1));
}

TEST_F(ConversationListModelTest, AppliesABurstOnceWithTheNextTurnOfTheEventLoop)
{
    sessionWithMany(1000);
    ConversationListModel model(*session);
    Recorder recorder(model);
    for (int repeat = 0; repeat < 500; ++repeat)
        deliverMessage(u"c7"_s, minutesAgo(0) + std::chrono::milliseconds(repeat));
    EXPECT_EQ(told(recorder), std::tuple(0, 0, 0, 0, 0));
    ASSERT_TRUE(waitUntil([&] { return !model.hasPendingChanges(); }));
    EXPECT_EQ(told(recorder), std::tuple(0, 0, 1, 1, 0));

    for (int row = 0; row < 1000; ++row)
        deliverTyping(u"c"_s + QString::number(row), u"…"_s);
    ASSERT_TRUE(waitUntil([&] { return !model.hasPendingChanges(); }));
    EXPECT_EQ(told(recorder), std::tuple(0, 0, 1, 1, 1)) << "a burst over the whole inbox is one reset";
}

TEST_F(ConversationListModelTest, FollowsAReloadAndTheSignOutAtOnce)
{
    sessionWith({makeConversation(u"old"_s)});
    ConversationListModel model(*session);
    scriptInbox({makeConversation(u"x"_s, 3), makeConversation(u"y"_s, 2)});
    runTask(session->refreshConversations());
    EXPECT_THAT(idsOf(model), ElementsAre(u"y"_s, u"x"_s));
    deliverMessage(u"x"_s, minutesAgo(0));
    session->logout();
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.hasPendingChanges());
}

TEST_F(ConversationListModelTest, AsksWhoTheAgentIsOnlyForTheirOwnQueue)
{
    Conversation own = makeConversation(u"own"_s);
    own.assigneeId = self.id;
    sessionWith({own, makeConversation(u"other"_s)});
    service.always("POST", "/v1/agent/conversations/own/mute", ScriptedAnswer::json("{}"));
    session->setQueue(InboxQueue::mine);
    ConversationListModel model(*session);
    EXPECT_THAT(idsOf(model), ElementsAre(u"own"_s));
    Recorder recorder(model);
    runTask(session->setMuted(u"own"_s, true));
    ASSERT_TRUE(session->isMuted(u"own"_s));
    model.applyChanges();
    EXPECT_EQ(told(recorder), std::tuple(0, 0, 0, 0, 0)) << "the agent is still the same one";
}

TEST_F(ConversationListModelTest, BringsARowBackWhenItsSnoozeEnds)
{
    Conversation soon = makeConversation(u"soon"_s);
    Conversation later = makeConversation(u"later"_s);
    soon.snoozedUntil = minutesAgo(-1);
    later.snoozedUntil = minutesAgo(-60);
    sessionWith({soon, later, makeConversation(u"awake"_s)});
    ConversationListModel model(*session);
    EXPECT_THAT(idsOf(model), ElementsAre(u"awake"_s));

    soon.snoozedUntil = currentInstant() + 40ms;
    deliver(soon);
    model.applyChanges();
    Recorder recorder(model);
    EXPECT_EQ(model.rowCount(), 1);
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == 2; }));
    EXPECT_EQ(told(recorder), std::tuple(1, 0, 0, 0, 0));
    EXPECT_EQ(idsOf(model), listedIds(*session));

    // While snoozed ones are listed anyway, the row's mark has to go.
    session->setShowSnoozed(true);
    later.snoozedUntil = currentInstant() + 40ms;
    deliver(later);
    model.applyChanges();
    Recorder marks(model);
    ASSERT_TRUE(waitUntil([&] { return marks.changes == 1; }));
    EXPECT_EQ(told(marks), std::tuple(0, 0, 0, 1, 0));
}

TEST_F(ConversationListModelTest, FindsVisitorsByTheBeginningOfTheirNames)
{
    sessionWithMany(3);
    const QStringList names{u"Marcus"_s, u"marie"_s, u"Łukasz"_s};
    for (int row = 0; row < 3; ++row) {
        Conversation renamed = known(u"c"_s + QString::number(row));
        renamed.visitor.name = names[row];
        deliver(renamed);
    }
    ConversationListModel model(*session);
    const auto found = [&](int start, const QString& text) {
        const auto matches = model.match(model.index(start), Qt::DisplayRole, text, 1,
                                         Qt::MatchFlags(Qt::MatchStartsWith | Qt::MatchWrap));
        return matches.isEmpty() ? -1 : matches.first().row();
    };
    EXPECT_EQ(found(0, u"mar"_s), 0);
    EXPECT_EQ(found(1, u"Mar"_s), 1);
    EXPECT_EQ(found(2, u"marc"_s), 0);
    EXPECT_EQ(found(0, u"łu"_s), 2);
    EXPECT_EQ(found(0, u"arcus"_s), -1);
}

TEST(SnoozeExpiriesTest, AnswersTheEarliestEndAndForgetsWhatChanged)
{
    const Instant now{1000s};
    SnoozeExpiries expiries;
    EXPECT_EQ(expiries.next(), std::nullopt);
    expiries.set(1, now + 30s, now);
    expiries.set(2, now + 10s, now);
    expiries.set(3, now, now);
    EXPECT_EQ(expiries.next(), now + 10s);
    expiries.set(2, now + 40s, now);
    EXPECT_EQ(expiries.next(), now + 30s);
    EXPECT_THAT(expiries.takeExpired(now + 29s), ElementsAre());
    EXPECT_THAT(expiries.takeExpired(now + 40s), ElementsAre(1, 2));
    EXPECT_EQ(expiries.next(), std::nullopt);
    expiries.set(1, now + 50s, now);
    expiries.set(1, std::nullopt, now);
    EXPECT_EQ(expiries.next(), std::nullopt);
}

} // namespace orvia::test
