#include "Views/Widgets/Button.h"

#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/Spinner.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>

namespace orvia {

namespace {

constexpr int spinnerSize = 16;
constexpr int labelPadding = 14;

/// Qt's own interface of a push button cannot say that the button is busy.
class ButtonAccessible : public QAccessibleWidget {
public:
    explicit ButtonAccessible(BusyButton* button)
        : QAccessibleWidget(button, QAccessible::Button)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = button()->isBusy();
        state.pressed = button()->isDown();
        state.checkable = button()->isCheckable();
        state.checked = button()->isChecked();
        return state;
    }

    QStringList actionNames() const override
    {
        if (!button()->isEnabled())
            return {};
        QStringList names{button()->isCheckable() ? toggleAction() : pressAction()};
        if (button()->focusPolicy() != Qt::NoFocus)
            names << setFocusAction();
        return names;
    }

    void doAction(const QString& name) override
    {
        if (name == pressAction() || name == toggleAction())
            button()->animateClick();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    BusyButton* button() const { return static_cast<BusyButton*>(widget()); }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* button = qobject_cast<BusyButton*>(object);
    return button ? new ButtonAccessible(button) : nullptr;
}

} // namespace

bool clickOnReturn(QAbstractButton& button, const QKeyEvent& event)
{
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter)
        return false;
    if (!event.isAutoRepeat())
        button.click();
    return true;
}

BusyButton::BusyButton(QWidget* parent)
    : QPushButton(parent)
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed)
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
}

void BusyButton::setBusy(bool busy)
{
    if (busy == m_busy)
        return;
    m_busy = busy;
    if (busy && !m_spinner)
        m_spinner = new Spinner(spinnerSize, spinnerColor(), this);
    if (m_spinner) {
        m_spinner->setColor(spinnerColor());
        placeSpinner();
        m_spinner->setVisible(busy);
    }
    update();
    QAccessible::State changed;
    changed.busy = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

bool BusyButton::hitButton(const QPoint& position) const
{
    return !m_busy && rect().contains(position);
}

void BusyButton::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Select:
        if (m_busy)
            return;
        break;
    default:
        break;
    }
    if (!clickOnReturn(*this, *event))
        QPushButton::keyPressEvent(event);
}

void BusyButton::resizeEvent(QResizeEvent* event)
{
    QPushButton::resizeEvent(event);
    placeSpinner();
}

bool BusyButton::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QPushButton::event(event);
}

void BusyButton::placeSpinner()
{
    if (m_spinner)
        m_spinner->move((width() - spinnerSize) / 2, (height() - spinnerSize) / 2);
}

Button::Button(const QString& label, Kind kind, QWidget* parent)
    : BusyButton(parent)
    , m_kind(kind)
{
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    setLabel(label);
    FocusRing::attach(this, Radius::button);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
}

void Button::setLabel(const QString& label)
{
    m_label = label;
    setAccessibleName(label);
    updateGeometry();
    update();
}

void Button::setMinimumButtonHeight(int height)
{
    m_height = height;
    updateGeometry();
}

QSize Button::sizeHint() const
{
    if (m_kind == Kind::plain) {
        const QFontMetrics metrics(Theme::font(TextRole::footnote));
        return {metrics.horizontalAdvance(m_label) + 2 * Spacing::small, metrics.height() + Spacing::xSmall};
    }
    const QFontMetrics metrics(Theme::font(TextRole::bodyMedium));
    return {metrics.horizontalAdvance(m_label) + 2 * (labelPadding + 1),
            std::max(m_height, metrics.height() + Spacing::medium)};
}

ColorRole Button::spinnerColor() const
{
    return m_kind == Kind::primary ? ColorRole::primaryButtonText : ColorRole::textSecondary;
}

ColorRole Button::fillRole() const
{
    const bool live = isEnabled() && !isBusy();
    const bool hovered = live && underMouse();
    if (m_kind == Kind::primary) {
        if (!isEnabled() && !isBusy())
            return ColorRole::primaryDisabled;
        return live && isDown() ? ColorRole::primaryPressed
               : hovered        ? ColorRole::primaryHover
                                : ColorRole::primaryButton;
    }
    return live && isDown() ? ColorRole::buttonPressed : hovered ? ColorRole::buttonHover : ColorRole::button;
}

ColorRole Button::labelRole() const
{
    switch (m_kind) {
    case Kind::primary:
        return isEnabled() ? ColorRole::primaryButtonText : ColorRole::primaryDisabledText;
    case Kind::destructive:
        return isEnabled() ? ColorRole::danger : ColorRole::textDisabled;
    case Kind::plain:
        return !isEnabled()               ? ColorRole::textDisabled
               : isDown() || underMouse() ? ColorRole::textPrimary
                                          : ColorRole::textSecondary;
    case Kind::secondary:
        break;
    }
    return isEnabled() ? ColorRole::buttonText : ColorRole::textDisabled;
}

void Button::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_kind == Kind::primary)
        PaintShapes::fillRounded(painter, rect(), Radius::button, Theme::color(fillRole()));
    else if (m_kind != Kind::plain)
        PaintShapes::outlined(painter, rect(), Radius::button, Theme::color(fillRole()),
                              Theme::color(ColorRole::fieldBorder));
    if (isBusy())
        return;
    painter.setFont(Theme::font(m_kind == Kind::plain ? TextRole::footnote : TextRole::bodyMedium));
    painter.setPen(Theme::color(labelRole()));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, m_label);
}

IconButton::IconButton(const QString& iconName, const QString& helpText, QWidget* parent, int iconSize,
                       ColorRole color)
    : BusyButton(parent)
    , m_iconName(iconName)
    , m_iconSize(iconSize)
    , m_color(color)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setHelpText(helpText);
    FocusRing::attach(this, Radius::button);
}

void IconButton::setIconName(const QString& iconName)
{
    m_iconName = iconName;
    update();
}

void IconButton::setHelpText(const QString& helpText)
{
    setToolTip(helpText);
    setAccessibleName(helpText);
}

void IconButton::setColor(ColorRole color)
{
    m_color = color;
    update();
}

void IconButton::setCheckedColors(ColorRole tile, ColorRole symbol)
{
    m_checkedTile = tile;
    m_checkedSymbol = symbol;
    update();
}

void IconButton::setButtonSize(const QSize& size)
{
    m_size = size;
    updateGeometry();
}

void IconButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool live = isEnabled() && !isBusy();
    if (live && isChecked())
        PaintShapes::fillRounded(painter, rect(), Radius::button, Theme::color(m_checkedTile));
    else if (live && isDown())
        PaintShapes::fillRounded(painter, rect(), Radius::button, Theme::color(ColorRole::pressed));
    else if (live && underMouse())
        PaintShapes::fillRounded(painter, rect(), Radius::button, Theme::color(ColorRole::hover));
    if (isBusy())
        return;
    const ColorRole color = !isEnabled()  ? ColorRole::textDisabled
                            : isChecked() ? m_checkedSymbol
                            : isDown()    ? ColorRole::textPrimary
                                          : m_color;
    Theme::drawIcon(painter, rect(), m_iconName, m_iconSize, color);
}

} // namespace orvia
