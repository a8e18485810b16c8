#include "Views/Widgets/Sheet.h"
#include "Support/Waiting.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FormCard.h"
#include "Views/Widgets/TextField.h"

#include <QApplication>
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

TEST_F(SheetTest, ReturnClicksTheConfirmingButtonWhenItMay)
{
    const Sheet* sheet = openForm();
    QSignalSpy confirmed(sheet->confirmButton(), &QAbstractButton::clicked);
    sheet->confirmButton()->setEnabled(false);
    press(Qt::Key_Return);
    sheet->confirmButton()->setEnabled(true);
    EXPECT_EQ(confirmed.count(), 0);
    press(Qt::Key_Return);
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(confirmed.count(), 2);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(QApplication::focusWidget(), &held);
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

TEST_F(SheetTest, ASheetOverASheetAndAPushedPageGiveTheFocusBack)
{
    auto* sheet = new Sheet(u"Settings"_s, outside, Sheet::Kind::settings);
    auto* link = new FormActionRow(u"box"_s, u"Products"_s);
    sheet->setBody(link);
    Button* done = sheet->setConfirmButton(u"Done"_s);
    sheet->open();
    EXPECT_TRUE(link->hasFocus());

    const QPointer<QWidget> page = new QLineEdit;
    const QPointer<IconButton> plus = new IconButton(u"plus"_s, u"New product"_s);
    sheet->pushPage(u"Products"_s, page, plus);
    EXPECT_EQ(sheet->title(), u"Products"_s);
    EXPECT_TRUE(plus->isVisible());
    EXPECT_TRUE(page->hasFocus());
    done->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(plus->hasFocus()) << "in the order on the screen";
    page->setFocus();

    const QPointer<Sheet> form = openForm();
    QSignalSpy dismissed(form, &Sheet::dismissed);
    EXPECT_EQ(Sheet::topmost(outside), form);
    press(Qt::Key_Escape);
    form->dismiss();
    EXPECT_EQ(dismissed.count(), 1);
    EXPECT_EQ(Sheet::topmost(outside), sheet);
    EXPECT_TRUE(page->hasFocus());

    sheet->popPage();
    EXPECT_EQ(sheet->title(), u"Settings"_s);
    EXPECT_TRUE(link->hasFocus());
    EXPECT_TRUE(waitUntil([&] { return form.isNull() && page.isNull() && plus.isNull(); }));
    sheet->popPage();
    EXPECT_EQ(sheet->pageCount(), 1);
    press(Qt::Key_Escape);
    EXPECT_FALSE(sheet->isOpen());
    EXPECT_TRUE(outside->hasFocus());
}

} // namespace orvia::test
