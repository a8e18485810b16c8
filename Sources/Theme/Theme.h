#pragma once

#include "Theme/Typefaces.h"

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QObject>
#include <QPixmap>

#include <future>
#include <optional>

class QApplication;
class QPainter;

namespace orvia {

/// Every colour of the console by its use. Each has a light and a dark value.
enum class ColorRole {
    accentFlame,
    noteAccent,
    visitorBubble,
    fieldBorder,
    window,
    sidebar,
    sidebarBar,
    list,
    strip,
    hairline,
    hairlineStrong,
    hover,
    sidebarHover,
    pressed,
    sidebarSelection,
    listSelection,
    textPrimary,
    textSecondary,
    textTertiary,
    textDisabled,
    icon,
    iconFaint,
    tag,
    tagSelected,
    tagText,
    agentBubble,
    agentBubbleText,
    visitorBubbleText,
    draftOutline,
    draftFill,
    noteFill,
    noteText,
    noteCaption,
    noteToggle,
    banner,
    bannerText,
    danger,
    field,
    fieldSearch,
    button,
    buttonText,
    primaryButton,
    primaryButtonText,
    primaryDisabled,
    primaryDisabledText,
    switchOff,
    switchOn,
    switchKnob,
    sheet,
    card,
    scrim,
    menu,
    menuBorder,
    menuHighlight,
    menuHighlightText,
    popoverSelection,
    dotOff,
    focusRing,
    scrollHandle,
    accentMark,
    highlightFill,
    primaryHover,
    primaryPressed,
    buttonHover,
    buttonPressed,
    textSelection,
    textSelectionOnAgent,
    tagHover,
    sendDisabled,
};

/// The type scale. Sizes are steps from the desktop's own font and never fall below 8 points.
enum class TextRole {
    title,         ///< the product's name on the sign-in screen
    emptyTitle,    ///< title of an empty state
    heading,       ///< column titles, conversation title
    sheetTitle,    ///< title in a sheet's header
    body,          ///< running text, rows, fields, menu items
    bodyStrong,    ///< the visitor's name in a row
    bodyMedium,    ///< buttons, the selected sidebar row
    callout,       ///< preview lines, banner, header bar
    calloutStrong, ///< a search hit inside a callout
    footnote,      ///< subtitles, the sign-in error
    caption,       ///< times, badges, presence
    captionMedium, ///< "Mentioned you"
    captionStrong, ///< section headings
    micro,         ///< tags, country code, time divider
    microHeading,  ///< section titles of the visitor panel: upper case, spaced
    code,          ///< shortcuts, in the fixed-pitch system font
    codeRegular,   ///< keys, in the fixed-pitch system font
};

/// Steps of the spacing grid, in device-independent pixels.
namespace Spacing {
constexpr int hair = 2;
constexpr int tight = 3;
constexpr int xSmall = 4;
constexpr int iconGap = 6;
constexpr int small = 8;
constexpr int medium = 12;
constexpr int large = 16;
constexpr int xLarge = 20;
} // namespace Spacing

/// Corner radii, in device-independent pixels.
namespace Radius {
constexpr int hit = 3;
constexpr int joinedCorner = 5;
constexpr int menuItem = 5;
constexpr int row = 6;
constexpr int field = 6;
constexpr int button = 7;
constexpr int highlight = 8;
constexpr int card = 10;
constexpr int sheet = 12;
constexpr int bubble = 15;
constexpr int composer = 17;
} // namespace Radius

/// Lengths that several screens share, in device-independent pixels.
namespace Metric {
constexpr int titleBand = 52;
constexpr int secondBand = 40;
constexpr int iconButton = 30;
constexpr int buttonHeight = 30;
constexpr int fieldHeight = 28;
constexpr int largeFieldHeight = 36;
} // namespace Metric

/// Durations of movements in milliseconds. Pass them through @c Theme::duration before use.
namespace Motion {
constexpr int bannerIn = 220;
constexpr int bannerOut = 180;
constexpr int scrollToEnd = 150;
constexpr int scrimIn = 160;
constexpr int sheetIn = 180;
constexpr int sheetOut = 120;
constexpr int pagePush = 180;
constexpr int switchKnob = 120;
constexpr int spinnerTurn = 900;
constexpr int sheetRise = 12;
constexpr int pageSlide = 24;
} // namespace Motion

/// Palette, type scale and icons, in the appearance of the desktop. Main thread only, after the application
/// object exists.
///
/// Custom painted widgets read colours and fonts while painting and need nothing else: @c changed updates
/// every window. A widget that keeps a colour, a font or a size connects to @c changed.
class Theme : public QObject {
    Q_OBJECT

public:
    static Theme& shared();

    /// Gives @p application the console's style and palette and follows the desktop from then on.
    void apply(QApplication& application);

    /// What the desktop says about its appearance; absent when it does not say, then the lightness of the
    /// desktop's palette decides, and without one the appearance is light.
    void setDesktopAppearance(std::optional<bool> dark);
    bool isDark() const { return m_dark; }

    static QColor color(ColorRole role);
    /// The value in one of the two appearances, whatever the current one is.
    static QColor color(ColorRole role, bool dark);
    static QFont font(TextRole role);
    /// What the system has; the next font that is asked for waits for it.
    static void setTypefaces(std::shared_future<Typefaces> typefaces);
    /// From here on texts of every script may be shown: each font names typefaces for letters that the
    /// desktop's lacks. Not from the beginning, because a font that names others takes longer to load, which
    /// the sign-in need not wait for.
    static void expectEveryScript();
    /// Loads one more of the fonts that the main screen has, which takes the toolkit a moment for each; false
    /// when they are all there.
    static bool loadNextFont();
    /// Line height of wrapped text in a role, in whole pixels: 1.35 times the size.
    static int lineHeight(TextRole role);
    /// @p milliseconds, or 0 when the desktop has animations switched off.
    static int duration(int milliseconds);

    /// The icon `:/icons/NAME.svg` at @p size pixels in one colour, cached. Null for an unknown name.
    static QPixmap icon(const QString& name, int size, const QColor& color, qreal devicePixelRatio);
    static QPixmap icon(const QString& name, int size, ColorRole role, qreal devicePixelRatio);
    /// Paints an icon centred in @p area at the painter's pixel ratio.
    static void drawIcon(QPainter& painter, const QRectF& area, const QString& name, int size,
                         ColorRole role);
    static void drawIcon(QPainter& painter, const QRectF& area, const QString& name, int size,
                         const QColor& color);
    /// The application's own picture, @p size pixels wide.
    static QPixmap applicationPicture(int size, qreal devicePixelRatio);
    /// The same in the sizes that desktops show.
    static QIcon applicationIcon();

Q_SIGNALS:
    /// The appearance or the desktop's font changed.
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Theme() = default;
    void followDesktop();
    void takeTypefaces();
    void nameGeneralFont();
    void setDark(bool dark);
    void installPalette();
    const QFont& baseFont();

    QApplication* m_application = nullptr;
    std::optional<QFont> m_desktopFont; ///< what m_baseFont was made of
    QFont m_baseFont;
    std::shared_future<Typefaces> m_search; ///< valid until its result is in use
    Typefaces m_typefaces;
    bool m_expectsEveryScript = false;
    bool m_hasNamedGeneralFont = false;
    std::size_t m_loadedFonts = 0;
    std::optional<bool> m_desktopDark;
    bool m_paletteDark = false;
    bool m_dark = false;
    bool m_installing = false;
};

} // namespace orvia
