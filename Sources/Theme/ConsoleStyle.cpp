#include "Theme/ConsoleStyle.h"

#include "Theme/Theme.h"

#include <QFocusFrame>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolTip>

#include <cmath>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int menuMargin = 4;
constexpr int menuItemHeight = 28;
constexpr int menuSectionHeight = 24;
constexpr int menuPadding = 10;
constexpr int menuIconSize = 16;
constexpr int menuIconGap = 8;
constexpr int scrollBarExtent = 10;
constexpr int scrollHandleWidth = 6;
constexpr int scrollHandleMinimum = 24;
constexpr int focusRingWidth = 2;
constexpr int largestFocusGap = 2;

QPainterPath roundedRect(const QRectF& rect, qreal radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

void drawFrame(QPainter& painter, const QRect& rect, ColorRole fill, ColorRole border, qreal radius)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(roundedRect(rect, radius), Theme::color(border));
    painter.fillPath(roundedRect(QRectF(rect).adjusted(1, 1, -1, -1), radius - 1), Theme::color(fill));
    painter.restore();
}

void drawFocusRing(QPainter& painter, const QRect& rect, qreal radius)
{
    const qreal half = focusRingWidth / 2.0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Theme::color(ColorRole::focusRing), focusRingWidth));
    painter.drawRoundedRect(QRectF(rect).adjusted(half, half, -half, -half), radius, radius);
    painter.restore();
}

const QWidget* focusFrameTarget(const QWidget* widget)
{
    const auto* frame = qobject_cast<const QFocusFrame*>(widget);
    return frame ? frame->widget() : nullptr;
}

/// Distance between the widget's edge and its ring.
int focusGap(const QWidget* target)
{
    const QVariant gap = target ? target->property("focusRingGap") : QVariant();
    return gap.isValid() ? gap.toInt() : largestFocusGap;
}

void drawScrollHandle(QPainter& painter, const QRect& handle, Qt::Orientation orientation)
{
    // Six wide, two from the outer edge.
    const QRect bar = orientation == Qt::Vertical
                          ? QRect(handle.right() + 1 - 2 - scrollHandleWidth, handle.y() + 2,
                                  scrollHandleWidth, handle.height() - 4)
                          : QRect(handle.x() + 2, handle.bottom() + 1 - 2 - scrollHandleWidth,
                                  handle.width() - 4, scrollHandleWidth);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(roundedRect(bar, scrollHandleWidth / 2.0), Theme::color(ColorRole::scrollHandle));
    painter.restore();
}

} // namespace

ConsoleStyle::ConsoleStyle()
    : QProxyStyle(QStyleFactory::create(u"Fusion"_s))
{
}

void ConsoleStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    // A tooltip's text may come from the network; Qt would show what looks like markup as such.
    if (widget->inherits("QTipLabel")) {
        if (auto* label = qobject_cast<QLabel*>(widget))
            label->setTextFormat(Qt::PlainText);
    }
}

int ConsoleStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return menuMargin;
    case PM_SubMenuOverlap:
        return -1;
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return scrollHandleMinimum;
    case PM_ScrollView_ScrollBarSpacing:
    case PM_ScrollView_ScrollBarOverlap:
        return 0;
    case PM_FocusFrameHMargin:
    case PM_FocusFrameVMargin:
        return focusRingWidth + largestFocusGap;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int ConsoleStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* returnData) const
{
    switch (hint) {
    case SH_FocusFrame_AboveWidget:
        return 1;
    case SH_FocusFrame_Mask:
        return 0;
    case SH_Menu_SupportsSections:
    case SH_Menu_Scrollable: // Columns beside each other would leave the screen with a large team.
        return 1;
    case SH_Menu_Mask:
        if (auto* mask = qstyleoption_cast<QStyleHintReturnMask*>(returnData); mask && option) {
            const QRectF rect = QRectF(option->rect);
            mask->region = QRegion(roundedRect(rect, Radius::highlight).toFillPolygon().toPolygon());
            return 1;
        }
        return 0;
    case SH_ComboBox_Popup:
        return 0;
    case SH_LineEdit_PasswordCharacter:
        return 0x2022;
    case SH_EtchDisabledText:
        return 0;
    case SH_ScrollBar_ContextMenu:
        return 0;
    case SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

void ConsoleStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const
{
    switch (element) {
    case PE_PanelMenu:
        drawFrame(*painter, option->rect, ColorRole::menu, ColorRole::menuBorder, Radius::highlight);
        break;
    case PE_FrameMenu:
        break;
    case PE_PanelTipLabel:
        drawFrame(*painter, option->rect, ColorRole::menu, ColorRole::menuBorder, 0);
        break;
    case PE_FrameFocusRect:
        break; // The console's controls show their focus by a ring around them.
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void ConsoleStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const
{
    switch (element) {
    case CE_FocusFrame: {
        // Every frame is larger than its widget by the same margin; the ring lies as far inside it as its gap
        // asks.
        const QWidget* target = focusFrameTarget(widget);
        const qreal radius = target ? target->property("focusRingRadius").toReal() : Radius::button;
        const int inset = largestFocusGap - focusGap(target);
        drawFocusRing(*painter, option->rect.adjusted(inset, inset, -inset, -inset),
                      std::max(1.0, radius + focusGap(target) + focusRingWidth / 2.0));
        break;
    }
    case CE_MenuItem:
        drawMenuItem(option, painter, widget);
        break;
    case CE_MenuEmptyArea:
    case CE_MenuHMargin:
    case CE_MenuVMargin:
        break;
    case CE_ScrollBarSlider: {
        const bool horizontal = option->state.testFlag(State_Horizontal);
        drawScrollHandle(*painter, option->rect, horizontal ? Qt::Horizontal : Qt::Vertical);
        break;
    }
    case CE_ScrollBarAddLine:
    case CE_ScrollBarSubLine:
    case CE_ScrollBarAddPage:
    case CE_ScrollBarSubPage:
        break;
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

QSize ConsoleStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                     const QWidget* widget) const
{
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (type != CT_MenuItem || !item)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    if (item->menuItemType == QStyleOptionMenuItem::Separator)
        return {size.width(), item->text.isEmpty()
                                  ? 2 * Spacing::xSmall + 1
                                  : std::max(menuSectionHeight, item->fontMetrics.height() + 6)};
    int width = item->fontMetrics.size(Qt::TextShowMnemonic, item->text.section(u'\t', 0, 0)).width();
    if (item->text.contains(u'\t'))
        width += item->reservedShortcutWidth + Spacing::large;
    width += 2 * menuPadding;
    if (item->menuHasCheckableItems || !item->icon.isNull()
        || item->menuItemType == QStyleOptionMenuItem::SubMenu)
        width += menuIconSize + menuIconGap;
    return {width, std::max(menuItemHeight, item->fontMetrics.height() + 2 * Spacing::iconGap)};
}

void ConsoleStyle::drawMenuItem(const QStyleOption* option, QPainter* painter, const QWidget*) const
{
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (!item)
        return;
    painter->save();
    const QRect inner = item->rect.adjusted(menuPadding, 0, -menuPadding, 0);
    if (item->menuItemType == QStyleOptionMenuItem::Separator) {
        if (item->text.isEmpty()) {
            painter->fillRect(QRect(inner.x(), item->rect.center().y(), inner.width(), 1),
                              Theme::color(ColorRole::hairline));
        } else {
            painter->setFont(Theme::font(TextRole::captionStrong));
            painter->setPen(Theme::color(ColorRole::textTertiary));
            painter->drawText(inner, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextHideMnemonic, item->text);
        }
        painter->restore();
        return;
    }
    const bool enabled = item->state.testFlag(State_Enabled);
    const bool highlighted = enabled && item->state.testFlag(State_Selected);
    if (highlighted) {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->fillPath(roundedRect(item->rect, Radius::menuItem), Theme::color(ColorRole::menuHighlight));
    }
    const ColorRole role = !enabled      ? ColorRole::textDisabled
                           : highlighted ? ColorRole::menuHighlightText
                                         : ColorRole::textPrimary;
    QRect textRect = inner;
    if (!item->icon.isNull()) {
        const QRect iconRect(inner.x(), inner.center().y() - menuIconSize / 2 + 1, menuIconSize,
                             menuIconSize);
        item->icon.paint(painter, iconRect, Qt::AlignCenter, enabled ? QIcon::Normal : QIcon::Disabled);
        textRect.setLeft(iconRect.right() + 1 + menuIconGap);
    }
    const QRectF mark(inner.right() + 1 - menuIconSize, inner.y(), menuIconSize, inner.height());
    if (item->checkType != QStyleOptionMenuItem::NotCheckable && item->checked)
        Theme::drawIcon(*painter, mark, u"check"_s, menuIconSize, role);
    if (item->menuItemType == QStyleOptionMenuItem::SubMenu)
        Theme::drawIcon(*painter, mark, u"chevron-right"_s, 14, role);
    painter->setFont(item->font);
    painter->setPen(Theme::color(role));
    const int flags = Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine
                      | (styleHint(SH_UnderlineShortcut, option, nullptr, nullptr) ? Qt::TextShowMnemonic
                                                                                   : Qt::TextHideMnemonic);
    painter->drawText(textRect, flags, item->text.section(u'\t', 0, 0));
    if (item->text.contains(u'\t'))
        painter->drawText(inner, Qt::AlignVCenter | Qt::AlignRight | Qt::TextHideMnemonic,
                          item->text.section(u'\t', 1));
    painter->restore();
}

} // namespace orvia
