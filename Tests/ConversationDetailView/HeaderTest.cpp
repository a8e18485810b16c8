#include "DetailFixture.h"

#include "Views/ConversationDetailView/ConversationActions.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationHeader.h"

#include <QLabel>

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class HeaderTest : public DetailFixture {
protected:
    /// The texts that can be seen in a part of the column.
    template <class Area>
    QStringList texts()
    {
        QStringList found;
        for (const QLabel* label : view->findChild<Area*>()->template findChildren<QLabel*>()) {
            if (label->isVisible())
                found.append(label->text());
        }
        return found;
    }
};

TEST_F(HeaderTest, dropsTheSnoozeWhenItsTimeIsOver)
{
    signInWith({});
    open();
    conversation.snoozedUntil = clock + 40ms;
    deliver(conversation);
    settle();
    EXPECT_EQ(texts<ConversationHeaderBar>().size(), 2);
    clock += 41ms;
    EXPECT_TRUE(waitUntil([&] { return texts<ConversationHeaderBar>().size() == 1; }));
    view->actionsMenu().populate();
    for (const QAction* action : view->actionsMenu().actions())
        EXPECT_NE(action->text(), u"Unsnooze"_s);
}

TEST_F(HeaderTest, showsAnUnknownConversationWithoutHeaderAndMenu)
{
    scriptInbox({});
    signIn();
    service.always("GET", threadPath, refusal(404, "Not found"));
    view = std::make_unique<ConversationDetailView>(*session, u"c1"_s);
    view->show();
    EXPECT_TRUE(waitUntil([&] { return session->banner().has_value(); }));
    receive(makeMessage(u"m1"_s, u"c1"_s));
    EXPECT_THAT(texts<ConversationTitleBand>(), ElementsAre(u"Conversation"_s));
    EXPECT_FALSE(view->findChild<ConversationHeaderBar*>()->isVisible());
    EXPECT_THAT(spokenRows(), ElementsAre(u"Hello"_s));
    EXPECT_THAT(service.requests("GET", "/v1/agent/canned"), IsEmpty());
}

TEST_F(HeaderTest, loadsItsThreadOnceTheServiceIsBack)
{
    scriptInbox({conversation});
    signIn();
    service.always("GET", threadPath, refusal(503, "Unavailable"));
    service.always("GET", "/v1/agent/canned", answerOf(CannedResponsesResponse{}));
    view = std::make_unique<ConversationDetailView>(*session, conversation.id);
    view->show();
    EXPECT_TRUE(waitUntil([&] { return session->banner().has_value(); }));
    receive(makeMessage(u"m2"_s, u"c1"_s));

    const std::vector<Message> messages{makeMessage(u"m1"_s, u"c1"_s), makeMessage(u"m2"_s, u"c1"_s)};
    service.always("GET", threadPath, answerOf(ConversationDetailResponse{conversation, {messages}}));
    const auto refresh = [&] {
        const std::size_t before = service.requests("GET", threadPath).size();
        EXPECT_TRUE(runTask(session->refreshConversations()).value);
        settle();
        return service.requests("GET", threadPath).size() - before;
    };
    refresh();
    EXPECT_TRUE(waitUntil([&] { return spokenRows().size() == 2; }));
    EXPECT_EQ(refresh(), 0u) << "it is there";
}

TEST_F(HeaderTest, nothingThatItStartedNeedsTheColumnLater)
{
    signInWith({});
    open();
    Q_EMIT view->composer().attachRequested();
    ASSERT_TRUE(picked);
    view.reset();
    picked(QUrl(u"file:///tmp/late.txt"_s));

    const auto held = service.hold("GET", threadPath);
    view = std::make_unique<ConversationDetailView>(*session, conversation.id);
    view->show();
    EXPECT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    view.reset();
    held->answer(answerOf(ConversationDetailResponse{conversation, {{makeMessage(u"m1"_s, u"c1"_s)}}}));
    EXPECT_TRUE(waitUntil([&] { return session->messages().contains(u"c1"_s, u"m1"_s); }));
    settle();
    EXPECT_EQ(service.requests("GET", "/v1/agent/canned").size(), 1U);
}

} // namespace
} // namespace orvia::test
