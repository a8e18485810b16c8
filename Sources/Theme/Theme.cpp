#include "Theme/Theme.h"

#include "Theme/ConsoleStyle.h"
#include "Theme/Typefaces.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPainter>
#include <QPixmapCache>
#include <QScopedValueRollback>
#include <QStyle>
#include <QStyleHints>
#include <QSvgRenderer>
#include <QThreadPool>
#include <QToolTip>
#include <QWidget>

#include <array>
#include <cmath>

/// A static library's resources are there only once they are asked for, from outside of any namespace.
static void loadIcons()
{
    Q_INIT_RESOURCE(orvia);
}

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

struct Tone {
    QRgb light;
    QRgb dark;
};

/// In the order of ColorRole, alpha first.
constexpr auto tones = std::to_array<Tone>({
    {0xffc2410c, 0xffc2410c}, // accentFlame
    {0xff6d28d9, 0xff6d28d9}, // noteAccent
    {0xfff2f2f2, 0xff1c1c1c}, // visitorBubble
    {0xffd1d1d1, 0xff3a3a3a}, // fieldBorder
    {0xffffffff, 0xff101010}, // window
    {0xfff4f4f4, 0xff181818}, // sidebar
    {0xffededed, 0xff1f1f1f}, // sidebarBar
    {0xffffffff, 0xff131313}, // list
    {0xfffafafa, 0xff151515}, // strip
    {0xffe3e3e3, 0xff272727}, // hairline
    {0xffd1d1d1, 0xff3a3a3a}, // hairlineStrong
    {0xfff4f4f4, 0xff1b1b1b}, // hover
    {0xffebebeb, 0xff212121}, // sidebarHover
    {0xffe6e6e6, 0xff2a2a2a}, // pressed
    {0xffe2e2e2, 0xff2c2c2c}, // sidebarSelection
    {0xfffbece4, 0xff2b1a12}, // listSelection
    {0xff1a1a1a, 0xffededed}, // textPrimary
    {0xff5a5a5a, 0xffa8a8a8}, // textSecondary
    {0xff666666, 0xff959595}, // textTertiary
    {0xffa0a0a0, 0xff5c5c5c}, // textDisabled
    {0xff4d4d4d, 0xffb4b4b4}, // icon
    {0xffb8b8b8, 0xff4a4a4a}, // iconFaint
    {0xffeeeeee, 0xff262626}, // tag
    {0xfff2dfd4, 0xff3d271c}, // tagSelected
    {0xff555555, 0xffb0b0b0}, // tagText
    {0xff141414, 0xffebebeb}, // agentBubble
    {0xffffffff, 0xff141414}, // agentBubbleText
    {0xff1a1a1a, 0xffededed}, // visitorBubbleText
    {0xff8f8f8f, 0xff686868}, // draftOutline
    {0xfffafafa, 0xff151515}, // draftFill
    {0xfff5f0fd, 0xff1c152b}, // noteFill
    {0xff1a1a1a, 0xffededed}, // noteText
    {0xff6d28d9, 0xffb79cf2}, // noteCaption
    {0xffebe1fb, 0xffe4d8fa}, // noteToggle
    {0xffc3203b, 0xffc3203b}, // banner
    {0xffffffff, 0xffffffff}, // bannerText
    {0xffb91c36, 0xffff7d8c}, // danger
    {0xffffffff, 0xff161616}, // field
    {0xfff2f2f2, 0xff1f1f1f}, // fieldSearch
    {0xffffffff, 0xff242424}, // button
    {0xff1a1a1a, 0xffededed}, // buttonText
    {0xffc2410c, 0xffc2410c}, // primaryButton
    {0xffffffff, 0xffffffff}, // primaryButtonText
    {0xffececec, 0xff262626}, // primaryDisabled
    {0xff8a8a8a, 0xff6e6e6e}, // primaryDisabledText
    {0xff949494, 0xff6b6b6b}, // switchOff
    {0xffc2410c, 0xffc2410c}, // switchOn
    {0xffffffff, 0xffffffff}, // switchKnob
    {0xfff6f6f6, 0xff1a1a1a}, // sheet
    {0xffffffff, 0xff212121}, // card
    {0x47000000, 0x8c000000}, // scrim
    {0xffffffff, 0xff1f1f1f}, // menu
    {0xffd4d4d4, 0xff3a3a3a}, // menuBorder
    {0xffc2410c, 0xffc2410c}, // menuHighlight
    {0xffffffff, 0xffffffff}, // menuHighlightText
    {0xfff3f3f3, 0xff292929}, // popoverSelection
    {0xff838383, 0xff767676}, // dotOff
    {0xffc2410c, 0xffc2410c}, // focusRing
    {0xffbdbdbd, 0xff4a4a4a}, // scrollHandle
    {0xffc2410c, 0xfff0885a}, // accentMark
    {0x00ffffff, 0xfffff1ea}, // highlightFill
    {0xffb03b0b, 0xffb03b0b}, // primaryHover
    {0xff9a330a, 0xff9a330a}, // primaryPressed
    {0xfff6f6f6, 0xff2b2b2b}, // buttonHover
    {0xffececec, 0xff333333}, // buttonPressed
    {0xfff5cfbb, 0xff5a2a14}, // textSelection
    {0xff7a3413, 0xfff0b79b}, // textSelectionOnAgent
    {0xffe6e6e6, 0xff303030}, // tagHover
    {0x668e8e93, 0x668e8e93}, // sendDisabled
});
static_assert(tones.size() == static_cast<size_t>(ColorRole::sendDisabled) + 1);

struct TypeStep {
    qreal step;
    QFont::Weight weight;
};

TypeStep typeStep(TextRole role)
{
    switch (role) {
    case TextRole::title:
        return {8, QFont::DemiBold};
    case TextRole::emptyTitle:
        return {2, QFont::DemiBold};
    case TextRole::heading:
        return {1.5, QFont::DemiBold};
    case TextRole::sheetTitle:
        return {1, QFont::DemiBold};
    case TextRole::body:
        return {0, QFont::Normal};
    case TextRole::bodyStrong:
        return {0, QFont::DemiBold};
    case TextRole::bodyMedium:
        return {0, QFont::Medium};
    case TextRole::callout:
        return {-0.5, QFont::Normal};
    case TextRole::calloutStrong:
        return {-0.5, QFont::DemiBold};
    case TextRole::footnote:
        return {-1, QFont::Normal};
    case TextRole::caption:
        return {-1.5, QFont::Normal};
    case TextRole::captionMedium:
        return {-1.5, QFont::Medium};
    case TextRole::captionStrong:
        return {-1.5, QFont::DemiBold};
    case TextRole::micro:
        return {-2, QFont::Normal};
    case TextRole::microHeading:
        return {-2, QFont::Medium};
    case TextRole::code:
        return {-0.5, QFont::Medium};
    case TextRole::codeRegular:
        return {-0.5, QFont::Normal};
    }
    Q_UNREACHABLE();
}

/// The drawing `:/icons/NAME.svg` in its own colours; null when there is none.
QPixmap drawing(const QString& name, int size, qreal devicePixelRatio)
{
    Theme::shared();
    QSvgRenderer renderer(":/icons/%1.svg"_L1.arg(name));
    if (!renderer.isValid())
        return {};
    const int pixels = static_cast<int>(std::ceil(size * devicePixelRatio));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

constexpr qreal smallestPointSize = 8;

bool isDarkPalette(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

} // namespace

Theme& Theme::shared()
{
    // Never destroyed: widgets may outlive every static object's turn at exit.
    static Theme* const theme = [] {
        loadIcons();
        return new Theme;
    }();
    return *theme;
}

void Theme::apply(QApplication& application)
{
    m_application = &application;
    // What fonts there are, which the first text would have to wait for.
    QThreadPool::globalInstance()->start([] { QFontDatabase::families(); });
    nameGeneralFont();
    m_paletteDark = isDarkPalette(QApplication::palette());
    QApplication::setStyle(new ConsoleStyle);
    m_dark = m_desktopDark.value_or(m_paletteDark);
    installPalette();
    application.installEventFilter(this);
}

void Theme::setDesktopAppearance(std::optional<bool> dark)
{
    m_desktopDark = dark;
    setDark(dark.value_or(m_paletteDark));
}

QColor Theme::color(ColorRole role)
{
    return color(role, shared().m_dark);
}

QColor Theme::color(ColorRole role, bool dark)
{
    const Tone& tone = tones[static_cast<size_t>(role)];
    return QColor::fromRgba(dark ? tone.dark : tone.light);
}

QFont Theme::font(TextRole role)
{
    const QFont& base = shared().baseFont();
    const TypeStep step = typeStep(role);
    const bool fixedPitch = role == TextRole::code || role == TextRole::codeRegular;
    QFont font = fixedPitch ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : base;
    const qreal baseSize = base.pointSizeF() > 0 ? base.pointSizeF() : QFontInfo(base).pointSizeF();
    font.setPointSizeF(std::max(baseSize + step.step, smallestPointSize));
    font.setWeight(step.weight);
    if (role == TextRole::microHeading) {
        font.setCapitalization(QFont::AllUppercase);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 0.5);
    }
    return font;
}

/// The desktop's font, and after it the fallback families once they are wanted. A family in the list that is
/// not there, or is another one's second name, would let the next take its place: the list begins with the
/// one in use.
const QFont& Theme::baseFont()
{
    takeTypefaces();
    const QFont desktopFont = QApplication::font();
    if (m_desktopFont != desktopFont) {
        m_desktopFont = desktopFont;
        m_baseFont = desktopFont;
        const bool isComplete = desktopFont.families().size() > 1;
        if (m_expectsEveryScript && !isComplete && !m_typefaces.fallbacks.isEmpty())
            m_baseFont.setFamilies(QStringList(QFontInfo(desktopFont).family()) + m_typefaces.fallbacks);
    }
    return m_baseFont;
}

void Theme::setTypefaces(std::shared_future<Typefaces> typefaces)
{
    shared().m_search = std::move(typefaces);
}

void Theme::takeTypefaces()
{
    if (!m_search.valid())
        return;
    m_typefaces = std::exchange(m_search, {}).get();
    m_desktopFont.reset();
}

/// Where no desktop has chosen a font, the toolkit's is one for which it holds all typefaces against each
/// other, again for each field. Such a desktop does not change its choice either, so that nothing has to be
/// followed.
void Theme::nameGeneralFont()
{
    takeTypefaces();
    QFont font = QApplication::font();
    const QStringList general(m_typefaces.general);
    const bool isNamed = m_hasNamedGeneralFont && font.families() == general;
    if (m_typefaces.general.isEmpty() || (font.family() != "Sans Serif"_L1 && !isNamed))
        return;
    font.setFamilies(m_expectsEveryScript ? general + m_typefaces.fallbacks : general);
    m_hasNamedGeneralFont = true;
    QApplication::setFont(font);
}

void Theme::expectEveryScript()
{
    Theme& theme = shared();
    if (std::exchange(theme.m_expectsEveryScript, true))
        return;
    theme.m_desktopFont.reset();
    if (theme.m_hasNamedGeneralFont)
        theme.nameGeneralFont();
}

bool Theme::loadNextFont()
{
    constexpr std::array roles{TextRole::body,          TextRole::bodyStrong, TextRole::bodyMedium,
                               TextRole::callout,       TextRole::heading,    TextRole::caption,
                               TextRole::captionStrong, TextRole::micro};
    expectEveryScript();
    std::size_t& loaded = shared().m_loadedFonts;
    if (loaded == roles.size())
        return false;
    QFontMetrics(font(roles[loaded++])).horizontalAdvance(u"Orvia"_s);
    return true;
}

int Theme::lineHeight(TextRole role)
{
    const QFontInfo info(font(role));
    return static_cast<int>(std::lround(info.pixelSize() * 1.35));
}

int Theme::duration(int milliseconds)
{
    return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) > 0 ? milliseconds : 0;
}

QPixmap Theme::icon(const QString& name, int size, const QColor& color, qreal devicePixelRatio)
{
    const QString key = "orvia-icon %1 %2 %3 %4"_L1.arg(
        name, QString::number(size), color.name(QColor::HexArgb), QString::number(devicePixelRatio));
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = drawing(name, size, devicePixelRatio);
    if (pixmap.isNull())
        return {};
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(), pixmap.deviceIndependentSize()), color);
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QPixmap Theme::icon(const QString& name, int size, ColorRole role, qreal devicePixelRatio)
{
    return icon(name, size, color(role), devicePixelRatio);
}

void Theme::drawIcon(QPainter& painter, const QRectF& area, const QString& name, int size, ColorRole role)
{
    drawIcon(painter, area, name, size, color(role));
}

void Theme::drawIcon(QPainter& painter, const QRectF& area, const QString& name, int size,
                     const QColor& color)
{
    const QPixmap pixmap = icon(name, size, color, painter.device()->devicePixelRatio());
    // Whole pixels keep the strokes crisp.
    const QPointF corner(std::floor(area.center().x() - size / 2.0 + 0.5),
                         std::floor(area.center().y() - size / 2.0 + 0.5));
    painter.drawPixmap(corner, pixmap);
}

QIcon Theme::applicationIcon()
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128})
        icon.addPixmap(applicationPicture(size, 1));
    return icon;
}

QPixmap Theme::applicationPicture(int size, qreal devicePixelRatio)
{
    return drawing(u"orvia"_s, size, devicePixelRatio);
}

bool Theme::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_application && !m_installing) {
        if (event->type() == QEvent::ApplicationPaletteChange)
            followDesktop();
        else if (event->type() == QEvent::ApplicationFontChange)
            Q_EMIT changed();
    }
    return QObject::eventFilter(watched, event);
}

void Theme::followDesktop()
{
    {
        // An empty palette gives the desktop's own one back for a moment.
        const QScopedValueRollback installing(m_installing, true);
        QApplication::setPalette(QPalette());
        m_paletteDark = isDarkPalette(QApplication::palette());
    }
    m_dark = m_desktopDark.value_or(m_paletteDark);
    installPalette();
    Q_EMIT changed();
}

void Theme::setDark(bool dark)
{
    if (dark == m_dark)
        return;
    m_dark = dark;
    if (m_application) {
        installPalette();
        const QWidgetList windows = QApplication::allWidgets();
        for (QWidget* widget : windows)
            widget->update();
    }
    Q_EMIT changed();
}

void Theme::installPalette()
{
    const QScopedValueRollback installing(m_installing, true);
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, ColorRole active, ColorRole disabled) {
        palette.setColor(role, color(active));
        palette.setColor(QPalette::Disabled, role, color(disabled));
    };
    set(QPalette::Window, ColorRole::window, ColorRole::window);
    set(QPalette::WindowText, ColorRole::textPrimary, ColorRole::textDisabled);
    set(QPalette::Base, ColorRole::field, ColorRole::field);
    set(QPalette::AlternateBase, ColorRole::strip, ColorRole::strip);
    set(QPalette::Text, ColorRole::textPrimary, ColorRole::textDisabled);
    set(QPalette::PlaceholderText, ColorRole::textTertiary, ColorRole::textDisabled);
    set(QPalette::Button, ColorRole::button, ColorRole::button);
    set(QPalette::ButtonText, ColorRole::buttonText, ColorRole::textDisabled);
    set(QPalette::BrightText, ColorRole::danger, ColorRole::danger);
    set(QPalette::Highlight, ColorRole::accentFlame, ColorRole::textDisabled);
    set(QPalette::HighlightedText, ColorRole::menuHighlightText, ColorRole::menuHighlightText);
    set(QPalette::Link, ColorRole::accentFlame, ColorRole::textDisabled);
    set(QPalette::LinkVisited, ColorRole::accentFlame, ColorRole::textDisabled);
    set(QPalette::ToolTipBase, ColorRole::menu, ColorRole::menu);
    set(QPalette::ToolTipText, ColorRole::textPrimary, ColorRole::textPrimary);
    set(QPalette::Light, ColorRole::card, ColorRole::card);
    set(QPalette::Midlight, ColorRole::hover, ColorRole::hover);
    set(QPalette::Mid, ColorRole::hairlineStrong, ColorRole::hairlineStrong);
    set(QPalette::Dark, ColorRole::switchOff, ColorRole::switchOff);
    set(QPalette::Shadow, ColorRole::draftOutline, ColorRole::draftOutline);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

} // namespace orvia
