#include "Support/Waiting.h"
#include "Theme/CaretRest.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/EmptyState.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/ScrollArea.h"
#include "Views/Widgets/SidebarList.h"
#include "Views/Widgets/Spinner.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/TextField.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QFocusFrame>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

/// A window with controls in a column.
class Window : public QWidget {
public:
    explicit Window(std::initializer_list<QWidget*> controls)
    {
        auto* column = new QVBoxLayout(this);
        for (QWidget* control : controls)
            column->addWidget(control);
        resize(400, 300);
        show();
        activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(this));
    }
};

} // namespace

TEST(ControlsTest, ABusyButtonKeepsItsSizeAndIgnoresEveryClick)
{
    auto* button = new Button(u"Sign In"_s, Button::Kind::primary);
    Window window({button});
    QSignalSpy clicks(button, &QAbstractButton::clicked);
    const QSize before = button->sizeHint();
    button->setFocus();
    for (const bool busy : {true, false}) {
        button->setBusy(busy);
        EXPECT_EQ(button->sizeHint(), before);
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::keyClick(button, Qt::Key_Return);
        QTest::keyClick(button, Qt::Key_Space);
        EXPECT_EQ(clicks.count(), busy ? 0 : 3);
    }
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(button, &held);
    EXPECT_EQ(clicks.count(), 3);
}

TEST(ControlsTest, TheRingShowsForTheKeyboardAndAlwaysForFields)
{
    auto* first = new Button(u"First"_s);
    auto* field = new TextField(u"Name"_s);
    Window window({first, field});
    const std::pair<Qt::FocusReason, bool> reasons[] = {{Qt::TabFocusReason, true},
                                                        {Qt::ShortcutFocusReason, true},
                                                        {Qt::MouseFocusReason, false},
                                                        {Qt::OtherFocusReason, false}};
    field->setFocus();
    for (const auto& [reason, shown] : reasons) {
        first->setFocus(reason);
        EXPECT_EQ(FocusRing::isShown(first), shown) << reason;
        field->setFocus(reason);
        EXPECT_TRUE(FocusRing::isShown(field)) << reason;
    }
    delete field;
    first->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(FocusRing::isShown(first));
}

TEST(ControlsTest, TheRingFollowsWhatIsScrolledToAfterItHasTheFocus)
{
    auto* rows = new QWidget;
    auto* column = new QVBoxLayout(rows);
    column->setSpacing(40); // the next row is wholly out of sight
    for (int number = 0; number < 30; ++number)
        column->addWidget(new Button(u"Row"_s));
    auto* area = new ScrollArea;
    area->setWidget(rows);
    Window window({area});
    const auto* last = qobject_cast<Button*>(column->itemAt(29)->widget());
    column->itemAt(0)->widget()->setFocus(Qt::TabFocusReason);
    for (int step = 1; step < 30; ++step)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(last->hasFocus());
    EXPECT_GT(area->verticalScrollBar()->value(), 0);
    const auto* ring = window.findChild<QFocusFrame*>();
    ASSERT_TRUE(ring);
    EXPECT_TRUE(ring->isVisible());
    EXPECT_TRUE(ring->parentWidget()->rect().contains(ring->geometry()));
}

TEST(ControlsTest, ASidebarListKeepsItsCurrentRowInSight)
{
    auto* list = new SidebarList(u"Products"_s);
    list->setRows(std::vector<SidebarList::Row>(43, {u"box"_s, u"Product"_s}));
    auto* area = new ScrollArea;
    area->setWidget(list);
    Window window({new Button(u"Settings"_s), area});
    const auto rowIsInSight = [&] {
        const QRect row = list->visualRect(list->currentIndex());
        const QPoint corner = list->viewport()->mapTo(area->viewport(), row.topLeft());
        return area->viewport()->rect().contains(QRect(corner, row.size()));
    };
    list->selectRow(42);
    EXPECT_FALSE(rowIsInSight()) << "chosen elsewhere";
    list->selectRow(0);
    list->setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_Home, Qt::Key_PageDown, Qt::Key_Down, Qt::Key_Down}) {
        QTest::keyClick(list, key);
        EXPECT_TRUE(rowIsInSight()) << key;
    }
}

TEST(ControlsTest, AClickOnTheTextOfASwitchActsOnTheSwitch)
{
    auto* toggle = new Switch({});
    auto* row = new FormRow(u"Enabled"_s, toggle);
    Window window({row});
    auto* label = row->findChild<Label*>();
    QTest::mouseClick(label, Qt::LeftButton);
    EXPECT_TRUE(toggle->isChecked());
    QTest::mouseClick(label, Qt::RightButton);
    QTest::mousePress(label, Qt::LeftButton);
    QTest::mouseRelease(label, Qt::LeftButton, {}, QPoint(-5, 5));
    EXPECT_TRUE(toggle->isChecked());
    toggle->setEnabled(false);
    QTest::mouseClick(label, Qt::LeftButton);
    EXPECT_TRUE(toggle->isChecked());
}

TEST(ControlsTest, AnOpenPickerFollowsTheTheme)
{
    auto* picker = new Picker(u"Role"_s);
    picker->addItems({u"Agent"_s, u"Admin"_s});
    Window window({picker});
    Theme::shared().setDesktopAppearance(false);
    QTest::mouseClick(picker, Qt::LeftButton);
    for (const bool dark : {true, false}) {
        Theme::shared().setDesktopAppearance(dark);
        EXPECT_EQ(picker->view()->palette().color(QPalette::Base), Theme::color(ColorRole::menu, dark));
    }
    picker->hidePopup();
    Theme::shared().setDesktopAppearance(std::nullopt);
}

TEST(ControlsTest, AssistiveToolsHearOfASpinnerAndPassOverAPicture)
{
    Spinner spinner;
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&spinner)->role(), QAccessible::ProgressBar);
    EmptyState empty(u"inbox-large"_s, u"No Conversation"_s);
    QAccessibleInterface* state = QAccessible::queryAccessibleInterface(&empty);
    for (int number = 0; number < state->childCount(); ++number)
        EXPECT_NE(state->child(number)->role(), QAccessible::Graphic);
}

TEST(ControlsTest, TheSearchFieldAsksToBeClearedAndNeverClearsItself)
{
    auto* field = new SearchField(u"Search conversations"_s, u"Clear search"_s);
    Window window({field});
    QSignalSpy requests(field, &SearchField::clearRequested);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(requests.count(), 0);
    field->setText(u"refund"_s);
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(requests.count(), 1);
    EXPECT_EQ(field->text(), u"refund"_s);

    // The button that goes must not take the focus with it.
    field->clearButton()->setFocus(Qt::TabFocusReason);
    field->setSearching(true);
    EXPECT_TRUE(field->hasFocus());
}

TEST(ControlsTest, ALabelElidesButNeverInterpretsItsText)
{
    const QString text = u"<b>Bold</b> & <img src=x> a text that is much too long for this width"_s;
    ElidedLabel label(text);
    label.resize(90, 20);
    label.show();
    EXPECT_TRUE(label.isElided());
    QHelpEvent help(QEvent::ToolTip, QPoint(5, 5), label.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&label, &help);
    EXPECT_EQ(QToolTip::text(), text);
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto tip =
        std::ranges::find_if(windows, [](QWidget* widget) { return widget->inherits("QTipLabel"); });
    ASSERT_NE(tip, windows.end());
    EXPECT_EQ(qobject_cast<QLabel*>(*tip)->textFormat(), Qt::PlainText);
}

TEST(ControlsTest, AWheelOverAClosedPickerChangesNothing)
{
    auto* picker = new Picker(u"Role"_s);
    picker->addItems({u"Agent"_s, u"Admin"_s});
    Window window({picker});
    picker->setFocus();
    QWheelEvent wheel(QPointF(5, 5), picker->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(picker, &wheel);
    EXPECT_EQ(picker->currentIndex(), 0);
    QTest::keyClick(picker, Qt::Key_Down);
    EXPECT_EQ(picker->currentIndex(), 1);
}

TEST(ControlsTest, TheCaretRestsUntilTheNextKeyOrClick)
{
    QStyleHints* const hints = QGuiApplication::styleHints();
    const int flashTime = hints->cursorFlashTime();
    auto* field = new TextField(u"Name"_s);
    Window window({field});
    {
        CaretRest rest(std::chrono::milliseconds(100));
        const auto rests = [hints] { return waitUntil([hints] { return hints->cursorFlashTime() == 0; }); };
        ASSERT_TRUE(rests());
        QTest::keyClick(field, Qt::Key_A);
        EXPECT_EQ(hints->cursorFlashTime(), flashTime);
        ASSERT_TRUE(rests());
        QTest::mouseClick(field, Qt::LeftButton);
        EXPECT_EQ(hints->cursorFlashTime(), flashTime);
        ASSERT_TRUE(rests());
    }
    EXPECT_EQ(hints->cursorFlashTime(), flashTime);
    EXPECT_GT(flashTime, 0);
}

} // namespace orvia::test
