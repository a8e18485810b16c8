#include "DetailFixture.h"

#include <QAccessible>

namespace orvia::test {
namespace {

class AccessibilityTest : public DetailFixture {
protected:
    QAccessibleInterface& list() { return *QAccessible::queryAccessibleInterface(&transcript()); }
};

TEST_F(AccessibilityTest, isAListThatKnowsItsSizeAndItsItemsPlaces)
{
    signInWith(conversation, conversationOf(10000));
    open();
    EXPECT_EQ(list().role(), QAccessible::List);
    EXPECT_EQ(list().childCount(), 10000);
    QAccessibleInterface* last = list().child(9999);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->role(), QAccessible::ListItem);
    EXPECT_EQ(list().indexOfChild(last), 9999);
    EXPECT_EQ(last->parent(), &list());
    EXPECT_EQ(last->text(QAccessible::Description), u"10000 of 10000"_s);
    EXPECT_FALSE(last->state().offscreen);
    EXPECT_TRUE(list().child(0)->state().offscreen);
    const QRect rect = last->rect();
    EXPECT_EQ(list().childAt(rect.center().x(), rect.center().y()), last);
    EXPECT_EQ(list().child(10000), nullptr);
}

TEST_F(AccessibilityTest, speaksARowInTheOrderInWhichItIsRead)
{
    Message earlier = makeMessage(u"a"_s, u"c1"_s);
    earlier.createdAt = clock - std::chrono::hours(2);
    Message mail = makeMessage(u"b"_s, u"c1"_s, MessageSender::agent, u"See the file"_s);
    mail.createdAt = Instant(std::chrono::floor<std::chrono::days>(clock)) + std::chrono::hours(15)
                     + std::chrono::minutes(41);
    earlier.createdAt = *mail.createdAt - std::chrono::hours(2);
    mail.via = MessageVia::email;
    mail.attachment = Attachment{{}, u"x.pdf"_s, {}, 1200000, AttachmentKind::file, u"/x.pdf"_s};
    conversation.visitorLastReadAt = *mail.createdAt;
    signInWith(conversation, {earlier, mail});
    open();
    QAccessibleInterface* row = list().child(1);
    EXPECT_EQ(row->text(QAccessible::Name).replace(QChar(0x202f), u' '),
              u"3:41 PM, See the file, x.pdf, 1.2 MB, via email, Seen"_s);
    ASSERT_EQ(row->childCount(), 1);
    QAccessibleInterface* file = row->child(0);
    EXPECT_EQ(file->role(), QAccessible::Button);
    EXPECT_EQ(file->text(QAccessible::Name), u"x.pdf, 1.2 MB"_s);
    EXPECT_EQ(file->parent(), row);
    file->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(openedURLs.size(), 1);
}

TEST_F(AccessibilityTest, offersTheTextWithSelection)
{
    signInWith(conversation, {makeMessage(u"a"_s, u"c1"_s, MessageSender::visitor, u"one two"_s)});
    open();
    QAccessibleInterface* row = list().child(0);
    QAccessibleTextInterface* text = row->textInterface();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->characterCount(), 7);
    EXPECT_EQ(text->text(4, 7), u"two"_s);
    EXPECT_EQ(text->text(4, 9000), u"two"_s);
    text->setSelection(0, 4, 7);
    EXPECT_EQ(transcript().copyableText(), u"two"_s);
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    EXPECT_EQ(start, 4);
    EXPECT_EQ(end, 7);
    EXPECT_EQ(text->offsetAtPoint(text->characterRect(4).center()) / 2, 2);
}

TEST_F(AccessibilityTest, outlivesRowsAndViewsThatAreGone)
{
    signInWith(conversation, conversationOf(50));
    open();
    QAccessibleInterface* row = list().child(49);
    EXPECT_TRUE(row->isValid());
    reload(conversationOf(10));
    EXPECT_EQ(list().childCount(), 10);
    EXPECT_EQ(list().child(49), nullptr);
    view.reset();
}

} // namespace
} // namespace orvia::test
