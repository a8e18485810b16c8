#include "ComposerLogic/MentionComposer.h"

#include "Platform/UnicodeText.h"

#include <algorithm>

namespace orvia::MentionComposer {

using UnicodeText::SearchableText;

namespace {

constexpr std::size_t maximumSuggestions = 6;

/// The position of the last "@", or -1. An "@" that carries a combining mark is another character.
qsizetype lastMark(const QString& text)
{
    qsizetype position = text.lastIndexOf(u'@');
    while (position >= 0 && !UnicodeText::standsAlone(text, position))
        position = position == 0 ? -1 : text.lastIndexOf(u'@', position - 1);
    return position;
}

bool isLineBreak(QChar character)
{
    switch (character.unicode()) {
    case 0x0A:
    case 0x0B:
    case 0x0C:
    case 0x0D:
    case 0x85:
    case 0x2028:
    case 0x2029:
        return true;
    default:
        return false;
    }
}

bool mentions(const SearchableText& text, const QString& name)
{
    if (name.isEmpty())
        return false;
    const QString mention = UnicodeText::canonical(u'@' + name);
    qsizetype from = 0;
    for (;;) {
        const qsizetype found = text.indexOf(mention, from);
        if (found < 0)
            return false;
        const qsizetype end = found + mention.size();
        if (end == text.form().size()
            || !UnicodeText::isLetterOrNumber(UnicodeText::codePointAt(text.form(), end)))
            return true;
        from = end;
    }
}

QString trimmedBlanks(const QString& text)
{
    const auto isBlank = [](QChar character) {
        return character == u'\t' || character.category() == QChar::Separator_Space;
    };
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text.at(begin)))
        ++begin;
    while (end > begin && isBlank(text.at(end - 1)))
        --end;
    return text.sliced(begin, end - begin);
}

} // namespace

std::optional<QString> query(const QString& text, bool isNote)
{
    if (!isNote)
        return std::nullopt;
    const qsizetype mark = lastMark(text);
    if (mark < 0)
        return std::nullopt;
    if (mark > 0 && !UnicodeText::isWhiteSpace(UnicodeText::lastCharacter(text.first(mark))))
        return std::nullopt;
    int spaces = 0;
    for (qsizetype position = mark + 1; position < text.size(); ++position) {
        const QChar character = text.at(position);
        if (isLineBreak(character))
            return std::nullopt;
        if (character == u' ' && UnicodeText::standsAlone(text, position) && ++spaces == 2)
            return std::nullopt;
    }
    return text.sliced(mark + 1);
}

std::vector<Agent> candidates(const std::vector<Agent>& agents, const std::optional<QString>& selfId,
                              const QString& text)
{
    const SearchableText searchable(text);
    std::vector<Agent> offered;
    for (const Agent& agent : agents) {
        if (agent.id != selfId && !mentions(searchable, agent.name))
            offered.push_back(agent);
    }
    return offered;
}

bool mentions(const QString& text, const QString& name)
{
    return mentions(SearchableText(text), name);
}

QString inserting(const Agent& agent, const QString& text)
{
    const qsizetype mark = lastMark(text);
    return mark < 0 ? text : text.first(mark) + u'@' + agent.name + u' ';
}

QStringList sendableIds(const std::vector<Agent>& picked, const QString& text)
{
    const SearchableText searchable(text);
    QStringList ids;
    for (const Agent& agent : picked) {
        if (mentions(searchable, agent.name))
            ids.append(agent.id);
    }
    return ids;
}

std::vector<Agent> matches(const std::vector<Agent>& agents, const std::optional<QString>& selfId,
                           const QString& text, bool isNote)
{
    const std::optional<QString> typed = query(text, isNote);
    if (!typed)
        return {};
    const QString wanted = UnicodeText::canonical(UnicodeText::lowerCased(trimmedBlanks(*typed)));
    std::vector<Agent> offered = candidates(agents, selfId, text);
    if (!wanted.isEmpty()) {
        std::erase_if(offered, [&wanted](const Agent& agent) {
            return SearchableText(UnicodeText::lowerCased(agent.name)).indexOf(wanted) < 0;
        });
    }
    if (offered.size() > maximumSuggestions)
        offered.erase(offered.begin() + maximumSuggestions, offered.end());
    return offered;
}

} // namespace orvia::MentionComposer
