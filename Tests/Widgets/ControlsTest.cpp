#include "Support/Waiting.h"
#include "Theme/Theme.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/Tag.h"
#include "Views/Widgets/TextField.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

struct Spoken {
    QAccessible::Role role;
    QString name;
    QString description;
};

Spoken spoken(QWidget& widget)
{
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&widget);
    return {interface->role(), interface->text(QAccessible::Name), interface->text(QAccessible::Description)};
}

QAccessible::State stateOf(QWidget& widget)
{
    return QAccessible::queryAccessibleInterface(&widget)->state();
}

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

TEST(ControlsTest, TellAssistiveToolsWhatTheyAre)
{
    Button button(u"Save & close"_s);
    IconButton icon(u"gear"_s, u"Settings"_s);
    Switch toggle(u"Show snoozed"_s);
    TextField field(u"Email"_s);
    SecureField secret(u"Password"_s);
    Picker picker(u"Notify me about"_s);
    picker.addItems({u"Everything"_s, u"Mentions only"_s});
    Tag tag(u"Larkspur & Co"_s);
    ElidedLabel label(u"A long text\nin two lines"_s);

    EXPECT_EQ(spoken(button).role, QAccessible::Button);
    EXPECT_EQ(spoken(button).name, u"Save & close"_s);
    EXPECT_EQ(spoken(icon).role, QAccessible::Button);
    EXPECT_EQ(spoken(icon).name, u"Settings"_s);
    EXPECT_EQ(icon.toolTip(), u"Settings"_s);
    EXPECT_EQ(spoken(toggle).role, QAccessible::CheckBox);
    EXPECT_EQ(spoken(toggle).name, u"Show snoozed"_s);
    EXPECT_FALSE(stateOf(toggle).checked);
    toggle.click();
    EXPECT_TRUE(stateOf(toggle).checked);
    EXPECT_EQ(spoken(field).role, QAccessible::EditableText);
    EXPECT_EQ(spoken(field).name, u"Email"_s);
    EXPECT_TRUE(stateOf(secret).passwordEdit);
    EXPECT_EQ(spoken(picker).role, QAccessible::ComboBox);
    EXPECT_EQ(spoken(picker).description, u"Notify me about"_s);
    EXPECT_EQ(spoken(tag).role, QAccessible::StaticText);
    EXPECT_EQ(spoken(tag).name, u"Larkspur & Co"_s);
    EXPECT_EQ(spoken(label).name, u"A long text\nin two lines"_s);
}

TEST(ControlsTest, ABusyButtonKeepsItsSizeAndIgnoresEveryClick)
{
    auto* button = new Button(u"Sign In"_s, Button::Kind::primary);
    Window window({button});
    QSignalSpy clicks(button, &QAbstractButton::clicked);
    const QSize before = button->sizeHint();
    button->setFocus();
    button->setBusy(true);
    EXPECT_EQ(button->sizeHint(), before);
    EXPECT_TRUE(stateOf(*button).busy);
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::keyClick(button, Qt::Key_Return);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(clicks.count(), 0);

    button->setBusy(false);
    EXPECT_FALSE(stateOf(*button).busy);
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::keyClick(button, Qt::Key_Return);
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(clicks.count(), 3);
}

TEST(ControlsTest, TheRingShowsForTheKeyboardAndAlwaysForFields)
{
    auto* first = new Button(u"First"_s);
    auto* field = new TextField(u"Name"_s);
    Window window({first, field});
    const std::pair<Qt::FocusReason, bool> reasons[] = {{Qt::TabFocusReason, true},
                                                        {Qt::BacktabFocusReason, true},
                                                        {Qt::ShortcutFocusReason, true},
                                                        {Qt::MouseFocusReason, false},
                                                        {Qt::OtherFocusReason, false}};
    for (const auto& [reason, shown] : reasons) {
        first->clearFocus();
        first->setFocus(reason);
        EXPECT_EQ(FocusRing::isShown(first), shown) << reason;
        field->setFocus(reason);
        EXPECT_TRUE(FocusRing::isShown(field)) << reason;
        EXPECT_FALSE(FocusRing::isShown(first)) << reason;
    }
    delete field;
    first->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(FocusRing::isShown(first));
}

TEST(ControlsTest, TheSearchFieldAsksToBeClearedAndNeverClearsItself)
{
    auto* field = new SearchField(u"Search conversations"_s, u"Clear search"_s);
    Window window({field});
    QSignalSpy requests(field, &SearchField::clearRequested);
    EXPECT_FALSE(field->clearButton()->isVisible());
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(requests.count(), 0);

    field->setText(u"refund"_s);
    EXPECT_TRUE(field->clearButton()->isVisible());
    EXPECT_EQ(spoken(*field->clearButton()).name, u"Clear search"_s);
    QTest::keyClick(field, Qt::Key_Escape);
    QTest::mouseClick(field->clearButton(), Qt::LeftButton);
    EXPECT_EQ(requests.count(), 2);
    EXPECT_EQ(field->text(), u"refund"_s);

    // The button that goes must not take the focus with it.
    field->clearButton()->setFocus(Qt::TabFocusReason);
    field->setSearching(true);
    EXPECT_FALSE(field->clearButton()->isVisible());
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
    label.resize(label.sizeHint());
    EXPECT_FALSE(label.isElided());
}

TEST(ControlsTest, AFormRowNamesItsControl)
{
    auto* field = new TextField(u"x"_s);
    auto* picker = new Picker(u"x"_s);
    auto* toggle = new Switch(u"x"_s);
    FormCard card;
    card.addRow(new FormRow(u"Header title"_s, field));
    card.addRow(new FormRow(u"Position"_s, picker));
    card.addRow(new FormRow(u"Enabled"_s, toggle));
    EXPECT_EQ(spoken(*field).name, u"Header title"_s);
    EXPECT_EQ(spoken(*picker).description, u"Position"_s);
    EXPECT_EQ(spoken(*toggle).name, u"Enabled"_s);
    EXPECT_EQ(card.rowCount(), 3);
    card.clear();
    EXPECT_EQ(card.rowCount(), 0);
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

} // namespace orvia::test
