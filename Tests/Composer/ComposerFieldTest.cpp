#include "Views/ConversationDetailView/Composer/ComposerField.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

class ComposerFieldTest : public testing::Test {
protected:
    ComposerFieldTest()
    {
        window.resize(900, 400);
        field.resize(300, 20);
        QObject::connect(&field, &ComposerField::submitRequested, &field, [this] { ++submissions; });
        QObject::connect(&field, &ComposerField::textEdited, &field,
                         [this](const QString& text) { edits.append(text); });
    }

    void show()
    {
        window.show();
        window.activateWindow();
        field.setFocus();
        QCoreApplication::processEvents();
    }
    int heightOf(const QString& text)
    {
        field.setText(text);
        QCoreApplication::processEvents();
        return field.height();
    }
    void paste(const QString& text)
    {
        QGuiApplication::clipboard()->setText(text);
        field.paste();
    }
    void compose(const QString& preedit, const QString& commit = {})
    {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QCoreApplication::sendEvent(&field, &event);
    }

    /// The height of a field with that many lines.
    int heightFor(int lines) { return line * lines + spare; }

    QWidget window;
    ComposerField field{&window};
    const int line = QFontMetrics(field.font()).lineSpacing();
    const int spare = 1;
    int submissions = 0;
    QStringList edits;
};

TEST_F(ComposerFieldTest, GrowsFromOneLineToSixThenScrolls)
{
    show();
    EXPECT_EQ(heightOf({}), heightFor(1));
    EXPECT_EQ(heightOf(u"a"_s), heightFor(1));
    for (int lines = 2; lines <= 6; ++lines) {
        EXPECT_EQ(heightOf(QStringList(lines, u"a"_s).join(u'\n')), heightFor(lines)) << lines;
        EXPECT_EQ(field.verticalScrollBar()->maximum(), 0) << lines;
        EXPECT_EQ(field.verticalScrollBar()->value(), 0) << lines;
    }
    EXPECT_EQ(heightOf(QStringList(9, u"a"_s).join(u'\n')), heightFor(6));
    EXPECT_EQ(field.verticalScrollBar()->maximum(), 3);
    EXPECT_EQ(field.verticalScrollBar()->value(), 3) << "the end, where the cursor is, must be in sight";
    EXPECT_EQ(heightOf({}), heightFor(1));
}

TEST_F(ComposerFieldTest, CountsWrappedLinesAtEveryWidthAndBeforeItIsShown)
{
    // Two paragraphs of some lines each: none of them may count as a single line.
    const QString paragraphs = u"one two three four five six seven\neight nine ten eleven twelve thirteen"_s;
    field.setText(paragraphs);
    show();
    const auto paintedLines = [this] {
        int lines = 0;
        field.grab();
        for (QTextBlock block = field.document()->begin(); block.isValid(); block = block.next())
            lines += block.layout()->lineCount();
        return lines;
    };
    QList<int> heights;
    for (const int width : {900, 160, 230, 160, 900}) {
        field.resize(width, field.height());
        const int height = field.height();
        EXPECT_EQ(height, heightFor(std::min(paintedLines(), 6))) << width;
        heights.append(height);
    }
    EXPECT_EQ(heights.first(), heightFor(2));
    EXPECT_GT(heights[1], heights[2]);
    EXPECT_EQ(heights.last(), heights.first());
}

TEST_F(ComposerFieldTest, FollowsTheSizeOfItsFont)
{
    show();
    const int before = heightOf(u"a\nb\nc"_s);
    QFont large = field.font();
    large.setPointSizeF(3 * large.pointSizeF());
    field.setFont(large);
    QCoreApplication::processEvents();
    EXPECT_GT(field.height(), 2 * before);
    EXPECT_EQ(field.verticalScrollBar()->maximum(), 0);
}

TEST_F(ComposerFieldTest, ReturnSubmitsUnlessAModifierAsksForALineBreakAtTheEnd)
{
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        bool submits;
    } table[] = {
        {Qt::Key_Return, Qt::NoModifier, true},
        {Qt::Key_Enter, Qt::KeypadModifier, true},
        {Qt::Key_Return, Qt::AltModifier, true},
        {Qt::Key_Return, Qt::ShiftModifier, false},
        {Qt::Key_Return, Qt::ControlModifier, false},
        {Qt::Key_Return, Qt::MetaModifier, false},
        {Qt::Key_Return, Qt::ShiftModifier | Qt::AltModifier, false},
        {Qt::Key_Enter, Qt::KeypadModifier | Qt::ControlModifier, false},
    };
    show();
    for (const auto& [key, modifiers, submits] : table) {
        submissions = 0;
        field.setText(u"ab"_s);
        field.moveCursor(QTextCursor::Start);
        QTest::keyClick(&field, key, modifiers);
        EXPECT_EQ(submissions, submits ? 1 : 0) << int(modifiers);
        EXPECT_EQ(field.text(), submits ? u"ab"_s : u"ab\n"_s) << int(modifiers);
        if (!submits) {
            EXPECT_TRUE(field.textCursor().atEnd());
        }
    }
}

TEST_F(ComposerFieldTest, AHeldReturnSubmitsOnce)
{
    show();
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(&field, &repeated);
    EXPECT_EQ(submissions, 0);
    EXPECT_EQ(field.text(), QString());
    EXPECT_TRUE(repeated.isAccepted());
}

TEST_F(ComposerFieldTest, AReturnWithinACompositionBelongsToTheInputMethod)
{
    show();
    field.setText(u"abc "_s);
    edits.clear();
    compose(u"にほ"_s);
    EXPECT_TRUE(edits.isEmpty()) << "an unfinished composition is no text yet";
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(submissions, 0);
    EXPECT_EQ(field.text(), u"abc "_s);
    compose({}, u"日本"_s);
    EXPECT_EQ(edits, QStringList{u"abc 日本"_s});
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(submissions, 1);
}

TEST_F(ComposerFieldTest, PastesPlainTextWithOneKindOfLineBreak)
{
    const struct {
        QString pasted;
        QString text;
    } table[] = {
        {u"a\r\nb"_s, u"a\nb"_s},
        {u"a\rb"_s, u"a\nb"_s},
        {u"a\u2028b"_s, u"a\nb"_s},
        {u"a\u2029b"_s, u"a\nb"_s},
        {u"10\u00a0000\u202f€"_s, u"10\u00a0000\u202f€"_s},
        {u"<b>a</b> & b"_s, u"<b>a</b> & b"_s},
        {u"a\tb"_s, u"a\tb"_s},
        {u"👩‍👩‍👧"_s, u"👩‍👩‍👧"_s},
    };
    for (const auto& [pasted, text] : table) {
        field.setText({});
        paste(pasted);
        EXPECT_EQ(field.text(), text);
    }
    auto* rich = new QMimeData;
    rich->setHtml(u"<b>bold</b>"_s);
    rich->setText(u"bold"_s);
    QGuiApplication::clipboard()->setMimeData(rich);
    field.setText({});
    field.paste();
    EXPECT_EQ(field.text(), u"bold"_s);
    EXPECT_FALSE(field.textCursor().charFormat().hasProperty(QTextFormat::FontWeight));
}

TEST_F(ComposerFieldTest, BearsAMegabyteInOneWord)
{
    show();
    const QString word(1'000'000, u'x');
    paste(word);
    EXPECT_EQ(field.wordWrapMode(), QTextOption::WrapAnywhere) << "else this word alone takes a minute";
    EXPECT_EQ(edits.size(), 1);
    EXPECT_TRUE(field.text() == word);
    QCoreApplication::processEvents();
    EXPECT_EQ(field.height(), heightFor(6));
    field.setText(u"short words again"_s);
    EXPECT_EQ(field.wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
    field.undo();
    EXPECT_EQ(field.wordWrapMode(), QTextOption::WrapAnywhere);
    EXPECT_EQ(field.text().size(), word.size());
}

TEST_F(ComposerFieldTest, UndoesAReplacementInOneStep)
{
    show();
    QTest::keyClicks(&field, u"/gr"_s);
    field.setText(u"Greetings\nfrom us"_s);
    EXPECT_TRUE(field.textCursor().atEnd());
    edits.clear();
    field.undo();
    EXPECT_EQ(field.text(), u"/gr"_s);
    EXPECT_EQ(edits, QStringList{u"/gr"_s});
    field.redo();
    EXPECT_EQ(field.text(), u"Greetings\nfrom us"_s);
}

} // namespace

} // namespace orvia::test
