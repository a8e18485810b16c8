#include "Theme/Typefaces.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string_view>

namespace orvia {

namespace {

struct PatternRelease {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct FontSetRelease {
    void operator()(FcFontSet* fonts) const { FcFontSetDestroy(fonts); }
};
using Pattern = std::unique_ptr<FcPattern, PatternRelease>;
using FontSet = std::unique_ptr<FcFontSet, FontSetRelease>;

/// Letters that stand for their scripts, in the order in which the typefaces are named.
constexpr std::u32string_view emoji = U"🙂";
constexpr std::u32string_view scripts = U"ع電で한שहทა";

FcChar8* asText(const char* text)
{
    return reinterpret_cast<FcChar8*>(const_cast<char*>(text));
}

/// All fonts, in the order in which the system would take them in place of @p family.
FontSet fontsLike(const char* family)
{
    const Pattern wanted(FcPatternCreate());
    FcPatternAddString(wanted.get(), FC_FAMILY, asText(family));
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    return FontSet(FcFontSort(nullptr, wanted.get(), FcFalse, nullptr, &result));
}

bool has(FcPattern* font, char32_t letter)
{
    FcCharSet* letters = nullptr;
    return FcPatternGetCharSet(font, FC_CHARSET, 0, &letters) == FcResultMatch
           && FcCharSetHasChar(letters, letter) != FcFalse;
}

QString familyOf(const FcPattern* font)
{
    FcChar8* family = nullptr;
    if (FcPatternGetString(font, FC_FAMILY, 0, &family) != FcResultMatch)
        return {};
    return QString::fromUtf8(reinterpret_cast<const char*>(family));
}

/// Adds the first of @p fonts for each of @p letters that one has.
void addFamilies(const FcFontSet& fonts, std::u32string_view letters, QStringList& families)
{
    const std::span all(fonts.fonts, static_cast<std::size_t>(fonts.nfont));
    for (const char32_t letter : letters) {
        const auto found = std::ranges::find_if(all, [letter](FcPattern* font) { return has(font, letter); });
        const QString family = found == all.end() ? QString() : familyOf(*found);
        if (!family.isEmpty() && !families.contains(family))
            families.append(family);
    }
}

} // namespace

Typefaces Typefaces::search()
{
    Typefaces found;
    if (const FontSet fonts = fontsLike("emoji"))
        addFamilies(*fonts, emoji, found.fallbacks);
    if (const FontSet fonts = fontsLike("sans-serif")) {
        addFamilies(*fonts, scripts, found.fallbacks);
        if (fonts->nfont > 0)
            found.general = familyOf(fonts->fonts[0]);
    }
    return found;
}

} // namespace orvia
