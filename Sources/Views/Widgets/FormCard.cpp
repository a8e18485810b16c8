#include "Views/Widgets/FormCard.h"

#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/Switch.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QVBoxLayout>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowHeight = 40;
constexpr int rowPadding = 12;
constexpr int fieldWidth = 252;
constexpr int headingHeight = 16;
constexpr int headingInset = 12;
constexpr int headingGap = 6;
constexpr int linkIconSize = 18;
constexpr int linkIconGap = 12;
constexpr int chevronSize = 14;

} // namespace

FormCard::FormCard(QWidget* parent)
    : QWidget(parent)
    , m_rows(new QVBoxLayout(this))
{
    // The first and last pixel are the card's outline, the pixel between two rows is their hairline.
    m_rows->setContentsMargins(1, 1, 1, 1);
    m_rows->setSpacing(1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void FormCard::addRow(QWidget* row)
{
    insertRow(rowCount(), row);
}

void FormCard::insertRow(int index, QWidget* row)
{
    m_rows->insertWidget(index, row);
    update();
}

void FormCard::removeRow(QWidget* row)
{
    m_rows->removeWidget(row);
    row->hide();
    row->deleteLater();
    update();
}

void FormCard::clear()
{
    while (rowCount() > 0)
        removeRow(row(rowCount() - 1));
}

int FormCard::rowCount() const
{
    return m_rows->count();
}

QWidget* FormCard::row(int index) const
{
    return m_rows->itemAt(index)->widget();
}

void FormCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    PaintShapes::outlined(painter, rect(), Radius::card, Theme::color(ColorRole::card),
                          Theme::color(ColorRole::hairline));
    for (int index = 0; index + 1 < rowCount(); ++index) {
        const QWidget* above = row(index);
        if (above->isVisibleTo(this))
            PaintShapes::hairLine(painter, 1, width() - 1, above->geometry().bottom() + 1);
    }
}

FormSection::FormSection(const QString& heading, QWidget* parent)
    : QWidget(parent)
    , m_card(new FormCard)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(headingGap);
    if (!heading.isEmpty()) {
        auto* title = new Label(heading, TextRole::captionStrong, ColorRole::textSecondary);
        title->setContentsMargins(headingInset, 0, headingInset, 0);
        title->setMinimumHeight(headingHeight);
        column->addWidget(title);
        setAccessibleName(heading);
    }
    column->addWidget(m_card);
}

void FormSection::setFooter(const QString& text)
{
    if (!m_footer) {
        m_footer = new Label({}, TextRole::caption, ColorRole::textSecondary);
        m_footer->setContentsMargins(headingInset, 0, headingInset, 0);
        m_footer->setWordWrap(true);
        layout()->addWidget(m_footer);
    }
    m_footer->setText(text);
    m_footer->setVisible(!text.isEmpty());
}

FormRow::FormRow(const QString& label, QWidget* control, QWidget* parent)
    : QWidget(parent)
{
    build(label, control);
}

FormRow::FormRow(const QString& label, const QString& value, QWidget* parent)
    : QWidget(parent)
    , m_value(new ElidedLabel(value, TextRole::body, ColorRole::textSecondary))
{
    m_value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_value->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_value->setAccessibleDescription(label);
    build(label, m_value);
}

void FormRow::setValue(const QString& value)
{
    m_value->setText(value);
}

void FormRow::build(const QString& label, QWidget* control)
{
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(rowPadding, Spacing::xSmall, rowPadding, Spacing::xSmall);
    line->setSpacing(Spacing::medium);
    auto* title = new ElidedLabel(label);
    line->addWidget(title);
    if (!m_value)
        line->addStretch(1);
    line->addWidget(control);
    if (auto* field = qobject_cast<QLineEdit*>(control)) {
        field->setAccessibleName(label);
        field->setFixedWidth(fieldWidth);
    } else if (qobject_cast<QComboBox*>(control)) {
        control->setAccessibleName(label);
        control->setAccessibleDescription(label);
    } else if (!m_value) {
        control->setAccessibleName(label);
    }
    if (auto* toggle = qobject_cast<Switch*>(control))
        toggle->setLabel(title);
    setMinimumHeight(rowHeight - 1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

FormActionRow::FormActionRow(const QString& iconName, const QString& text, QWidget* parent)
    : BusyButton(parent)
    , m_iconName(iconName)
    , m_text(text)
{
    prepare();
}

FormActionRow::FormActionRow(const QString& text, ColorRole color, QWidget* parent)
    : BusyButton(parent)
    , m_text(text)
    , m_color(color)
{
    prepare();
}

void FormActionRow::prepare()
{
    setAccessibleName(m_text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    FocusRing::attach(this, Radius::highlight, FocusRing::Policy::keyboard, -3);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

QSize FormActionRow::sizeHint() const
{
    const QFontMetrics metrics(Theme::font(TextRole::body));
    return {metrics.horizontalAdvance(m_text) + 2 * (rowPadding + linkIconSize + linkIconGap),
            std::max(rowHeight - 1, metrics.height() + 2 * Spacing::small)};
}

void FormActionRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool live = isEnabled() && !isBusy();
    if (live && (isDown() || underMouse()))
        PaintShapes::fillRounded(painter, QRectF(rect()).adjusted(3, 3, -3, -3), Radius::highlight,
                                 Theme::color(isDown() ? ColorRole::pressed : ColorRole::hover));
    if (isBusy())
        return;
    QRect area = rect().adjusted(rowPadding, 0, -rowPadding, 0);
    if (!m_iconName.isEmpty()) {
        Theme::drawIcon(painter, QRectF(area.x(), 0, linkIconSize, height()), m_iconName, linkIconSize,
                        ColorRole::icon);
        Theme::drawIcon(painter, QRectF(area.right() + 1 - chevronSize, 0, chevronSize, height()),
                        u"chevron-right"_s, chevronSize, ColorRole::textSecondary);
        area.adjust(linkIconSize + linkIconGap, 0, -chevronSize - linkIconGap, 0);
    }
    painter.setFont(Theme::font(TextRole::body));
    painter.setPen(Theme::color(isEnabled() ? m_color : ColorRole::textDisabled));
    painter.drawText(area, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(m_text, Qt::ElideRight, area.width()));
}

} // namespace orvia
