#include "Views/Widgets/Picker.h"

#include "Platform/ShownText.h"
#include "Theme/Theme.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QWheelEvent>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int leadingPadding = 10;
constexpr int trailingPadding = 6;
constexpr int indicatorSize = 14;
constexpr int indicatorGap = 8;
constexpr int elisionSlack = 2; // metrics and painting may round differently
constexpr int popupRowHeight = 28;
constexpr int popupPadding = 4;

/// Rows that look like the items of a menu, the current choice with a check mark.
class PopupDelegate : public QStyledItemDelegate {
public:
    explicit PopupDelegate(QComboBox* picker)
        : QStyledItemDelegate(picker)
        , m_picker(picker)
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const bool highlighted = option.state.testFlag(QStyle::State_Selected);
        const QRect row = option.rect.adjusted(popupPadding, 0, -popupPadding, 0);
        if (highlighted)
            PaintShapes::fillRounded(*painter, row, Radius::menuItem, Theme::color(ColorRole::menuHighlight));
        const ColorRole role = highlighted ? ColorRole::menuHighlightText : ColorRole::textPrimary;
        const QRect inner = row.adjusted(leadingPadding, 0, -leadingPadding, 0);
        painter->setFont(Theme::font(TextRole::body));
        painter->setPen(Theme::color(role));
        const QRect textArea = inner.adjusted(0, 0, -indicatorSize - indicatorGap, 0);
        const QString text = shownLine(index.data(Qt::DisplayRole).toString());
        painter->setClipRect(row);
        painter->drawText(textArea, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                          painter->fontMetrics().elidedText(text, Qt::ElideRight, textArea.width()));
        if (index.row() == m_picker->currentIndex())
            Theme::drawIcon(
                *painter, QRectF(inner.right() + 1 - indicatorSize, inner.y(), indicatorSize, inner.height()),
                u"check"_s, indicatorSize, role);
    }

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override
    {
        const QFontMetrics metrics(Theme::font(TextRole::body));
        return {metrics.horizontalAdvance(shownLine(index.data(Qt::DisplayRole).toString())) + indicatorSize
                    + indicatorGap + 2 * (leadingPadding + popupPadding),
                std::max(popupRowHeight, metrics.height() + Spacing::medium)};
    }

private:
    QComboBox* m_picker;
};

} // namespace

Picker::Picker(const QString& label, QWidget* parent)
    : QComboBox(parent)
{
    setAccessibleName(label);
    setAccessibleDescription(label);
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setItemDelegate(new PopupDelegate(this));
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    FocusRing::attach(this, Radius::button);
    connect(this, &QComboBox::currentIndexChanged, this, &QWidget::updateGeometry);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

QSize Picker::sizeHint() const
{
    const QFontMetrics metrics(Theme::font(TextRole::body));
    return {metrics.horizontalAdvance(shownLine(currentText())) + leadingPadding + indicatorGap
                + indicatorSize + trailingPadding + 2,
            std::max(static_cast<int>(Metric::fieldHeight), metrics.height() + Spacing::small)};
}

QSize Picker::minimumSizeHint() const
{
    return {leadingPadding * 6, sizeHint().height()};
}

bool Picker::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QComboBox::event(event);
}

void Picker::keyPressEvent(QKeyEvent* event)
{
    // Return belongs to the default button of a sheet; Space opens the rows.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        event->ignore();
    else
        QComboBox::keyPressEvent(event);
}

void Picker::wheelEvent(QWheelEvent* event)
{
    // Scrolling a form must not change a choice that happens to pass under the pointer.
    event->ignore();
}

void Picker::showPopup()
{
    int widest = width();
    for (int row = 0; row < count(); ++row)
        widest = std::max(widest, itemDelegate()->sizeHint({}, model()->index(row, 0)).width() + 2);
    view()->setMinimumWidth(widest);
    colorPopup();
    // Only from now on: the rows' view is made when it is first asked for.
    connect(&Theme::shared(), &Theme::changed, this, &Picker::colorPopup, Qt::UniqueConnection);
    QComboBox::showPopup();
}

void Picker::colorPopup()
{
    QPalette colors = view()->palette();
    colors.setColor(QPalette::Base, Theme::color(ColorRole::menu));
    view()->setPalette(colors);
}

void Picker::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const ColorRole fill = !isEnabled()   ? ColorRole::button
                           : underMouse() ? ColorRole::buttonHover
                                          : ColorRole::button;
    PaintShapes::outlined(painter, rect(), Radius::button, Theme::color(fill),
                          Theme::color(ColorRole::fieldBorder));
    const ColorRole role = isEnabled() ? ColorRole::buttonText : ColorRole::textDisabled;
    const QRect area = rect().adjusted(leadingPadding + 1, 0, -trailingPadding - 1, 0);
    const QRect textArea = area.adjusted(0, 0, -indicatorSize - indicatorGap, 0);
    painter.setFont(Theme::font(TextRole::body));
    painter.setPen(Theme::color(role));
    painter.drawText(textArea, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(shownLine(currentText()), Qt::ElideRight,
                                                      textArea.width() + elisionSlack));
    Theme::drawIcon(painter, QRectF(area.right() + 1 - indicatorSize, 0, indicatorSize, height()),
                    u"chevron-up-down"_s, indicatorSize,
                    isEnabled() ? ColorRole::icon : ColorRole::textDisabled);
}

} // namespace orvia
