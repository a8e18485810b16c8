#include "Views/ConversationDetailView/Composer/ComposerField.h"

#include "Theme/Theme.h"
#include "Views/Widgets/ScrollArea.h"

#include <QKeyEvent>
#include <QLayout>
#include <QMimeData>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QUrl>

#include <algorithm>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostVisibleLines = 6;
constexpr qsizetype longestWrappedWord = 10'000; // code units

/// The text of @p document. Its own plain text would turn no-break spaces into ordinary ones.
QString documentText(const QTextDocument* document)
{
    QString text = document->toRawText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    text.replace(QChar::LineSeparator, u'\n');
    return text;
}

/// Whether a run without any white space is too long for wrapping at word boundaries, whose cost grows with
/// the square of a word's length: a pasted megabyte without a space would take a minute.
bool holdsLongWord(const QString& text)
{
    qsizetype length = 0;
    for (const QChar character : text) {
        length = character.isSpace() ? 0 : length + 1;
        if (length > longestWrappedWord)
            return true;
    }
    return false;
}

/// The files that @p source stands for, as file managers copy and drag them. Their paths, which often come
/// along as a text, are no text of its own.
QList<QUrl> localFiles(const QMimeData& source)
{
    const QList<QUrl> urls = source.urls();
    const bool isLocal =
        std::all_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); });
    if (urls.isEmpty() || !isLocal)
        return {};
    const QStringList lines =
        source.hasFormat("text/plain"_L1) ? source.text().split(u'\n', Qt::SkipEmptyParts) : QStringList();
    const bool holdsText = std::any_of(lines.begin(), lines.end(), [&urls](const QString& line) {
        const QString place = line.trimmed();
        return !urls.contains(QUrl(place)) && !urls.contains(QUrl::fromLocalFile(place));
    });
    return holdsText ? QList<QUrl>() : urls;
}

/// Decides how to wrap a changed text before it is wrapped, wherever the change comes from.
class ComposerLayout : public QPlainTextDocumentLayout {
public:
    ComposerLayout(QTextDocument* document, QPlainTextEdit* field)
        : QPlainTextDocumentLayout(document)
        , m_field(field)
    {
    }

protected:
    void documentChanged(int from, int removed, int added) override
    {
        const QTextOption::WrapMode mode = holdsLongWord(document()->toRawText())
                                               ? QTextOption::WrapAnywhere
                                               : QTextOption::WrapAtWordBoundaryOrAnywhere;
        if (mode != m_field->wordWrapMode())
            m_field->setWordWrapMode(mode);
        QPlainTextDocumentLayout::documentChanged(from, removed, added);
    }

private:
    QPlainTextEdit* m_field;
};

} // namespace

ComposerField::ComposerField(QWidget* parent)
    : QPlainTextEdit(parent)
{
    setObjectName(QStringLiteral("composerField"));
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* contents = new QTextDocument(this);
    contents->setDocumentLayout(new ComposerLayout(contents, this));
    contents->setDefaultFont(font());
    setDocument(contents);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
    OverlayScrollBar::install(this);
    connect(this, &QPlainTextEdit::textChanged, this, &ComposerField::noticeChange);
    connect(&Theme::shared(), &Theme::changed, this, &ComposerField::applyTheme);
    applyTheme();
    fitHeight();
}

void ComposerField::setText(const QString& text)
{
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    setTextCursor(cursor);
}

void ComposerField::discardText()
{
    setText({});
    document()->clearUndoRedoStacks();
}

void ComposerField::setLabel(const QString& label)
{
    setPlaceholderText(label);
    setAccessibleName(label);
}

QSize ComposerField::sizeHint() const
{
    return {200, heightOfShownLines()};
}

QSize ComposerField::minimumSizeHint() const
{
    return {40, sizeHint().height()};
}

void ComposerField::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isReturn) {
        const bool leavesUpward =
            event->key() == Qt::Key_Up && !(event->modifiers() & ~Qt::KeypadModifier) && isOnFirstLine();
        QPlainTextEdit::keyPressEvent(event);
        if (leavesUpward)
            Q_EMIT leaveUpwardRequested();
        return;
    }
    // A Return that ends an input method's composition belongs to the input method.
    if (isComposing())
        return;
    if (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::MetaModifier))
        appendLineBreak();
    else if (!event->isAutoRepeat())
        Q_EMIT submitRequested();
}

bool ComposerField::canInsertFromMimeData(const QMimeData* source) const
{
    const QList<QUrl> files = localFiles(*source);
    return files.isEmpty() ? source->hasText() : files.size() == 1;
}

void ComposerField::insertFromMimeData(const QMimeData* source)
{
    const QList<QUrl> files = localFiles(*source);
    if (files.size() == 1)
        Q_EMIT fileInserted(files.front());
    if (!files.isEmpty())
        return;
    textCursor().insertText(source->text());
    ensureCursorVisible();
}

void ComposerField::resizeEvent(QResizeEvent* event)
{
    QPlainTextEdit::resizeEvent(event);
    fitHeight();
}

void ComposerField::changeEvent(QEvent* event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fitHeight();
}

void ComposerField::applyTheme()
{
    setFont(Theme::font(TextRole::body));
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, Theme::color(ColorRole::textPrimary));
    colors.setColor(QPalette::PlaceholderText, Theme::color(ColorRole::textTertiary));
    colors.setColor(QPalette::Highlight, Theme::color(ColorRole::textSelection));
    colors.setColor(QPalette::HighlightedText, Theme::color(ColorRole::textPrimary));
    setPalette(colors);
}

void ComposerField::noticeChange()
{
    // The signal also tells of a changing composition, which changes no text.
    QString now = documentText(document());
    const bool isEdited = now != m_text;
    if (isEdited)
        m_text = std::move(now);
    fitHeight();
    if (isEdited)
        Q_EMIT textEdited(m_text);
}

int ComposerField::heightOfShownLines() const
{
    qreal height = 0;
    int room = mostVisibleLines;
    for (QTextBlock block = document()->firstBlock(); block.isValid() && room > 0; block = block.next()) {
        // A paragraph is wrapped when its place is asked for; until then it counts as a single line.
        const QRectF place = blockBoundingRect(block);
        const int lines = block.layout()->lineCount();
        height += lines <= room ? place.height() : block.layout()->lineAt(room).y();
        room -= lines;
    }
    // The scroll range is reckoned with a pixel less than the height; without one more a field whose lines
    // all fit would scroll.
    return qCeil(height) + 1;
}

void ComposerField::fitHeight()
{
    const int height = sizeHint().height();
    if (height == minimumHeight() && height == maximumHeight())
        return;
    setFixedHeight(height);
    // Each layout around would learn of it one event later; the field would be cut off until then.
    for (QWidget* around = parentWidget(); around; around = around->parentWidget()) {
        if (around->layout())
            around->layout()->activate();
    }
}

bool ComposerField::isComposing() const
{
    const QTextLayout* layout = textCursor().block().layout();
    return layout && !layout->preeditAreaText().isEmpty();
}

bool ComposerField::isOnFirstLine() const
{
    const QTextCursor cursor = textCursor();
    if (cursor.blockNumber() > 0)
        return false;
    const QTextLine line = cursor.block().layout()->lineForTextPosition(cursor.positionInBlock());
    return !line.isValid() || line.lineNumber() == 0;
}

void ComposerField::appendLineBreak()
{
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertBlock();
    setTextCursor(cursor);
    ensureCursorVisible();
}

} // namespace orvia
