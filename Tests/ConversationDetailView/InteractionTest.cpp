#include "DetailFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

namespace orvia::test {
namespace {

using Part = TranscriptView::Part;
using Stop = TranscriptView::Stop;

class InteractionTest : public DetailFixture {
protected:
    void SetUp() override
    {
        Message first = makeMessage(u"a"_s, u"c1"_s, MessageSender::visitor, u"one two three"_s);
        Message second = makeMessage(u"b"_s, u"c1"_s, MessageSender::agent, u"four\r\nfive"_s);
        second.attachment = Attachment{{}, u"x.pdf"_s, {}, 1200000, AttachmentKind::file, u"/files/x.pdf"_s};
        Message third = makeMessage(u"c"_s, u"c1"_s, MessageSender::visitor, QString(30000, u'i'));
        signInWith({first, second, third});
        open({550, 4000});
        transcript().setFocus(Qt::TabFocusReason);
        settle();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&transcript(), key, modifiers);
    }

    /// The point of the viewport at a position of a row's text.
    QPoint pointAt(qsizetype row, qsizetype position)
    {
        const RowLayout& layout = *transcript().rowLayout(row);
        const QPointF caret = layout.body()->caretRect(position).center() + layout.bodyOrigin();
        return caret.toPoint() + transcript().rowRect(row).topLeft();
    }

    /// Drags over a row's text from one position to another.
    void drag(qsizetype row, qsizetype from, qsizetype to, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(viewport(), Qt::LeftButton, modifiers, pointAt(row, from));
        QTest::mouseMove(viewport(), pointAt(row, to));
        QTest::mouseRelease(viewport(), Qt::LeftButton, modifiers, pointAt(row, to));
    }

    QWidget* viewport() { return transcript().viewport(); }

    QString copied()
    {
        QGuiApplication::clipboard()->clear();
        press(Qt::Key_C, Qt::ControlModifier);
        return QGuiApplication::clipboard()->text();
    }
};

TEST_F(InteractionTest, goesFromTextToFileToTextByKeyboardAndOpensFiles)
{
    transcript().setCurrent({0, Part::body});
    const Stop expected[] = {{1, Part::body}, {1, Part::attachment}, {2, Part::body}, {2, Part::showMore}};
    for (const Stop& stop : expected) {
        press(Qt::Key_Down);
        EXPECT_EQ(transcript().current(), stop);
        if (stop.part == Part::attachment)
            press(Qt::Key_Return);
    }
    EXPECT_EQ(openedURLs, QList{service.url().resolved(QUrl(u"/files/x.pdf"_s))});
    transcript().setCurrent({1, Part::attachment});
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(&transcript(), &held);
    EXPECT_EQ(openedURLs.size(), 1);
    press(Qt::Key_Home);
    EXPECT_EQ(transcript().current(), (Stop{0, Part::body}));
    press(Qt::Key_End);
    EXPECT_EQ(transcript().current(), (Stop{2, Part::showMore}));

    const QPoint file = transcript().partRect({1, Part::attachment}).center();
    QTest::mouseClick(viewport(), Qt::LeftButton, {}, file);
    EXPECT_EQ(openedURLs.size(), 2);
    QTest::mousePress(viewport(), Qt::LeftButton, {}, file);
    QTest::mouseRelease(viewport(), Qt::LeftButton, {}, pointAt(0, 0));
    EXPECT_EQ(openedURLs.size(), 2);
}

TEST_F(InteractionTest, selectsByMouse)
{
    drag(0, 4, 7);
    EXPECT_EQ(copied(), u"two"_s);
    drag(0, 13, 13, Qt::ShiftModifier);
    EXPECT_EQ(copied(), u"two three"_s);
    QTest::mouseDClick(viewport(), Qt::LeftButton, {}, pointAt(0, 9));
    EXPECT_EQ(copied(), u"three"_s);
    QTest::mouseClick(viewport(), Qt::LeftButton, {}, pointAt(0, 9));
    EXPECT_EQ(copied(), u"one two three"_s);
}

TEST_F(InteractionTest, selectsAndCopiesByKeyboard)
{
    transcript().setCurrent({0, Part::body});
    EXPECT_EQ(copied(), u"one two three"_s);
    press(Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(copied(), u"one t"_s);
    press(Qt::Key_Right);
    press(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(copied(), u"o three"_s);
    press(Qt::Key_Escape);
    EXPECT_TRUE(transcript().selection().isEmpty());
    transcript().setCurrent({1, Part::body});
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(copied(), u"four\nfive"_s);

    // The whole text is copied, however little of it shows.
    transcript().setCurrent({2, Part::body});
    ASSERT_TRUE(transcript().rowLayout(2)->body()->isCut());
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(copied().size(), 30000);
    transcript().activate({2, Part::showMore});
    ASSERT_TRUE(transcript().rowLayout(2)->body()->isCut());
    transcript().activate({2, Part::showMore});
    EXPECT_FALSE(transcript().rowLayout(2)->body()->isCut());

    // The selection stays when messages arrive, and goes with its message.
    transcript().select(0, {4, 7});
    receive(makeMessage(u"d"_s, u"c1"_s));
    EXPECT_EQ(copied(), u"two"_s);
    reload({makeMessage(u"z"_s, u"c1"_s)});
    EXPECT_TRUE(transcript().selection().isEmpty());

    // Nor does it go while the text grows, or is taken back in part.
    type(u"agent"_s, u"one two"_s);
    const Stop draft{1, Part::body};
    transcript().setCurrent(draft);
    transcript().select(1, {4, 7});
    type(u"visitor"_s, u"Because"_s);
    type(u"agent"_s, u"one two three"_s);
    EXPECT_EQ(transcript().current(), (Stop{2, Part::body}));
    EXPECT_EQ(copied(), u"two"_s);
    type(u"agent"_s, u"one tw"_s);
    EXPECT_EQ(copied(), u"tw"_s);
    type(u"agent"_s, {});
    EXPECT_FALSE(transcript().current().isValid());
    EXPECT_TRUE(transcript().selection().isEmpty());
}

} // namespace
} // namespace orvia::test
