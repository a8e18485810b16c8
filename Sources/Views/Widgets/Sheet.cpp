#include "Views/Widgets/Sheet.h"

#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/Label.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/SheetPages.h"
#include "Views/Widgets/Tag.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr char aboveSheets[] = "staysAboveSheets";
constexpr int formWidth = 440;
constexpr QSize settingsSize(480, 580);
constexpr int windowMargin = 24;
constexpr int headerHeight = 52;
constexpr int headerInset = 13; // 12 from the inside of the outline
constexpr int headerGap = 6;

/// The opaque panel with its outline.
class SheetPanel : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QColor line =
            Theme::shared().isDark() ? Theme::color(ColorRole::hairlineStrong) : QColor(0, 0, 0, 38);
        PaintShapes::outlined(painter, rect(), Radius::sheet, Theme::color(ColorRole::sheet), line);
        PaintShapes::hairLine(painter, 1, width() - 1, headerHeight);
    }
};

/// A modal dialogue to assistive tools.
class SheetAccessible : public QAccessibleWidget {
public:
    explicit SheetAccessible(Sheet* sheet)
        : QAccessibleWidget(sheet, QAccessible::Dialog)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? static_cast<Sheet*>(widget())->title()
                                         : QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = true;
        return state;
    }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* sheet = qobject_cast<Sheet*>(object);
    return sheet ? new SheetAccessible(sheet) : nullptr;
}

bool takesFocus(const QWidget* widget)
{
    return (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isVisible() && widget->isEnabled()
           && !widget->focusProxy();
}

} // namespace

Sheet::Sheet(const QString& title, QWidget* host, Kind kind)
    : QWidget(host->window())
    , m_kind(kind)
    , m_panel(new SheetPanel(this))
    , m_header(new QWidget(m_panel))
    , m_title(new Label(title, TextRole::sheetTitle, ColorRole::textPrimary, m_header))
    , m_back(new IconButton(u"chevron-left"_s, tr("Back"), m_header, 18))
    , m_pages(new SheetPages(title, m_panel))
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed)
    hide();
    setFocusPolicy(Qt::NoFocus);
    m_title->setAlignment(Qt::AlignCenter);
    m_back->hide();
    connect(m_back, &QAbstractButton::clicked, this, &Sheet::popPage);
    host->window()->installEventFilter(this);
    connect(&Theme::shared(), &Theme::changed, this, &Sheet::layoutPanel);
}

Sheet::~Sheet() = default;

QString Sheet::title() const
{
    return m_title->text();
}

void Sheet::setBody(QWidget* body)
{
    m_pages->setBody(body);
    // Contents that grow or shrink while the sheet is open take the panel along.
    body->installEventFilter(this);
    layoutPanel();
}

Button* Sheet::setDismissButton(const QString& label)
{
    if (!m_dismiss) {
        m_dismiss = new Button(label, Button::Kind::secondary, m_header);
        connect(m_dismiss, &QAbstractButton::clicked, this, &Sheet::dismiss);
    }
    m_dismiss->setLabel(label);
    layoutHeader();
    return m_dismiss;
}

Button* Sheet::setConfirmButton(const QString& label)
{
    if (!m_confirm)
        m_confirm = new Button(label, Button::Kind::primary, m_header);
    m_confirm->setLabel(label);
    layoutHeader();
    return m_confirm;
}

void Sheet::pushPage(const QString& title, QWidget* page, QWidget* trailing)
{
    QWidget* focused = QApplication::focusWidget();
    m_pages->current().focus = focused && isAncestorOf(focused) ? focused : nullptr;
    if (m_pages->current().trailing)
        m_pages->current().trailing->hide();
    if (trailing) {
        trailing->setParent(m_header);
        // The newest widget would come last when the keyboard goes round.
        setTabOrder(m_back, trailing);
    }
    m_pages->push({title, page, trailing, nullptr});
    showHeaderOfPage();
    focusFirst();
}

void Sheet::popPage()
{
    if (m_pages->pageCount() < 2)
        return;
    const bool ring = FocusRing::isShown(QApplication::focusWidget());
    m_pages->pop();
    showHeaderOfPage();
    if (m_pages->current().focus)
        FocusRing::restoreFocus(m_pages->current().focus, ring);
    else
        focusFirst();
}

int Sheet::pageCount() const
{
    return m_pages->pageCount();
}

void Sheet::showHeaderOfPage()
{
    const SheetPages::Page& page = m_pages->current();
    m_title->setText(page.title);
    m_back->setVisible(m_pages->pageCount() > 1);
    if (m_dismiss)
        m_dismiss->setVisible(m_pages->pageCount() == 1);
    if (page.trailing)
        page.trailing->show();
    layoutHeader();
    QAccessibleEvent named(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&named);
}

Sheet* Sheet::topmost(const QWidget* widget)
{
    const QObjectList& children = widget->window()->children();
    for (auto child = children.crbegin(); child != children.crend(); ++child) {
        auto* sheet = qobject_cast<Sheet*>(*child);
        if (sheet && sheet->isOpen())
            return sheet;
    }
    return nullptr;
}

void Sheet::keepAbove(QWidget* widget)
{
    widget->setProperty(aboveSheets, true);
    widget->raise();
}

void Sheet::open()
{
    if (m_state != State::prepared)
        return;
    m_below = topmost(this);
    m_focusBefore = window()->focusWidget();
    m_ringBefore = FocusRing::isShown(m_focusBefore);
    m_state = State::open;
    setGeometry(window()->rect());
    layoutPanel();
    raise();
    for (QObject* sibling : window()->children()) {
        if (auto* widget = qobject_cast<QWidget*>(sibling); widget && widget->property(aboveSheets).toBool())
            widget->raise();
    }
    show();
    focusFirst();
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { keepFocusInside(now); });
    animatePanel(true);
    QAccessibleEvent shown(this, QAccessible::DialogStart);
    QAccessible::updateAccessibility(&shown);
}

void Sheet::dismiss()
{
    if (m_state != State::open)
        return;
    m_state = State::closing;
    disconnect(qApp, nullptr, this, nullptr);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    QAccessibleEvent hidden(this, QAccessible::DialogEnd);
    QAccessible::updateAccessibility(&hidden);
    if (m_focusBefore && m_focusBefore->isVisible())
        FocusRing::restoreFocus(m_focusBefore, m_ringBefore);
    else if (QWidget* focused = window()->focusWidget(); focused && isAncestorOf(focused))
        focused->clearFocus();
    Q_EMIT dismissed();
    animatePanel(false);
}

void Sheet::finishClosing()
{
    hide();
    deleteLater();
}

void Sheet::animatePanel(bool in)
{
    delete m_movement; // a sheet may be dismissed while it still rises
    const int duration = Theme::duration(in ? Motion::sheetIn : Motion::sheetOut);
    if (duration == 0) {
        m_share = in ? 1 : 0;
        m_panel->setGraphicsEffect(nullptr);
        if (!in)
            finishClosing();
        update();
        return;
    }
    // The effect is there for the length of the movement only: it paints through a pixmap.
    m_panel->setGraphicsEffect(new QGraphicsOpacityEffect(m_panel));
    m_movement = new QVariantAnimation(this);
    m_movement->setDuration(duration);
    m_movement->setStartValue(m_share);
    m_movement->setEndValue(in ? 1.0 : 0.0);
    connect(m_movement, &QVariantAnimation::valueChanged, this,
            [this, in](const QVariant& value) { showShare(value.toReal(), in); });
    connect(m_movement, &QVariantAnimation::finished, this, [this, in] {
        m_panel->setGraphicsEffect(nullptr);
        if (!in)
            finishClosing();
    });
    showShare(m_share, in);
    m_movement->start(QAbstractAnimation::DeleteWhenStopped);
}

void Sheet::showShare(qreal share, bool in)
{
    static const QEasingCurve rise(QEasingCurve::OutCubic);
    m_share = share;
    const qreal eased = in ? rise.valueForProgress(share) : share;
    m_rise = qRound(Motion::sheetRise * (1 - eased));
    if (auto* fade = qobject_cast<QGraphicsOpacityEffect*>(m_panel->graphicsEffect()))
        fade->setOpacity(eased);
    layoutPanel();
    update();
}

bool Sheet::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window() && event->type() == QEvent::Resize && m_state != State::prepared)
        setGeometry(window()->rect());
    else if (watched != window() && event->type() == QEvent::LayoutRequest)
        layoutPanel();
    return QWidget::eventFilter(watched, event);
}

bool Sheet::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest)
        layoutPanel();
    // A shortcut of the screen below must not act on what the scrim covers.
    if (event->type() == QEvent::ShortcutOverride && !event->isAccepted())
        event->accept();
    return QWidget::event(event);
}

void Sheet::keyPressEvent(QKeyEvent* event)
{
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (event->key() == Qt::Key_Escape && plain) {
        dismiss();
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && plain) {
        // The Return that opened the sheet may still be held, and must not answer what it asks.
        if (!event->isAutoRepeat() && m_confirm && m_confirm->isEnabled() && !m_confirm->isBusy()
            && m_confirm->isVisible())
            m_confirm->click();
    }
    // Nothing under the scrim hears the keys of an open sheet.
    event->accept();
}

void Sheet::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void Sheet::wheelEvent(QWheelEvent* event)
{
    event->accept();
}

void Sheet::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    layoutPanel();
}

void Sheet::layoutPanel()
{
    const QSize room(width() - 2 * windowMargin, height() - 2 * windowMargin);
    const int wantedWidth = m_kind == Kind::form ? formWidth : settingsSize.width();
    QSize size(std::min(wantedWidth, room.width()), settingsSize.height());
    const int top = headerHeight + 1;
    if (m_kind == Kind::form) {
        m_pages->resize(size.width() - 2, m_pages->height());
        size.setHeight(top + m_pages->bodyHeight() + 1);
    }
    size.setHeight(std::min(size.height(), room.height()));
    const QPoint corner((width() - size.width()) / 2, (height() - size.height()) / 2 + m_rise);
    m_panel->setGeometry(QRect(corner, size));
    m_header->setGeometry(0, 1, size.width(), headerHeight);
    m_pages->setGeometry(1, top, size.width() - 2, size.height() - top - 1);
    layoutHeader();
}

void Sheet::layoutHeader()
{
    int leading = headerInset;
    const auto place = [this](QWidget* widget, int x) {
        widget->resize(widget->sizeHint());
        const int left = isRightToLeft() ? m_header->width() - x - widget->width() : x;
        widget->move(left, (headerHeight - widget->height()) / 2);
    };
    if (m_pages->pageCount() > 1) {
        place(m_back, leading);
        leading += m_back->width() + headerGap;
    } else if (m_dismiss) {
        place(m_dismiss, leading);
        leading += m_dismiss->width() + headerGap;
    }
    int trailing = m_header->width() - headerInset;
    for (QWidget* widget : {static_cast<QWidget*>(m_confirm), m_pages->current().trailing.data()}) {
        if (!widget)
            continue;
        place(widget, trailing - widget->sizeHint().width());
        trailing -= widget->width() + headerGap;
    }
    // Centred over the panel, and never over a button.
    const int side = std::max(leading, m_header->width() - trailing);
    m_title->setGeometry(side, 0, std::max(0, m_header->width() - 2 * side), headerHeight);
}

void Sheet::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor shade = Theme::color(ColorRole::scrim);
    shade.setAlphaF(
        static_cast<float>(shade.alphaF() * std::min(1.0, m_share * Motion::sheetIn / Motion::scrimIn)));
    if (m_below)
        PaintShapes::fillRounded(painter, m_below->m_panel->geometry(), Radius::sheet, shade);
    else
        painter.fillRect(rect(), shade);
}

void Sheet::keepFocusInside(QWidget* now)
{
    if (m_state != State::open || topmost(this) != this)
        return;
    if (now && isAncestorOf(now)) {
        m_lastFocus = now;
        return;
    }
    // Menus and other windows may have the focus; this window outside the sheet may not.
    if (!now || now->window() != window() || QApplication::activePopupWidget())
        return;
    if (m_lastFocus && takesFocus(m_lastFocus))
        m_lastFocus->setFocus(Qt::OtherFocusReason);
    else
        focusFirst();
}

void Sheet::focusFirst()
{
    if (m_state != State::open)
        return;
    QWidget* first = m_initialFocus && m_pages->pageCount() == 1 ? m_initialFocus.data() : nullptr;
    if (!first)
        first = firstFocusable(m_pages->current().contents);
    if (!first)
        first = firstFocusable(m_header);
    if (first)
        first->setFocus(m_ringBefore ? Qt::ShortcutFocusReason : Qt::OtherFocusReason);
}

QWidget* Sheet::firstFocusable(QWidget* within) const
{
    if (takesFocus(within))
        return within;
    for (QWidget* widget = within->nextInFocusChain(); widget && widget != within;
         widget = widget->nextInFocusChain()) {
        if (within->isAncestorOf(widget) && takesFocus(widget))
            return widget;
    }
    return nullptr;
}

QWidget* Sheet::nextFocusable(QWidget* from, bool next) const
{
    const auto step = [next](QWidget* widget) {
        return next ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (QWidget* widget = step(from); widget && widget != from; widget = step(widget)) {
        if (isAncestorOf(widget) && takesFocus(widget))
            return widget;
    }
    return nullptr;
}

bool Sheet::focusNextPrevChild(bool next)
{
    QWidget* focused = window()->focusWidget();
    QWidget* from = focused && isAncestorOf(focused) ? focused : this;
    if (QWidget* target = nextFocusable(from, next))
        target->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace orvia
