#include "Views/Widgets/Sheet.h"
#include "Support/Waiting.h"
#include "Theme/Theme.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/TextField.h"

#include <QAccessible>
#include <QApplication>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

class SheetTest : public testing::Test {
protected:
    SheetTest()
    {
        auto* column = new QVBoxLayout(&window);
        outside = new QLineEdit;
        column->addWidget(outside);
        column->addWidget(new QLineEdit);
        window.resize(800, 600);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        outside->setFocus();
    }

    /// A form of two fields with both buttons.
    Sheet* openForm()
    {
        auto* sheet = new Sheet(u"New Product"_s, outside);
        auto* body = new FormCard;
        body->addRow(new FormRow(u"Name"_s, name = new TextField(u"Name"_s)));
        body->addRow(new FormRow(u"Slug"_s, slug = new TextField(u"Slug"_s)));
        sheet->setBody(body);
        sheet->setDismissButton(u"Cancel"_s);
        sheet->setConfirmButton(u"Create"_s);
        sheet->open();
        return sheet;
    }

    QWidget window;
    QLineEdit* outside;
    QPointer<TextField> name;
    QPointer<TextField> slug;
};

void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
}

} // namespace

TEST_F(SheetTest, KeepsTheFocusInside)
{
    const Sheet* sheet = openForm();
    EXPECT_TRUE(name->hasFocus());
    QList<QWidget*> visited;
    for (int step = 0; step < 4; ++step) {
        visited.append(QApplication::focusWidget());
        EXPECT_TRUE(sheet->isAncestorOf(QApplication::focusWidget())) << step;
        press(Qt::Key_Tab);
    }
    EXPECT_TRUE(name->hasFocus()) << "the fourth step goes round";
    EXPECT_THAT(visited, testing::UnorderedElementsAre(name.data(), slug.data(), sheet->dismissButton(),
                                                       sheet->confirmButton()));
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(QApplication::focusWidget(), visited.last());

    slug->setFocus();
    outside->setFocus();
    EXPECT_TRUE(slug->hasFocus());
}

TEST_F(SheetTest, EscapeDismissesOnceAndTheFocusGoesBack)
{
    const QPointer<Sheet> sheet = openForm();
    QSignalSpy dismissed(sheet, &Sheet::dismissed);
    press(Qt::Key_Escape);
    EXPECT_EQ(dismissed.count(), 1);
    sheet->dismiss();
    EXPECT_EQ(dismissed.count(), 1);
    EXPECT_TRUE(outside->hasFocus());
    EXPECT_TRUE(waitUntil([&] { return sheet.isNull(); }));
}

TEST_F(SheetTest, ReturnClicksTheConfirmingButtonWhenItMay)
{
    const Sheet* sheet = openForm();
    QSignalSpy confirmed(sheet->confirmButton(), &QAbstractButton::clicked);
    sheet->confirmButton()->setEnabled(false);
    press(Qt::Key_Return);
    EXPECT_EQ(confirmed.count(), 0);
    sheet->confirmButton()->setEnabled(true);
    press(Qt::Key_Return);
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(confirmed.count(), 2);
    sheet->confirmButton()->setBusy(true);
    press(Qt::Key_Return);
    EXPECT_EQ(confirmed.count(), 2);

    // Return on another button is that button's.
    sheet->confirmButton()->setBusy(false);
    sheet->dismissButton()->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_EQ(confirmed.count(), 2);
    EXPECT_FALSE(sheet->isOpen());
}

TEST_F(SheetTest, ASheetOverASheetTakesKeysAndGivesThemBack)
{
    Sheet* list = new Sheet(u"Products"_s, outside, Sheet::Kind::settings);
    list->setConfirmButton(u"Done"_s);
    list->open();
    Sheet* form = openForm();
    EXPECT_EQ(Sheet::topmost(outside), form);
    press(Qt::Key_Escape);
    EXPECT_FALSE(form->isOpen());
    EXPECT_TRUE(list->isOpen());
    EXPECT_EQ(Sheet::topmost(outside), list);
    EXPECT_TRUE(list->confirmButton()->hasFocus());
    press(Qt::Key_Escape);
    EXPECT_FALSE(list->isOpen());
    EXPECT_TRUE(outside->hasFocus());
}

TEST_F(SheetTest, APushedPageComesWithItsButtonAndGoesWithIt)
{
    auto* sheet = new Sheet(u"Settings"_s, outside, Sheet::Kind::settings);
    auto* link = new FormActionRow(u"box"_s, u"Products"_s);
    sheet->setBody(link);
    sheet->setConfirmButton(u"Done"_s);
    sheet->open();
    EXPECT_TRUE(link->hasFocus());

    const QPointer<QWidget> page = new QLineEdit;
    const QPointer<IconButton> plus = new IconButton(u"plus"_s, u"New product"_s);
    sheet->pushPage(u"Products"_s, page, plus);
    EXPECT_EQ(sheet->title(), u"Products"_s);
    EXPECT_EQ(sheet->pageCount(), 2);
    EXPECT_TRUE(plus->isVisible());
    EXPECT_TRUE(page->hasFocus());

    sheet->popPage();
    EXPECT_EQ(sheet->title(), u"Settings"_s);
    EXPECT_TRUE(link->hasFocus());
    EXPECT_TRUE(waitUntil([&] { return page.isNull() && plus.isNull(); }));
    sheet->popPage();
    EXPECT_EQ(sheet->pageCount(), 1);
}

TEST_F(SheetTest, StaysClearOfTheWindowsEdgeAndScrollsWhatDoesNotFit)
{
    auto* sheet = new Sheet(u"Edit Agent"_s, outside);
    auto* card = new FormCard;
    for (int row = 0; row < 30; ++row)
        card->addRow(new FormRow(u"Row"_s, u"Value"_s));
    sheet->setBody(card);
    sheet->setConfirmButton(u"Save"_s);
    sheet->open();
    EXPECT_TRUE(waitUntil([&] { return sheet->size() == window.size(); }));
    const QWidget* panel = sheet->confirmButton()->parentWidget()->parentWidget();
    EXPECT_EQ(panel->width(), 440);
    EXPECT_LE(panel->height(), window.height() - 48);
    window.resize(820, 480);
    EXPECT_TRUE(waitUntil([&] { return panel->height() == 480 - 48; }));
    EXPECT_GT(card->height(), panel->height());
}

TEST_F(SheetTest, IsAModalDialogueToAssistiveTools)
{
    const Sheet* sheet = openForm();
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(const_cast<Sheet*>(sheet));
    EXPECT_EQ(interface->role(), QAccessible::Dialog);
    EXPECT_EQ(interface->text(QAccessible::Name), u"New Product"_s);
    EXPECT_TRUE(interface->state().modal);
}

} // namespace orvia::test
