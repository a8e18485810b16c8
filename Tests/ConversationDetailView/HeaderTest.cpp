#include "DetailFixture.h"

#include "Views/ConversationDetailView/ConversationHeader.h"
#include "Views/Widgets/Label.h"

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
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

    void change(const std::function<void(Conversation&)>& edit)
    {
        Conversation changed = *session->conversations().find(conversation.id);
        edit(changed);
        deliver(changed);
        settle();
    }

    void showViewers(const QStringList& names)
    {
        deliverViewers(conversation.id, names);
        settle();
    }
};

TEST_F(HeaderTest, namesTheVisitorInTheColumnAndTheWindow)
{
    signInWith(conversation, {});
    open();
    EXPECT_THAT(texts<ConversationTitleBand>(), ElementsAre(u"Helen Brandt"_s, u"helen.brandt@example.de"_s));
    EXPECT_TRUE(view->window()->windowTitle().startsWith(u"Helen Brandt"_s));
    change([](Conversation& c) { c.visitor.name = u"<b>Bold</b> & Co"_s; });
    EXPECT_THAT(texts<ConversationTitleBand>(), Contains(u"<b>Bold</b> & Co"_s));
    for (const QLabel* label : view->findChildren<QLabel*>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(HeaderTest, showsAnUnknownConversationWithoutHeaderAndMenu)
{
    scriptInbox({});
    signIn();
    service.always("GET", "/v1/agent/conversations/c1", refusal(404, "Not found"));
    view = std::make_unique<ConversationDetailView>(*session, u"c1"_s);
    view->show();
    EXPECT_TRUE(waitUntil([&] { return session->banner().has_value(); }));
    receive({makeMessage(u"m1"_s, u"c1"_s)});
    EXPECT_THAT(texts<ConversationTitleBand>(), ElementsAre(u"Conversation"_s));
    EXPECT_FALSE(view->findChild<ConversationHeaderBar*>()->isVisible());
    EXPECT_THAT(spokenRows(), ElementsAre(u"Hello"_s));
    EXPECT_THAT(service.requests("GET", "/v1/agent/canned"), IsEmpty());
}

TEST_F(HeaderTest, dropsTheSnoozeWhenItsTimeIsOver)
{
    signInWith(conversation, {});
    open();
    change([this](Conversation& c) { c.snoozedUntil = clock + 40ms; });
    EXPECT_EQ(texts<ConversationHeaderBar>().size(), 2);
    clock += 41ms;
    EXPECT_TRUE(waitUntil([&] { return texts<ConversationHeaderBar>().size() == 1; }));
}

TEST_F(HeaderTest, tellsWhoElseIsLooking)
{
    signInWith(conversation, {});
    open();
    EXPECT_FALSE(view->findChild<ConversationPresenceLine*>()->isVisible());
    showViewers({u"Ann"_s, QString(), u"Bob"_s, u"Cy"_s});
    EXPECT_THAT(texts<ConversationPresenceLine>(), ElementsAre(u"Ann and 2 others are also viewing"_s));
    showViewers({QString()});
    EXPECT_FALSE(view->findChild<ConversationPresenceLine*>()->isVisible());
}

TEST_F(HeaderTest, outlivesNothingThatItStarted)
{
    signInWith(conversation, {});
    const auto held = service.hold("GET", "/v1/agent/conversations/c1");
    view = std::make_unique<ConversationDetailView>(*session, conversation.id);
    view->show();
    EXPECT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    view.reset();
    held->answer(answerOf(ConversationDetailResponse{conversation, {{makeMessage(u"m1"_s, u"c1"_s)}}}));
    EXPECT_TRUE(waitUntil([&] { return session->messages().contains(u"c1"_s, u"m1"_s); }));
    settle();
    EXPECT_THAT(service.requests("GET", "/v1/agent/canned"), IsEmpty());
}

} // namespace
} // namespace orvia::test
