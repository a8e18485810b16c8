#pragma once

#include <QWidget>

namespace orvia {

class ComposerField;
class IconButton;
class SendButton;

/// The composer's row: attach, note mode, the field, send. It shows what it is told and reports what the
/// agent does; what that means is its owner's business.
class MessageComposer : public QWidget {
    Q_OBJECT

public:
    explicit MessageComposer(QWidget* parent = nullptr);

    QString text() const;
    void setText(const QString& text);
    /// Empties the field for good, out of reach of undoing.
    void discardText();
    bool isNote() const { return m_isNote; }
    void setNote(bool isNote);
    bool isSending() const { return m_isSending; }
    void setSending(bool isSending);
    bool isUploading() const;
    void setUploading(bool isUploading);
    /// Whether the text, trimmed, is not empty and nothing is being sent. An upload does not matter.
    bool canSend() const;

    void focusField();
    ComposerField& field() { return *m_field; }

Q_SIGNALS:
    /// The send button was clicked, or Return pressed, while @c canSend.
    void sendRequested();
    void attachRequested();
    /// A file was pasted or dropped into the field.
    void fileInserted(const QUrl& file);
    void textChanged(const QString& text);
    void noteChanged(bool isNote);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void updateSendButton();
    void requestSend();

    IconButton* m_attach;
    IconButton* m_noteMode;
    QWidget* m_frame;
    ComposerField* m_field;
    SendButton* m_send;
    bool m_isNote = false;
    bool m_isSending = false;
};

} // namespace orvia
