#include "DetailFixture.h"

#include "Views/ConversationDetailView/ConversationActions.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationHeader.h"
#include "Views/ConversationDetailView/TranscriptRules.h"
#include "Views/Widgets/Button.h"

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class ActionsTest : public DetailFixture {
protected:
    /// The menu as it reads: sections in brackets, "-" for a line, items as they stand in the menu.
    QStringList menuTexts()
    {
        view->actionsMenu().populate();
        QStringList texts;
        for (const QAction* action : view->actionsMenu().actions()) {
            if (action->isSeparator())
                texts.append(action->text().isEmpty() ? u"-"_s : u"["_s + action->text() + u"]"_s);
            else
                texts.append(action->text());
        }
        return texts;
    }

    void choose(const QString& text)
    {
        view->actionsMenu().populate();
        for (QAction* action : view->actionsMenu().actions()) {
            if (action->text() == text)
                return action->trigger();
        }
        FAIL() << "no item " << text.toStdString();
    }
};

TEST_F(ActionsTest, offersTheOppositeOfWhatIs)
{
    conversation.assigneeId = u"a1"_s;
    conversation.snoozedUntil = clock + 1h;
    conversation.status = ConversationStatus::closed;
    self.mutedConversationIds = QStringList{u"c1"_s};
    signInWith(conversation, {});
    open();
    EXPECT_THAT(menuTexts(),
                ElementsAre(u"[Assign]"_s, u"Unassign"_s, u"Assign to Dana Whitfield"_s, u"-"_s,
                            u"[Snooze]"_s, u"Snooze Until Tomorrow Morning"_s, u"Snooze for 3 Days"_s,
                            u"Unsnooze"_s, u"-"_s, u"Unmute"_s, u"Reopen Conversation"_s));
    clock += 1h;
    EXPECT_THAT(menuTexts(), Not(Contains(u"Unsnooze"_s)));
}

TEST_F(ActionsTest, sendsWhatWasChosen)
{
    const QTimeZone zone = QTimeZone::systemTimeZone();
    const auto until = [](Instant instant) {
        return "{\"until\":\"" + QByteArray::fromStdString(iso8601FromInstant(instant)) + "\"}";
    };
    const struct {
        QString item;
        QByteArray path;
        QByteArray body;
    } choices[] = {
        {u"Assign to Me"_s, "/assign", R"({"agentId":"a1"})"},
        {u"Assign to Mara Ellison"_s, "/assign", R"({"agentId":"a1"})"},
        {u"Unassign"_s, "/assign", R"({"agentId":null})"},
        {u"Snooze Until Tomorrow Morning"_s, "/snooze", until(TranscriptRules::tomorrowMorning(clock, zone))},
        {u"Snooze for 3 Days"_s, "/snooze", until(TranscriptRules::threeDaysOut(clock, zone))},
        {u"Unsnooze"_s, "/snooze", R"({"until":null})"},
        {u"Mute Notifications"_s, "/mute", R"({"muted":true})"},
        {u"Close Conversation"_s, "/close", ""},
    };
    conversation.assigneeId = u"a2"_s;
    conversation.snoozedUntil = clock + 1h;
    signInWith(conversation, {});
    open();
    for (const auto& choice : choices) {
        SCOPED_TRACE(choice.item.toStdString());
        const QByteArray path = "/v1/agent/conversations/c1" + choice.path;
        const std::size_t before = service.requests("POST", path).size();
        service.answer("POST", path, answerOf(ConversationResponse{conversation}));
        choose(choice.item);
        ASSERT_TRUE(waitUntil([&] { return service.requests("POST", path).size() > before; }));
        EXPECT_EQ(bodyOf(service.requests("POST", path), before), choice.body);
        settle();
    }
}

TEST_F(ActionsTest, opensUnderItsButtonAndTakesTheKeyboard)
{
    signInWith(conversation, {});
    open();
    IconButton* button = view->findChild<ConversationTitleBand*>()->moreActionsButton();
    button->setFocus(Qt::TabFocusReason);
    button->click();
    settle();
    EXPECT_TRUE(view->actionsMenu().isVisible());
    EXPECT_TRUE(button->isDown());
    ASSERT_TRUE(view->actionsMenu().activeAction()) << "the arrow keys go on from here";
    EXPECT_EQ(view->actionsMenu().activeAction()->text(), u"Assign to Me"_s);
    view->actionsMenu().close();
    settle();
    EXPECT_FALSE(button->isDown());
}

TEST_F(ActionsTest, handsAPickedFileToTheComposer)
{
    signInWith(conversation, {});
    open();
    Q_EMIT view->composer().attachRequested();
    ASSERT_TRUE(picked);
    view.reset();
    picked(QUrl(u"file:///tmp/late.txt"_s));
}

} // namespace
} // namespace orvia::test
