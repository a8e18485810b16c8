#pragma once

#include <QPlainTextEdit>

namespace orvia {

/// The composer's plain text: grows from one line to six, then scrolls. Return asks to submit; with Shift,
/// Control or the command key it adds a line break at the end. What is pasted or dropped comes in as text,
/// but for files.
class ComposerField : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit ComposerField(QWidget* parent = nullptr);

    /// The text as typed, with "\n" between lines and no-break spaces kept.
    const QString& text() const { return m_text; }
    /// Replaces the whole text as one step that can be undone, and puts the cursor at its end.
    void setText(const QString& text);
    /// Empties the field for good: nothing of the text can be brought back.
    void discardText();
    /// Sets placeholder and accessible name.
    void setLabel(const QString& label);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The text is a different one now. An input method's unfinished composition is not part of it.
    void textEdited(const QString& text);
    void submitRequested();
    /// A file of this machine was pasted or dropped; of several at once nothing is taken.
    void fileInserted(const QUrl& file);
    /// Up was pressed with the cursor on the first line.
    void leaveUpwardRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyTheme();
    void noticeChange();
    int heightOfShownLines() const;
    void fitHeight();
    bool isComposing() const;
    bool isOnFirstLine() const;
    void appendLineBreak();

    QString m_text; ///< what the document held when it last changed
};

} // namespace orvia
