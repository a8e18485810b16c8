#include "Views/ConversationDetailView/Composer/MessageComposer.h"

#include "Views/ConversationDetailView/Composer/ComposerField.h"
#include "Views/ConversationDetailView/Composer/SendButton.h"
#include "Views/Widgets/PaintShapes.h"

#include <QBoxLayout>
#include <QPainter>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int hairline = 1;
constexpr int sideMargin = 12;
constexpr int bandMargin = 10;
constexpr int gap = 4;
constexpr QSize toolSize{32, 34};
constexpr int oneLineFrame = 34;
constexpr QMargins framePadding{14, 8, 14, 6}; // the field itself ends with a spare pixel

/// The outline round the field, whose colour tells the mode.
class FieldFrame : public QWidget {
public:
    FieldFrame(ComposerField* field, const MessageComposer* composer)
        : m_field(field)
        , m_composer(composer)
    {
        setMinimumHeight(oneLineFrame);
        setCursor(Qt::IBeamCursor);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(framePadding);
        layout->addWidget(field, 0, Qt::AlignVCenter);
    }

protected:
    // A click on the padding means the text. The frame itself takes no focus, which would make it one more
    // nameless stop to assistive tools.
    void mousePressEvent(QMouseEvent*) override { m_field->setFocus(Qt::MouseFocusReason); }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        PaintShapes::outlined(
            painter, rect(), Radius::composer, Theme::color(ColorRole::field),
            Theme::color(m_composer->isNote() ? ColorRole::noteAccent : ColorRole::fieldBorder));
    }

private:
    ComposerField* m_field;
    const MessageComposer* m_composer;
};

} // namespace

MessageComposer::MessageComposer(QWidget* parent)
    : QWidget(parent)
{
    m_attach = new IconButton(u"attach"_s, tr("Attach a file"), this);
    m_attach->setObjectName(u"attachButton"_s);
    m_attach->setButtonSize(toolSize);
    connect(m_attach, &IconButton::clicked, this, &MessageComposer::attachRequested);

    m_noteMode = new IconButton(u"note"_s, tr("Switch to internal note"), this, 20, ColorRole::textSecondary);
    m_noteMode->setObjectName(u"noteModeButton"_s);
    m_noteMode->setButtonSize(toolSize);
    m_noteMode->setCheckedColors(ColorRole::noteToggle, ColorRole::noteAccent);
    m_noteMode->setCheckable(true);
    connect(m_noteMode, &IconButton::clicked, this, [this] {
        setNote(!m_isNote);
        // Who chooses the mode with the pointer writes next.
        if (!m_noteMode->hasFocus())
            focusField();
    });

    m_field = new ComposerField(this);
    m_field->setLabel(tr("Message"));
    connect(m_field, &ComposerField::textEdited, this, [this](const QString& text) {
        updateSendButton();
        Q_EMIT textChanged(text);
    });
    connect(m_field, &ComposerField::submitRequested, this, &MessageComposer::requestSend);
    connect(m_field, &ComposerField::fileInserted, this, &MessageComposer::fileInserted);
    m_frame = new FieldFrame(m_field, this);

    m_send = new SendButton(this);
    connect(m_send, &SendButton::clicked, this, &MessageComposer::requestSend);
    // A click on a button leaves the cursor in the draft.
    for (QWidget* button :
         {static_cast<QWidget*>(m_attach), static_cast<QWidget*>(m_noteMode), static_cast<QWidget*>(m_send)})
        button->setFocusPolicy(Qt::TabFocus);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(sideMargin, hairline + bandMargin, sideMargin, bandMargin);
    row->setSpacing(gap);
    row->addWidget(m_attach, 0, Qt::AlignBottom);
    row->addWidget(m_noteMode, 0, Qt::AlignBottom);
    row->addSpacing(gap);
    row->addWidget(m_frame, 1);
    row->addSpacing(bandMargin - gap);
    // The circle is lower than a line's frame and stands in the middle of it.
    auto* sendColumn = new QVBoxLayout;
    sendColumn->setContentsMargins(0, 0, 0, (oneLineFrame - m_send->sizeHint().height()) / 2);
    sendColumn->addWidget(m_send, 0, Qt::AlignBottom);
    row->addLayout(sendColumn);
    // The frame took the field over, which put it behind the button.
    setTabOrder(m_noteMode, m_field);
    setTabOrder(m_field, m_send);
    updateSendButton();
}

QString MessageComposer::text() const
{
    return m_field->text();
}

void MessageComposer::setText(const QString& text)
{
    m_field->setText(text);
}

void MessageComposer::discardText()
{
    m_field->discardText();
}

void MessageComposer::setNote(bool isNote)
{
    if (m_isNote == isNote)
        return;
    m_isNote = isNote;
    m_noteMode->setChecked(isNote);
    m_noteMode->setHelpText(isNote ? tr("Switch to reply") : tr("Switch to internal note"));
    m_field->setLabel(isNote ? tr("Internal note") : tr("Message"));
    m_send->setNote(isNote);
    m_frame->update();
    Q_EMIT noteChanged(isNote);
}

void MessageComposer::setSending(bool isSending)
{
    m_isSending = isSending;
    updateSendButton();
}

bool MessageComposer::isUploading() const
{
    return m_attach->isBusy();
}

void MessageComposer::setUploading(bool isUploading)
{
    const bool hadFocus = m_attach->hasFocus();
    m_attach->setBusy(isUploading);
    m_attach->setEnabled(!isUploading);
    if (isUploading && hadFocus)
        focusField();
}

bool MessageComposer::canSend() const
{
    return !m_isSending && !m_field->text().trimmed().isEmpty();
}

void MessageComposer::focusField()
{
    m_field->setFocus(Qt::OtherFocusReason);
}

void MessageComposer::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Theme::color(ColorRole::window));
    PaintShapes::hairLine(painter, 0, width(), 0);
}

void MessageComposer::updateSendButton()
{
    const bool hadFocus = m_send->hasFocus();
    m_send->setEnabled(canSend());
    // A disabled button cannot keep the focus; the next thing to do is to type.
    if (hadFocus && !m_send->isEnabled())
        focusField();
}

void MessageComposer::requestSend()
{
    if (canSend())
        Q_EMIT sendRequested();
}

} // namespace orvia
