#include "Views/VisitorPanel/PanelRowWidgets.h"

#include "Views/VisitorPanel/PanelMetrics.h"
#include "Views/Widgets/FocusRing.h"

#include <QBoxLayout>
#include <QFocusEvent>
#include <QPainter>
#include <QStyle>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

int heightFor(TextRole role, int least)
{
    return qMax(least, QFontMetrics(Theme::font(role)).height());
}

/// Whether a focus that moves for this reason comes back to where it was.
bool isTransient(Qt::FocusReason reason)
{
    return reason == Qt::PopupFocusReason || reason == Qt::ActiveWindowFocusReason
           || reason == Qt::MenuBarFocusReason;
}

QString joined(const QStringList& parts)
{
    QStringList present = parts;
    present.removeAll(QString());
    return present.join(", "_L1);
}

} // namespace

SelectableLine::SelectableLine(QWidget* parent)
    : QLineEdit(parent)
{
    setReadOnly(true);
    setFrame(false);
    // A line edit leaves two pixels at its sides by itself.
    setTextMargins(-2, 0, -2, 0);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    FocusRing::attach(this, Radius::hit);
    applyTheme();
    connect(&Theme::shared(), &Theme::changed, this, &SelectableLine::applyTheme);
}

void SelectableLine::applyTheme()
{
    setFont(Theme::font(TextRole::callout));
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, Theme::color(ColorRole::textPrimary));
    setPalette(colors);
    updateGeometry();
}

void SelectableLine::setValue(const QString& value, const QString& description)
{
    setAccessibleName(value);
    setAccessibleDescription(description);
    if (value == m_value)
        return;
    m_value = value;
    setToolTip(shownToolTip(value));
    showText(hasFocus());
}

void SelectableLine::showText(bool whole)
{
    // Laying out a very long text takes time that is worth it only for somebody who wants to select in it.
    setText(whole ? m_value : shownLine(m_value));
    setCursorPosition(0);
}

QSize SelectableLine::sizeHint() const
{
    return {0, heightFor(TextRole::callout, PanelMetrics::lineHeight)};
}

void SelectableLine::paintEvent(QPaintEvent* event)
{
    if (hasFocus() || hasSelectedText()) {
        QLineEdit::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setPen(Theme::color(ColorRole::textPrimary));
    painter.drawText(rect(), Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(shownLine(m_value), Qt::ElideRight, width()));
}

void SelectableLine::focusInEvent(QFocusEvent* event)
{
    if (!isTransient(event->reason()))
        showText(true);
    QLineEdit::focusInEvent(event);
    update();
}

void SelectableLine::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    if (!isTransient(event->reason()))
        showText(false);
    update();
}

LabelledRow::LabelledRow(QWidget* parent)
    : QWidget(parent)
    , m_label(new PanelLine(TextRole::caption, ColorRole::textSecondary, this))
    , m_text(new SelectableLine(this))
    , m_link(new LinkButton(LinkButton::Kind::link, this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Spacing::small);
    m_label->setFixedWidth(PanelMetrics::keyWidth);
    layout->addWidget(m_label);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_link, 1);
    m_link->hide();
    connect(m_link, &QAbstractButton::clicked, this, &LabelledRow::linkClicked);
}

void LabelledRow::setTexts(const QString& label, const QString& value, bool isLink, const QString& place)
{
    m_label->setLine(label);
    m_label->show();
    const QString description = joined({label, place});
    m_isLink = isLink;
    if (isLink) {
        m_link->setTexts(value);
        m_link->setToolTip(shownToolTip(value));
        m_link->setAccessibleDescription(description);
    } else {
        m_text->setValue(value, description);
    }
    m_link->setVisible(isLink);
    m_text->setVisible(!isLink);
}

QWidget* LabelledRow::valueWidget() const
{
    return m_isLink ? static_cast<QWidget*>(m_link) : m_text;
}

int LabelledRow::rowHeight()
{
    return heightFor(TextRole::callout, PanelMetrics::tableRowHeight);
}

JourneyRow::JourneyRow(QWidget* parent)
    : PanelButton(parent)
{
}

void JourneyRow::setTexts(const QString& label, const QString& time, const QString& place)
{
    setAccessibleName(label);
    setAccessibleDescription(joined({time, place}));
    setToolTip(shownToolTip(label));
    m_label = shownLine(label);
    m_time = time;
    update();
}

int JourneyRow::rowHeight()
{
    return heightFor(TextRole::callout, PanelMetrics::journeyRowHeight);
}

void JourneyRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QFont timeFont = Theme::font(TextRole::caption);
    const int timeWidth = m_time.isEmpty() ? 0 : QFontMetrics(timeFont).horizontalAdvance(m_time) + 1;
    QRect labelArea = rect();
    if (timeWidth > 0) {
        const QRect timeArea = QStyle::alignedRect(layoutDirection(), Qt::AlignTrailing | Qt::AlignVCenter,
                                                   {timeWidth, height()}, rect());
        labelArea = QStyle::alignedRect(layoutDirection(), Qt::AlignLeading | Qt::AlignVCenter,
                                        {width() - timeWidth - Spacing::small, height()}, rect());
        painter.setFont(timeFont);
        painter.setPen(Theme::color(ColorRole::textSecondary));
        painter.drawText(timeArea, Qt::AlignCenter | Qt::TextSingleLine, m_time);
    }
    drawLine(painter, labelArea, m_label, Theme::font(TextRole::callout), ColorRole::textPrimary);
}

HistoryRow::HistoryRow(QWidget* parent)
    : PanelButton(parent)
{
}

void HistoryRow::setTexts(const QString& status, const QString& date, const QString& preview,
                          const QString& place)
{
    setAccessibleName(joined({status, date, preview}));
    setAccessibleDescription(place);
    setToolTip(shownToolTip(preview));
    m_status = status;
    m_date = date;
    m_preview = shownLine(preview);
    update();
}

int HistoryRow::rowHeight(bool hasPreview)
{
    const int first = heightFor(TextRole::bodyMedium, PanelMetrics::lineHeight);
    return hasPreview ? first + heightFor(TextRole::callout, PanelMetrics::lineHeight) : first;
}

void HistoryRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect firstLine(0, 0, width(), rowHeight(false));
    const int statusWidth =
        drawLine(painter, firstLine, m_status, Theme::font(TextRole::bodyMedium), ColorRole::textPrimary);
    const QRect dateLine = QStyle::visualRect(layoutDirection(), firstLine,
                                              firstLine.adjusted(statusWidth + Spacing::small, 0, 0, 0));
    drawLine(painter, dateLine, m_date, Theme::font(TextRole::callout), ColorRole::textSecondary);
    if (!m_preview.isEmpty())
        drawLine(painter, QRect(0, firstLine.height(), width(), rowHeight(true) - firstLine.height()),
                 m_preview, Theme::font(TextRole::callout), ColorRole::textSecondary);
}

} // namespace orvia
