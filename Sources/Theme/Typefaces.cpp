#include "Theme/Typefaces.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

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

/// The family of the first font with the letter; empty when none has it.
QString familyWith(char32_t letter, const FcFontSet& fonts)
{
    FcPattern** const end = fonts.fonts + fonts.nfont;
    FcPattern** const found =
        std::find_if(fonts.fonts, end, [letter](FcPattern* font) { return has(font, letter); });
    FcChar8* family = nullptr;
    if (found == end || FcPatternGetString(*found, FC_FAMILY, 0, &family) != FcResultMatch)
        return {};
    return QString::fromUtf8(reinterpret_cast<const char*>(family));
}

} // namespace

QStringList Typefaces::fallbacks()
{
    QStringList families;
    for (const auto& [kind, letters] : {std::pair("emoji", emoji), std::pair("sans-serif", scripts)}) {
        const FontSet fonts = fontsLike(kind);
        if (!fonts)
            continue;
        for (const char32_t letter : letters) {
            const QString family = familyWith(letter, *fonts);
            if (!family.isEmpty() && !families.contains(family))
                families.append(family);
        }
    }
    return families;
}

TypefaceSearch::TypefaceSearch()
    : m_families(std::async(std::launch::async, Typefaces::fallbacks))
{
}

} // namespace orvia
