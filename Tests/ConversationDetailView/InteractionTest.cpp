#include "DetailFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>

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
        signInWith(conversation, {first, second, third});
        open({550, 4000});
        transcript().setFocus(Qt::TabFocusReason);
        settle();
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QKeyEvent down(QEvent::KeyPress, key, modifiers);
        QApplication::sendEvent(&transcript(), &down);
    }

    void mouse(QEvent::Type kind, const QPoint& point, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget* target = transcript().viewport();
        const bool moves = kind == QEvent::MouseMove;
        QMouseEvent event(kind, point, target->mapToGlobal(point), moves ? Qt::NoButton : Qt::LeftButton,
                          kind == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, modifiers);
        QApplication::sendEvent(target, &event);
    }

    void click(const QPoint& point)
    {
        mouse(QEvent::MouseButtonPress, point);
        mouse(QEvent::MouseButtonRelease, point);
    }

    /// The point of the viewport at a position of a row's text.
    QPoint pointAt(qsizetype row, qsizetype position)
    {
        const RowLayout& layout = *transcript().rowLayout(row);
        const QPointF caret = layout.body()->caretRect(position).center() + layout.bodyOrigin();
        return caret.toPoint() + transcript().rowRect(row).topLeft();
    }

    QString copied()
    {
        QGuiApplication::clipboard()->clear();
        press(Qt::Key_C, Qt::ControlModifier);
        return QGuiApplication::clipboard()->text();
    }
};

TEST_F(InteractionTest, goesFromTextToFileToTextByKeyboard)
{
    transcript().setCurrent({0, Part::body});
    const Stop expected[] = {{1, Part::body}, {1, Part::attachment}, {2, Part::body}, {2, Part::showMore}};
    for (const Stop& stop : expected) {
        press(Qt::Key_Down);
        EXPECT_EQ(transcript().current(), stop);
    }
    press(Qt::Key_Home);
    EXPECT_EQ(transcript().current(), (Stop{0, Part::body}));
    press(Qt::Key_End);
    EXPECT_EQ(transcript().current(), (Stop{2, Part::showMore}));
}

TEST_F(InteractionTest, opensFilesByKeyAndByMouse)
{
    transcript().setCurrent({1, Part::attachment});
    press(Qt::Key_Return);
    ASSERT_EQ(openedURLs.size(), 1);
    EXPECT_EQ(openedURLs[0], service.url().resolved(QUrl(u"/files/x.pdf"_s)));
    const QPoint file = transcript().partRect({1, Part::attachment}).center();
    click(file);
    EXPECT_EQ(openedURLs.size(), 2);
    mouse(QEvent::MouseButtonPress, file);
    mouse(QEvent::MouseButtonRelease, pointAt(0, 0));
    EXPECT_EQ(openedURLs.size(), 2);
}

TEST_F(InteractionTest, selectsByMouse)
{
    mouse(QEvent::MouseButtonPress, pointAt(0, 4));
    mouse(QEvent::MouseMove, pointAt(0, 7));
    mouse(QEvent::MouseButtonRelease, pointAt(0, 7));
    EXPECT_EQ(copied(), u"two"_s);
    mouse(QEvent::MouseButtonPress, pointAt(0, 13), Qt::ShiftModifier);
    mouse(QEvent::MouseButtonRelease, pointAt(0, 13));
    EXPECT_EQ(copied(), u"two three"_s);
    mouse(QEvent::MouseButtonDblClick, pointAt(0, 9));
    mouse(QEvent::MouseButtonRelease, pointAt(0, 9));
    EXPECT_EQ(copied(), u"three"_s);
    click(pointAt(0, 9));
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
}

TEST_F(InteractionTest, copiesAWholeTextOfWhichABeginningShows)
{
    transcript().setCurrent({2, Part::body});
    ASSERT_TRUE(transcript().rowLayout(2)->body()->isCut());
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(copied().size(), 30000);
    const qsizetype before = transcript().rowLayout(2)->body()->shownLength();
    transcript().activate({2, Part::showMore});
    EXPECT_GT(transcript().rowLayout(2)->body()->shownLength(), before);
    transcript().activate({2, Part::showMore});
    EXPECT_FALSE(transcript().rowLayout(2)->body()->isCut());
}

TEST_F(InteractionTest, offersCopyAndSelectAllInAMenu)
{
    transcript().setCurrent({0, Part::body});
    QContextMenuEvent request(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(&transcript(), &request);
    const auto* menu = transcript().findChild<QMenu*>();
    ASSERT_TRUE(menu);
    QStringList texts;
    for (const QAction* action : menu->actions())
        texts.append(action->text());
    EXPECT_THAT(texts, testing::ElementsAre(u"Copy"_s, u"Select All"_s));
}

TEST_F(InteractionTest, keepsTheSelectionWhenMessagesArrive)
{
    transcript().select(0, {4, 7});
    receive({makeMessage(u"d"_s, u"c1"_s)});
    EXPECT_EQ(copied(), u"two"_s);
    reload({makeMessage(u"z"_s, u"c1"_s)});
    EXPECT_TRUE(transcript().selection().isEmpty());
}

} // namespace
} // namespace orvia::test
