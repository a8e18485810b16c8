#include "ComposerFixture.h"

#include <QAccessible>

namespace orvia::test {

namespace {

class ComposerAccessibilityTest : public ComposerFixture {
protected:
    static QAccessibleInterface& interfaceOf(QWidget& widget)
    {
        return *QAccessible::queryAccessibleInterface(&widget);
    }
    static QString name(QWidget& widget) { return interfaceOf(widget).text(QAccessible::Name); }
};

TEST_F(ComposerAccessibilityTest, NamesTheControlsByWhatTheyDoInEachMode)
{
    open();
    BusyButton& note = button(u"noteModeButton"_s);
    const auto names = [&] {
        return QStringList{name(button(u"attachButton"_s)),
                           name(note),
                           name(field()),
                           field().placeholderText(),
                           name(button(u"sendButton"_s)),
                           button(u"sendButton"_s).toolTip()};
    };
    EXPECT_EQ(names(), (QStringList{u"Attach a file"_s, u"Switch to internal note"_s, u"Message"_s,
                                    u"Message"_s, u"Send"_s, u"Send"_s}));
    EXPECT_FALSE(interfaceOf(note).state().checked);
    click(note);
    EXPECT_EQ(names(), (QStringList{u"Attach a file"_s, u"Switch to reply"_s, u"Internal note"_s,
                                    u"Internal note"_s, u"Add note"_s, u"Add note"_s}));
    EXPECT_TRUE(interfaceOf(note).state().checked);
    EXPECT_TRUE(interfaceOf(button(u"sendButton"_s)).state().disabled);
    composer->messageComposer()->setUploading(true);
    EXPECT_TRUE(interfaceOf(button(u"attachButton"_s)).state().busy);
}

TEST_F(ComposerAccessibilityTest, SuggestionsAreButtonsThatSayWhatTheyInsert)
{
    open();
    click(button(u"noteModeButton"_s));
    type(u"@"_s);
    QAccessibleInterface& first = interfaceOf(row(0));
    EXPECT_EQ(first.role(), QAccessible::Button);
    EXPECT_EQ(first.text(QAccessible::Name), u"@Anna Berg, a2@orvia.example"_s);
    EXPECT_EQ(first.text(QAccessible::Description), u"Return inserts this"_s);
    EXPECT_EQ(interfaceOf(row(1)).text(QAccessible::Description), QString());
    EXPECT_EQ(interfaceOf(field()).text(QAccessible::Description), u"Return inserts @Anna Berg"_s);
    ASSERT_TRUE(interfaceOf(row(1)).actionInterface());
    interfaceOf(row(1)).actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(waitUntil([&] { return text() == u"@Joanna Reyes "_s; }));
    EXPECT_EQ(interfaceOf(field()).text(QAccessible::Description), QString());
}

TEST_F(ComposerAccessibilityTest, TabWalksInReadingOrderAndSkipsWhatCannotBeUsed)
{
    open();
    elsewhere->setFocus();
    QStringList walked;
    const auto walk = [&](int steps) {
        walked.clear();
        for (int step = 0; step < steps; ++step) {
            press(Qt::Key_Tab);
            walked.append(QApplication::focusWidget()->objectName());
        }
        return walked;
    };
    EXPECT_EQ(walk(4), (QStringList{u"attachButton"_s, u"noteModeButton"_s, u"composerField"_s, QString()}))
        << "nothing to send";
    field().setText(u"Hello"_s);
    EXPECT_EQ(walk(4),
              (QStringList{u"attachButton"_s, u"noteModeButton"_s, u"composerField"_s, u"sendButton"_s}));
    acceptMessage();
    press(Qt::Key_Space);
    EXPECT_TRUE(field().hasFocus()) << "the button is disabled now";
    EXPECT_TRUE(waitUntil([&] { return !composer->messageComposer()->isSending(); }));
}

TEST_F(ComposerAccessibilityTest, ClicksOnButtonsAndPaddingLeaveTheCursorInTheDraft)
{
    open();
    type(u"a"_s);
    click(button(u"noteModeButton"_s));
    EXPECT_TRUE(field().hasFocus());
    click(button(u"attachButton"_s));
    EXPECT_TRUE(field().hasFocus());
    elsewhere->setFocus();
    QWidget* frame = field().parentWidget();
    QTest::mouseClick(frame, Qt::LeftButton, {}, QPoint(4, frame->height() / 2));
    EXPECT_TRUE(field().hasFocus());
    elsewhere->setFocus();
    button(u"noteModeButton"_s).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_TRUE(button(u"noteModeButton"_s).hasFocus()) << "the keyboard stays where it is";
}

} // namespace

} // namespace orvia::test
