#include "Theme/Theme.h"
#include "Platform/ParallelWork.h"

#include "Support/Waiting.h"
#include "Views/Widgets/Label.h"

#include <QApplication>
#include <QFontInfo>
#include <QGlyphRun>
#include <QRawFont>
#include <QSignalSpy>
#include <QTextLayout>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

/// Gives the theme back as it was.
class ThemeTest : public testing::Test {
protected:
    ~ThemeTest() override
    {
        Theme::shared().setDesktopAppearance(std::nullopt);
        QApplication::setFont(font);
    }

    QFont font = QApplication::font();
};

double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& first, const QColor& second)
{
    const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

TEST_F(ThemeTest, EveryTextIsReadableOnItsSurface)
{
    const std::pair<ColorRole, ColorRole> texts[] = {
        {ColorRole::textPrimary, ColorRole::window},
        {ColorRole::textPrimary, ColorRole::sidebarSelection},
        {ColorRole::textPrimary, ColorRole::listSelection},
        {ColorRole::textSecondary, ColorRole::sidebarBar},
        {ColorRole::textTertiary, ColorRole::sidebar},
        {ColorRole::tagText, ColorRole::tagSelected},
        {ColorRole::bannerText, ColorRole::banner},
        {ColorRole::danger, ColorRole::card},
        {ColorRole::buttonText, ColorRole::buttonPressed},
        {ColorRole::noteCaption, ColorRole::noteFill},
        {ColorRole::agentBubbleText, ColorRole::agentBubble},
        {ColorRole::primaryButtonText, ColorRole::primaryButton},
        {ColorRole::menuHighlightText, ColorRole::menuHighlight},
        {ColorRole::visitorBubbleText, ColorRole::visitorBubble}};
    for (const bool dark : {false, true})
        for (const auto& [text, surface] : texts)
            EXPECT_GE(contrast(Theme::color(text, dark), Theme::color(surface, dark)), 4.5)
                << "dark " << dark << ", colours " << static_cast<int>(text) << " on "
                << static_cast<int>(surface);
}

TEST_F(ThemeTest, FollowsTheDesktopAndTellsOfRealChangesOnly)
{
    Theme& theme = Theme::shared();
    theme.setDesktopAppearance(false);
    const Label label(u"Text"_s, TextRole::body, ColorRole::textPrimary);
    QSignalSpy changes(&theme, &Theme::changed);

    theme.setDesktopAppearance(true);
    EXPECT_TRUE(theme.isDark());
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), Theme::color(ColorRole::window, true));
    EXPECT_EQ(label.palette().color(QPalette::WindowText), Theme::color(ColorRole::textPrimary, true));

    theme.setDesktopAppearance(true);
    EXPECT_EQ(changes.count(), 1);

    // Without a word from the desktop its palette decides, which is a light one here.
    theme.setDesktopAppearance(std::nullopt);
    EXPECT_FALSE(theme.isDark());
    EXPECT_EQ(changes.count(), 2);
    EXPECT_EQ(QApplication::palette().color(QPalette::Highlight), Theme::color(ColorRole::accentFlame));
}

TEST_F(ThemeTest, TypeStepsFromTheDesktopsFontAndNeverFallsBelowEightPoints)
{
    QFont desktop = font;
    desktop.setPointSizeF(8);
    QSignalSpy changes(&Theme::shared(), &Theme::changed);
    QApplication::setFont(desktop);
    EXPECT_TRUE(waitUntil([&] { return changes.count() > 0; }));
    EXPECT_EQ(Theme::font(TextRole::micro).pointSizeF(), 8);
    desktop.setPixelSize(20);
    QApplication::setFont(desktop);
    EXPECT_GT(Theme::font(TextRole::body).pointSizeF(), 8) << "desktops may give the size in pixels";
}

TEST_F(ThemeTest, NamesTheTypefaceBehindTheGeneralFontAndThoseOfOtherScripts)
{
    const ParallelWork search(Typefaces::search);
    Theme::setTypefaces(search.result());
    Theme::expectEveryScript();
    QFont general = font;
    general.setFamily(u"Sans Serif"_s);
    general.setPointSizeF(13);
    QApplication::setFont(general);
    Theme::shared().apply(*qApp);
    const QFont found = Theme::font(TextRole::body);
    EXPECT_EQ(found.families().first(), QFontInfo(general).family());
    EXPECT_EQ(found.pointSizeF(), 13);
    for (const QString& text : {u"🙂"_s, u"電"_s, u"한"_s}) {
        QTextLayout layout(text, found);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        const QList<QGlyphRun> glyphs = layout.glyphRuns();
        ASSERT_FALSE(glyphs.isEmpty());
        EXPECT_NE(glyphs.first().glyphIndexes().first(), 0U) << text.toStdString();
        EXPECT_TRUE(found.families().contains(glyphs.first().rawFont().familyName()));
    }

    QFont chosen = font;
    chosen.setFamily(u"DejaVu Sans Mono"_s);
    QApplication::setFont(chosen);
    Theme::shared().apply(*qApp);
    EXPECT_EQ(QApplication::font().families(), QStringList(u"DejaVu Sans Mono"_s));
    EXPECT_EQ(Theme::font(TextRole::body).families().first(), u"DejaVu Sans Mono"_s);
}

} // namespace orvia::test
