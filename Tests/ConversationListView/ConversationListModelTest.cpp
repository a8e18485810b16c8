#include "InboxFixture.h"

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
        QObject::connect(&model, &QAbstractItemModel::dataChanged, &scope, [this] { ++changes; });
        QObject::connect(&model, &QAbstractItemModel::modelReset, &scope, [this] { ++resets; });
    }

    auto told() const { return std::tuple(inserts, removals, moves, changes, resets); }

    int inserts = 0;
    int removals = 0;
    int moves = 0;
    int changes = 0;
    int resets = 0;
    QObject scope;
};

} // namespace

class ConversationListModelTest : public InboxFixture {
protected:
    static QStringList idsOf(const ConversationListModel& model)
    {
        QStringList ids;
        for (int row = 0; row < model.rowCount(); ++row)
            ids.append(idAt(model.index(row)));
        return ids;
    }

    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); }
    ConversationStatus status()
    {
        return number(0, 1) ? ConversationStatus::open : ConversationStatus::closed;
    }

    /// One of the things that happen to an inbox, at random.
    void happen()
    {
        const QString id = u"c"_s + QString::number(number(0, 59));
        if (number(0, 2) == 0) {
            deliverMessage(id, minutesAgo(number(0, 30)));
            return;
        }
        Conversation conversation = makeConversation(id, number(0, 20));
        conversation.status = status();
        conversation.productId = u"p"_s + QString::number(number(1, 2));
        if (const int assignee = number(0, 2))
            conversation.assigneeId = u"a"_s + QString::number(assignee);
        if (number(0, 1))
            conversation.snoozedUntil = minutesAgo(number(0, 1) ? 5 : -5);
        if (number(0, 9) == 0)
            conversation.lastMessageAt.reset();
        deliver(conversation);
    }

    bool changeFilter()
    {
        const int filter = number(0, 30);
        if (filter == 0)
            session->setStatusFilter(status());
        else if (filter == 1)
            session->setProductFilter(session->productFilter() ? std::nullopt : std::optional(u"p1"_s));
        else if (filter == 2)
            session->setQueue(static_cast<InboxQueue>(number(0, 2)));
        else if (filter == 3)
            session->setShowSnoozed(!session->showSnoozed());
        return filter <= 3;
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
            remembered.emplace_back(model.index(row), idAt(model.index(row)));
        for (int events = number(1, 6); events > 0; --events)
            happen();
        model.applyChanges();
        ASSERT_EQ(idsOf(model), listedIds(*session)) << "turn " << turn;
        for (const auto& [index, id] : remembered) {
            ASSERT_TRUE(!index.isValid() || idAt(index) == id);
            ASSERT_EQ(index.row(), model.rowOf(id));
        }
    }
    EXPECT_LE(recorder.resets, filterChanges);
    EXPECT_GT(std::min({recorder.moves, recorder.inserts, recorder.removals}), 100);
}

TEST_F(ConversationListModelTest, TellsOfEachEventNoMoreThanItChanges)
{
    sessionWithMany(5);
    ConversationListModel model(*session);
    const auto toldBy = [&](const std::function<void()>& action) {
        Recorder recorder(model);
        action();
        model.applyChanges();
        return recorder.told();
    };
    EXPECT_EQ(toldBy([&] { deliverMessage(u"c3"_s, minutesAgo(0)); }), std::tuple(0, 0, 1, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverMessage(u"c3"_s, minutesAgo(-1)); }), std::tuple(0, 0, 0, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverTyping(u"c1"_s, u"Hel"_s); }), std::tuple(0, 0, 0, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverTyping(u"c1"_s, u"Hel"_s); }), std::tuple(0, 0, 0, 0, 0));
    EXPECT_EQ(toldBy([&] { deliverViewers(u"c1"_s, {u"Dana"_s}); }), std::tuple(0, 0, 0, 1, 0));
    EXPECT_EQ(toldBy([&] { deliverViewers(u"elsewhere"_s, {u"Dana"_s}); }), std::tuple(0, 0, 0, 0, 0));

    // A burst waits for the next turn of the event loop.
    Recorder burst(model);
    for (int repeat = 0; repeat < 500; ++repeat)
        deliverMessage(u"c4"_s, minutesAgo(-2) + std::chrono::milliseconds(repeat));
    EXPECT_EQ(burst.told(), std::tuple(0, 0, 0, 0, 0));
    ASSERT_TRUE(waitUntil([&] { return !model.hasPendingChanges(); }));
    EXPECT_EQ(burst.told(), std::tuple(0, 0, 1, 1, 0));
    const auto fillTheInbox = [&] {
        for (int row = 0; row < 1000; ++row)
            deliver(makeConversation(u"n"_s + QString::number(row)));
    };
    EXPECT_EQ(toldBy(fillTheInbox), std::tuple(0, 0, 0, 0, 1)) << "a burst over the whole inbox is one reset";
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
    EXPECT_EQ(recorder.told(), std::tuple(1, 0, 0, 0, 0));
    EXPECT_EQ(idsOf(model), listedIds(*session));

    // While snoozed ones are listed anyway, the row's mark has to go.
    session->setShowSnoozed(true);
    later.snoozedUntil = currentInstant() + 40ms;
    deliver(later);
    model.applyChanges();
    Recorder marks(model);
    ASSERT_TRUE(waitUntil([&] { return marks.changes == 1; }));
}

} // namespace orvia::test
