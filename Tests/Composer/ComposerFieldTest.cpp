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
    void paste(const QString& text)
    {
        auto* rich = new QMimeData;
        rich->setHtml(u"<b>bold</b>"_s);
        rich->setText(text);
        QGuiApplication::clipboard()->setMimeData(rich);
        field.paste();
    }
    void compose(const QString& preedit, const QString& commit = {})
    {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QCoreApplication::sendEvent(&field, &event);
    }

    /// The height of a field with that many lines, and the pixel that keeps it from scrolling.
    int heightFor(int lines) { return line * lines + 1; }

    QWidget window;
    ComposerField field{&window};
    const int line = QFontMetrics(field.font()).lineSpacing();
    int submissions = 0;
    QStringList edits;
};

TEST_F(ComposerFieldTest, GrowsWithItsLinesToSixThenScrolls)
{
    // Two paragraphs of some lines each, set before it is shown: none may count as a single line.
    field.setText(u"one two three four five six seven\neight nine ten eleven twelve thirteen"_s);
    show();
    const auto paintedLines = [this] {
        int lines = 0;
        field.grab();
        for (QTextBlock block = field.document()->begin(); block.isValid(); block = block.next())
            lines += block.layout()->lineCount();
        return lines;
    };
    for (const int width : {160, 230, 160, 900}) {
        field.resize(width, field.height());
        const int height = field.height();
        EXPECT_EQ(height, heightFor(std::min(paintedLines(), 6))) << width;
    }
    for (const int lines : {2, 6, 9, 1}) {
        field.setText(QStringList(lines, u"a"_s).join(u'\n'));
        QCoreApplication::processEvents();
        EXPECT_EQ(field.height(), heightFor(std::min(lines, 6))) << lines;
        const int scrolled = std::max(lines - 6, 0);
        EXPECT_EQ(field.verticalScrollBar()->maximum(), scrolled) << lines;
        EXPECT_EQ(field.verticalScrollBar()->value(), scrolled) << "the cursor's line must be in sight";
    }
}

TEST_F(ComposerFieldTest, ReturnSubmitsOnceUnlessAModifierAsksForALineBreakAtTheEnd)
{
    const std::pair<Qt::KeyboardModifiers, bool> table[] = {
        {Qt::NoModifier, true},     {Qt::KeypadModifier, true},   {Qt::AltModifier, true},
        {Qt::ShiftModifier, false}, {Qt::ControlModifier, false}, {Qt::MetaModifier, false},
    };
    show();
    for (const auto& [modifiers, submits] : table) {
        submissions = 0;
        field.setText(u"ab"_s);
        field.moveCursor(QTextCursor::Start);
        QTest::keyClick(&field, modifiers == Qt::KeypadModifier ? Qt::Key_Enter : Qt::Key_Return, modifiers);
        EXPECT_EQ(submissions, submits ? 1 : 0) << int(modifiers);
        EXPECT_EQ(field.text(), submits ? u"ab"_s : u"ab\n"_s) << int(modifiers);
        EXPECT_EQ(field.textCursor().atEnd(), !submits);
    }
    submissions = 0;
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, u"\r"_s, true);
    QCoreApplication::sendEvent(&field, &held);
    EXPECT_EQ(submissions, 0);
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
    paste(u"a\r\nb\u2028<b>10\u00a0000\u202f€</b> & c"_s);
    EXPECT_EQ(field.text(), u"a\nb\n<b>10\u00a0000\u202f€</b> & c"_s);
    EXPECT_FALSE(field.textCursor().charFormat().hasProperty(QTextFormat::FontWeight));
}

TEST_F(ComposerFieldTest, AFilePastedOrDroppedIsNoText)
{
    std::vector<QUrl> inserted;
    QObject::connect(&field, &ComposerField::fileInserted, &field,
                     [&](const QUrl& file) { inserted.push_back(file); });
    const QUrl file = QUrl::fromLocalFile(u"/home/mara/a b.txt"_s);
    const auto pasteURLs = [this](const QList<QUrl>& urls, const QString& text) {
        auto* data = new QMimeData;
        data->setUrls(urls);
        if (!text.isNull())
            data->setText(text);
        QGuiApplication::clipboard()->setMimeData(data);
        field.paste();
    };
    pasteURLs({file}, {});
    pasteURLs({file}, file.toLocalFile());
    pasteURLs({file}, file.toString(QUrl::FullyEncoded) + u"\r\n"_s);
    EXPECT_EQ(inserted, std::vector<QUrl>(3, file));
    pasteURLs({file, QUrl::fromLocalFile(u"/home/mara/c"_s)}, {});
    EXPECT_EQ(field.text(), QString());
    pasteURLs({file}, u"a cell of a table"_s);
    EXPECT_EQ(field.text(), u"a cell of a table"_s);
    field.setText({});
    pasteURLs({QUrl(u"https://shop.example/"_s)}, {});
    EXPECT_EQ(field.text(), u"https://shop.example/"_s);
    EXPECT_EQ(inserted.size(), 3U);
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

} // namespace

} // namespace orvia::test
