#include "ComposerFixture.h"

#include <QJsonArray>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

using SendingTest = ComposerFixture;

TEST_F(SendingTest, SendsTheDraftAndKeepsReadyForTheNext)
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
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_EQ(session->messages().thread(u"c1"_s).size(), 1U);
    EXPECT_EQ(text(), u"next"_s) << "what was typed meanwhile waits";
    EXPECT_EQ(service.requests("POST", messagesPath).size(), 1U);
    EXPECT_TRUE(button(u"sendButton"_s).isEnabled());
    acceptMessage(u"m2"_s);
    click(button(u"sendButton"_s));
    EXPECT_TRUE(field().hasFocus());
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_EQ(sent(u"body"_s, 1), u"next"_s);
}

TEST_F(SendingTest, ADraftOfBlanksCannotBeSent)
{
    open();
    for (const QString& blank : {QString(), u"   "_s, u" \n\n"_s, u"\t\u00a0\u2003"_s}) {
        field().setText(blank);
        EXPECT_FALSE(button(u"sendButton"_s).isEnabled());
        press(Qt::Key_Return);
        composer->send();
        EXPECT_EQ(text(), blank);
        EXPECT_FALSE(composer->messageComposer()->isSending());
    }
    spinFor(20ms);
    EXPECT_TRUE(service.requests("POST", messagesPath).empty());
}

TEST_F(SendingTest, AFailureRaisesTheBannerAndFreesTheComposer)
{
    open();
    timings.bannerDismiss = 10s;
    service.answer("POST", messagesPath, refusal(401, "Not yours"));
    Notifications banners(*session, &Session::bannerChanged);
    type(u"Hello"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_GE(banners.count, 1);
    EXPECT_TRUE(session->token()) << "only the identity request signs out";
    EXPECT_EQ(text(), QString());
    field().undo();
    EXPECT_EQ(text(), u"Hello"_s) << "the draft can be fetched back by hand";
}

TEST_F(SendingTest, ReturnInsertsTheMentionFirstAndSendsTheNoteNext)
{
    open();
    click(button(u"noteModeButton"_s));
    type(u"Hi @an"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(text(), u"Hi @Anna Berg "_s);
    EXPECT_TRUE(service.requests("POST", messagesPath).empty());
    acceptMessage();
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_EQ(sent(u"body"_s), u"Hi @Anna Berg"_s);
    EXPECT_EQ(sent(u"note"_s), true);
    EXPECT_EQ(sent(u"mentions"_s), QJsonArray{u"a2"_s});
    EXPECT_TRUE(composer->messageComposer()->isNote()) << "note mode stays";

    acceptMessage(u"m2"_s);
    type(u"@Anna Berg again"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_TRUE(sent(u"mentions"_s, 1).isUndefined()) << "picked agents do not outlive their note";
}

TEST_F(SendingTest, MentionsOnlyWhoWasPickedOnceAndIsStillNamed)
{
    open();
    click(button(u"noteModeButton"_s));
    for (const QString& part : {u"@joa"_s, u"@ann"_s}) {
        type(part);
        press(Qt::Key_Return);
    }
    ASSERT_EQ(text(), u"@Joanna Reyes @Anna Berg "_s);
    field().setText(u"@ann"_s);
    press(Qt::Key_Return);
    acceptMessage();
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_EQ(sent(u"mentions"_s), QJsonArray{u"a2"_s});
}

TEST_F(SendingTest, TellsWhatIsTypedButNeverANote)
{
    open();
    type(u"a"_s);
    EXPECT_THAT(previews(), ElementsAre(u"a"_s));
    clock += 2s;
    type(u"b"_s);
    EXPECT_THAT(previews(), ElementsAre(u"a"_s, u"ab"_s));
    click(button(u"noteModeButton"_s));
    EXPECT_THAT(previews(), ElementsAre(u"a"_s, u"ab"_s, QString()));
    clock += 2s;
    type(u"c"_s);
    EXPECT_EQ(previews().size(), 3);
    click(button(u"noteModeButton"_s));
    EXPECT_THAT(previews(), ElementsAre(u"a"_s, u"ab"_s, QString(), u"abc"_s));
    acceptMessage();
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
    EXPECT_EQ(previews().last(), QString()) << "a sent draft is no draft any more";
    EXPECT_EQ(previews().size(), 5);
}

TEST_F(SendingTest, TheComposerMayGoWhileAMessageIsUnderWay)
{
    open();
    const auto held = service.hold("POST", messagesPath);
    type(u"Hello"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    window.reset();
    held->answer(answerOf(MessageResponse{makeMessage(u"m1"_s, u"c1"_s, MessageSender::agent)}));
    EXPECT_TRUE(waitUntil([&] { return session->messages().thread(u"c1"_s).size() == 1; }));
}

} // namespace

} // namespace orvia::test
