#include "Theme/Typefaces.h"

#include <fontconfig/fontconfig.h>

#include <array>
#include <memory>

namespace orvia {

namespace {

struct PatternRelease {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct CharacterSetRelease {
    void operator()(FcCharSet* characters) const { FcCharSetDestroy(characters); }
};
using Pattern = std::unique_ptr<FcPattern, PatternRelease>;
using CharacterSet = std::unique_ptr<FcCharSet, CharacterSetRelease>;

/// A letter that stands for its script, and the kind of typeface to look among.
struct Sample {
    char32_t letter;
    const char* family;
};

constexpr std::array samples{
    Sample{U'🙂', "emoji"},    Sample{U'ع', "sans-serif"},  Sample{U'電', "sans-serif"},
    Sample{U'で', "sans-serif"}, Sample{U'한', "sans-serif"}, Sample{U'ש', "sans-serif"},
    Sample{U'ह', "sans-serif"},  Sample{U'ท', "sans-serif"},  Sample{U'ა', "sans-serif"},
};

FcChar8* asText(const char* text)
{
    return reinterpret_cast<FcChar8*>(const_cast<char*>(text));
}

/// The system's choice for the sample; empty when no typeface has the letter.
QString familyFor(const Sample& sample)
{
    const Pattern wanted(FcPatternCreate());
    const CharacterSet letters(FcCharSetCreate());
    FcCharSetAddChar(letters.get(), sample.letter);
    FcPatternAddString(wanted.get(), FC_FAMILY, asText(sample.family));
    FcPatternAddCharSet(wanted.get(), FC_CHARSET, letters.get());
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());

    FcResult result = FcResultNoMatch;
    const Pattern found(FcFontMatch(nullptr, wanted.get(), &result));
    FcCharSet* covered = nullptr;
    FcChar8* family = nullptr;
    if (!found || FcPatternGetCharSet(found.get(), FC_CHARSET, 0, &covered) != FcResultMatch
        || FcCharSetHasChar(covered, sample.letter) == FcFalse
        || FcPatternGetString(found.get(), FC_FAMILY, 0, &family) != FcResultMatch)
        return {};
    return QString::fromUtf8(reinterpret_cast<const char*>(family));
}

} // namespace

QStringList Typefaces::fallbacks()
{
    QStringList families;
    for (const Sample& sample : samples) {
        const QString family = familyFor(sample);
        if (!family.isEmpty() && !families.contains(family))
            families.append(family);
    }
    return families;
}

TypefaceSearch::TypefaceSearch()
    : m_families(std::async(std::launch::async, Typefaces::fallbacks))
{
}

} // namespace orvia
