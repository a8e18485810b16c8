#include "Views/Widgets/TextField.h"

#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/Spinner.h"

#include <QKeyEvent>
#include <QPainter>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int formPadding = 10;
constexpr int largePadding = 12;
constexpr int formWidth = 252;
// QLineEdit keeps this much of its own on either side of the text.
constexpr int lineEditInset = 2;
constexpr int searchIconSize = 15;
constexpr int searchIconGap = 8;
constexpr int clearIconSize = 16;
constexpr int clearHitArea = 24;
constexpr int searchPadding = 8;
constexpr int searchSpinnerSize = 14;

/// Text selections are tinted, and keep their text's colour.
void applyFieldColors(QLineEdit* field)
{
    QPalette colors = field->palette();
    colors.setColor(QPalette::Text, Theme::color(ColorRole::textPrimary));
    colors.setColor(QPalette::Disabled, QPalette::Text, Theme::color(ColorRole::textDisabled));
    colors.setColor(QPalette::PlaceholderText, Theme::color(ColorRole::textTertiary));
    colors.setColor(QPalette::Highlight, Theme::color(ColorRole::textSelection));
    colors.setColor(QPalette::HighlightedText, Theme::color(ColorRole::textPrimary));
    // The field paints its own fill.
    colors.setColor(QPalette::Base, Qt::transparent);
    field->setPalette(colors);
    field->setFont(Theme::font(TextRole::body));
}

} // namespace

TextField::TextField(const QString& label, QWidget* parent, Size size)
    : QLineEdit(parent)
    , m_size(size)
{
    setAccessibleName(label);
    setPlaceholderText(label);
    setFrame(false);
    const int padding = (size == Size::large ? largePadding : formPadding) - lineEditInset;
    setTextMargins(padding, 0, padding, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    FocusRing::attach(this, size == Size::large ? Radius::highlight : Radius::field,
                      FocusRing::Policy::always, 0);
    applyTheme();
    connect(&Theme::shared(), &Theme::changed, this, &TextField::applyTheme);
}

QSize TextField::sizeHint() const
{
    const int least = m_size == Size::large ? Metric::largeFieldHeight : Metric::fieldHeight;
    return {formWidth, std::max(least, fontMetrics().height() + Spacing::small)};
}

QSize TextField::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 8, sizeHint().height()};
}

void TextField::applyTheme()
{
    applyFieldColors(this);
    updateGeometry();
}

void TextField::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        PaintShapes::outlined(painter, rect(), m_size == Size::large ? Radius::highlight : Radius::field,
                              Theme::color(ColorRole::field), Theme::color(ColorRole::fieldBorder));
    }
    QLineEdit::paintEvent(event);
}

SecureField::SecureField(const QString& label, QWidget* parent, Size size)
    : TextField(label, parent, size)
{
    setEchoMode(QLineEdit::Password);
    setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoAutoUppercase
                        | Qt::ImhNoPredictiveText);
}

SearchField::SearchField(const QString& placeholder, const QString& clearHelpText, QWidget* parent)
    : QLineEdit(parent)
    , m_clear(new IconButton(u"clear-fill"_s, clearHelpText, this, clearIconSize))
    , m_spinner(new Spinner(searchSpinnerSize, ColorRole::textSecondary, this))
{
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setFrame(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_clear->setButtonSize({clearHitArea, clearHitArea});
    m_clear->setCursor(Qt::ArrowCursor);
    FocusRing::attach(this, Radius::button, FocusRing::Policy::always, 0);
    connect(m_clear, &QAbstractButton::clicked, this, &SearchField::clearRequested);
    connect(this, &QLineEdit::textChanged, this, &SearchField::updateTrailing);
    connect(&Theme::shared(), &Theme::changed, this, &SearchField::applyTheme);
    applyTheme();
    updateTrailing();
}

void SearchField::setSearching(bool searching)
{
    m_searching = searching;
    updateTrailing();
}

QSize SearchField::sizeHint() const
{
    return {formWidth,
            std::max(static_cast<int>(Metric::fieldHeight), fontMetrics().height() + Spacing::small)};
}

QSize SearchField::minimumSizeHint() const
{
    return {clearHitArea + searchIconSize + 2 * searchPadding + fontMetrics().averageCharWidth() * 4,
            sizeHint().height()};
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty())
        Q_EMIT clearRequested();
    else
        QLineEdit::keyPressEvent(event);
}

void SearchField::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    updateTrailing();
}

void SearchField::applyTheme()
{
    applyFieldColors(this);
    updateGeometry();
}

void SearchField::updateTrailing()
{
    // Hiding the button that has the focus would hand the focus on to whatever comes next.
    const bool clears = !m_searching && !text().isEmpty();
    if (!clears && m_clear->hasFocus())
        setFocus(Qt::OtherFocusReason);
    m_clear->setVisible(clears);
    m_spinner->setVisible(m_searching);
    const bool mirrored = isRightToLeft();
    const int leading = searchPadding + searchIconSize + searchIconGap - lineEditInset;
    const int trailing =
        m_searching || clears ? clearHitArea + Spacing::xSmall : searchPadding - lineEditInset;
    setTextMargins(mirrored ? trailing : leading, 0, mirrored ? leading : trailing, 0);
    const int center = width() - clearHitArea / 2 - 2;
    const auto place = [&](QWidget* child, int size) {
        child->setGeometry((mirrored ? width() - center : center) - size / 2, (height() - size) / 2, size,
                           size);
    };
    place(m_clear, clearHitArea);
    place(m_spinner, searchSpinnerSize);
}

void SearchField::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        PaintShapes::fillRounded(painter, rect(), Radius::button, Theme::color(ColorRole::fieldSearch));
        const int x = isRightToLeft() ? width() - searchPadding - searchIconSize : searchPadding;
        Theme::drawIcon(painter, QRectF(x, 0, searchIconSize, height()), u"search"_s, searchIconSize,
                        ColorRole::textSecondary);
    }
    QLineEdit::paintEvent(event);
}

} // namespace orvia
