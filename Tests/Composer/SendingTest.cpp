#include "ComposerFixture.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

class SendingTest : public ComposerFixture {
protected:
    bool hasSent()
    {
        return waitUntil([this] { return !composer->messageComposer()->isSending(); });
    }
    /// Presses Return and waits until the message has been accepted.
    void sendByReturn(const QString& id = u"m1"_s)
    {
        service.answer("POST", messagesPath,
                       answerOf(MessageResponse{makeMessage(id, u"c1"_s, MessageSender::agent)}));
        press(Qt::Key_Return);
        ASSERT_TRUE(hasSent());
    }
    /// Member @p key of the JSON body of message request @p index; undefined without it.
    QJsonValue sent(const QString& key, std::size_t index = 0)
    {
        return QJsonDocument::fromJson(bodyOf(service.requests("POST", messagesPath), index))[key];
    }
};

TEST_F(SendingTest, SendsOneDraftAtATimeAndIsReadyForTheNextWhateverTheAnswer)
{
    open();
    const auto held = service.hold("POST", messagesPath);
    type(u"  Hello"_s);
    press(Qt::Key_Return, Qt::ShiftModifier);
    press(Qt::Key_Return);
    EXPECT_EQ(text(), QString()) << "cleared at once";
    EXPECT_TRUE(composer->messageComposer()->isSending());
    type(u"next"_s);
    EXPECT_FALSE(button(u"sendButton"_s).isEnabled());
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    EXPECT_EQ(sent(u"body"_s), u"Hello"_s);
    EXPECT_TRUE(sent(u"mentions"_s).isUndefined());
    held->answer(answerOf(MessageResponse{makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent, u"Hello"_s)}));
    ASSERT_TRUE(hasSent());
    EXPECT_EQ(session->messages().thread(u"c1"_s).size(), 1U);
    EXPECT_EQ(text(), u"next"_s) << "what was typed meanwhile waits";
    EXPECT_EQ(service.requests("POST", messagesPath).size(), 1U);
    EXPECT_TRUE(button(u"sendButton"_s).isEnabled());
    service.answer("POST", messagesPath, refusal(401, "Not yours"));
    click(button(u"sendButton"_s));
    EXPECT_TRUE(field().hasFocus());
    ASSERT_TRUE(hasSent());
    EXPECT_EQ(sent(u"body"_s, 1), u"next"_s);
    EXPECT_TRUE(session->token()) << "only the identity request signs out";
    EXPECT_EQ(text(), QString());
    field().undo();
    EXPECT_EQ(text(), QString()) << "what was sent does not come back";
}

TEST_F(SendingTest, MentionsInANoteWhoWasPickedForItAndIsStillNamed)
{
    open();
    click(button(u"noteModeButton"_s));
    for (const QString& draft : {u"@joa"_s, u"@ann"_s, u"Hi @ann"_s}) {
        field().setText(draft);
        press(Qt::Key_Return);
    }
    ASSERT_EQ(text(), u"Hi @Anna Berg "_s);
    sendByReturn();
    EXPECT_EQ(sent(u"body"_s), u"Hi @Anna Berg"_s);
    EXPECT_EQ(sent(u"note"_s), true);
    EXPECT_EQ(sent(u"mentions"_s), QJsonArray{u"a2"_s});

    type(u"@Anna Berg again"_s);
    sendByReturn(u"m2"_s);
    EXPECT_TRUE(sent(u"mentions"_s, 1).isUndefined()) << "picked agents do not outlive their note";
}

TEST_F(SendingTest, TellsWhatIsTypedButNeverANote)
{
    open();
    type(u"a"_s);
    click(button(u"noteModeButton"_s));
    clock += 2s;
    type(u"b"_s);
    click(button(u"noteModeButton"_s));
    sendByReturn();
    const auto previews = [this] {
        QStringList found;
        for (const QString& frame : service.channel()->texts().filter(u"\"typing\""_s))
            found.append(QJsonDocument::fromJson(frame.toUtf8())[u"preview"_s].toString());
        return found;
    };
    ASSERT_TRUE(waitUntil([&] { return previews().size() == 4; }));
    EXPECT_THAT(previews(), ElementsAre(u"a"_s, QString(), u"ab"_s, QString()));

    // Teammates need not look at a draft that went with its composer.
    type(u"c"_s);
    delete composer;
    ASSERT_TRUE(waitUntil([&] { return previews().size() == 6; }));
    EXPECT_THAT(previews().last(2), ElementsAre(u"c"_s, QString()));
}

TEST_F(SendingTest, TabWalksInReadingOrderAndClicksLeaveTheCursorInTheDraft)
{
    open();
    field().setText(u"Hello"_s);
    elsewhere->setFocus();
    for (const QString& next :
         {u"attachButton"_s, u"noteModeButton"_s, u"composerField"_s, u"sendButton"_s}) {
        press(Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget()->objectName(), next);
    }
    press(Qt::Key_Space);
    EXPECT_TRUE(field().hasFocus()) << "the button is disabled now";
    click(button(u"noteModeButton"_s));
    EXPECT_TRUE(field().hasFocus());
    button(u"noteModeButton"_s).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_TRUE(button(u"noteModeButton"_s).hasFocus());
    QTest::mouseClick(field().parentWidget(), Qt::LeftButton, {}, QPoint(4, 4));
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(field().parentWidget()->focusPolicy(), Qt::NoFocus);
}

} // namespace

} // namespace orvia::test
