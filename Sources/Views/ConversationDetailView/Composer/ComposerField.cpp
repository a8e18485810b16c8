#include "Views/ConversationDetailView/Composer/ComposerField.h"

#include "Theme/Theme.h"
#include "Views/Widgets/ScrollArea.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace orvia {

namespace {

constexpr int mostVisibleLines = 6;

} // namespace

ComposerField::ComposerField(QWidget* parent)
    : QPlainTextEdit(parent)
{
    setObjectName(QStringLiteral("composerField"));
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
    OverlayScrollBar::install(this);
    connect(this, &QPlainTextEdit::textChanged, this, &ComposerField::noticeChange);
    connect(&Theme::shared(), &Theme::changed, this, &ComposerField::applyTheme);
    applyTheme();
}

QString ComposerField::text() const
{
    // The document's own plain text would turn no-break spaces into ordinary ones.
    QString text = document()->toRawText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    text.replace(QChar::LineSeparator, u'\n');
    return text;
}

void ComposerField::setText(const QString& text)
{
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    setTextCursor(cursor);
}

void ComposerField::setLabel(const QString& label)
{
    setPlaceholderText(label);
    setAccessibleName(label);
}

QSize ComposerField::sizeHint() const
{
    const int lineHeight = fontMetrics().lineSpacing();
    const int lines = std::max(1, qRound(document()->size().height()));
    return {200, std::min(lines, mostVisibleLines) * lineHeight};
}

QSize ComposerField::minimumSizeHint() const
{
    return {40, sizeHint().height()};
}

void ComposerField::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isReturn) {
        QPlainTextEdit::keyPressEvent(event);
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
    return source->hasText();
}

void ComposerField::insertFromMimeData(const QMimeData* source)
{
    textCursor().insertText(source->text());
    ensureCursorVisible();
}

void ComposerField::resizeEvent(QResizeEvent* event)
{
    QPlainTextEdit::resizeEvent(event);
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
    fitHeight();
}

void ComposerField::noticeChange()
{
    fitHeight();
    // The signal also tells of a changing composition, which changes no text.
    const QString now = text();
    if (now == m_lastText)
        return;
    m_lastText = now;
    Q_EMIT textEdited(now);
}

void ComposerField::fitHeight()
{
    const int height = sizeHint().height();
    if (height == minimumHeight() && height == maximumHeight())
        return;
    setFixedHeight(height);
    updateGeometry();
    if (qRound(document()->size().height()) <= mostVisibleLines)
        verticalScrollBar()->setValue(0);
}

bool ComposerField::isComposing() const
{
    const QTextLayout* layout = textCursor().block().layout();
    return layout && !layout->preeditAreaText().isEmpty();
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
