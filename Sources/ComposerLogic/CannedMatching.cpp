#include "ComposerLogic/CannedMatching.h"

#include "Platform/UnicodeText.h"

namespace orvia::CannedMatching {

namespace {

/// Whether the lower-cased text begins with @p prefix, which is lower case and in canonical form. Looks at no
/// more of a long text than can matter, since this runs for every response at every key press.
bool startsWith(const QString& text, const QString& prefix)
{
    // No mapping makes a character shorter than half its length, and marks are ordered within their
    // character.
    qsizetype end = qMin(text.size(), 2 * prefix.size() + 2);
    while (end < text.size()
           && (text.at(end).isLowSurrogate() || text.at(end).isHighSurrogate()
               || text.at(end).combiningClass() != 0))
        ++end;
    const QString beginning = UnicodeText::canonical(UnicodeText::lowerCased(text.first(end)));
    return UnicodeText::startsWith(beginning, prefix);
}

} // namespace

std::vector<CannedResponse> matches(const QString& text, const std::vector<CannedResponse>& canned, int limit)
{
    std::vector<CannedResponse> found;
    if (!text.startsWith(u'/') || !UnicodeText::standsAlone(text, 0))
        return found;
    const QString query = UnicodeText::canonical(UnicodeText::lowerCased(text.sliced(1)));
    for (const CannedResponse& response : canned) {
        if (static_cast<int>(found.size()) >= limit)
            break;
        if (startsWith(response.shortcut, query) || startsWith(response.body, query))
            found.push_back(response);
    }
    return found;
}

} // namespace orvia::CannedMatching
