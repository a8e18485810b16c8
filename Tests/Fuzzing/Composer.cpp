#include "Input.h"

#include "ComposerLogic/CannedMatching.h"
#include "ComposerLogic/MentionComposer.h"
#include "Platform/UnicodeText.h"

#include <algorithm>

/// What the composer makes of what is typed. Fields: the text; the agent's own id; then teammates of name and
/// id, whose names are also the shortcuts and whose ids are the bodies of canned responses.
namespace orvia::fuzzing {
namespace {

using namespace Qt::StringLiterals;

/// Whether the elements of @p part stand in @p whole, in the same order.
template <class Element>
bool isSubsequence(const std::vector<Element>& part, const std::vector<Element>& whole)
{
    auto position = whole.begin();
    for (const Element& element : part) {
        position = std::find(position, whole.end(), element);
        if (position == whole.end())
            return false;
        ++position;
    }
    return true;
}

void checkMentions(const QString& text, const std::vector<Agent>& agents, const QString& ownId)
{
    require(!MentionComposer::query(text, false), "a reply mentions nobody");
    const auto query = MentionComposer::query(text, true);
    require(!query || text.endsWith(u'@' + *query), "a query is the end of the text");
    const std::vector<Agent> matches = MentionComposer::matches(agents, ownId, text, true);
    require(matches.size() <= 6 && isSubsequence(matches, agents),
            "suggestions are teammates in their order");
    require(query || matches.empty(), "nothing typed suggests nobody");
    for (const Agent& agent : matches)
        require(agent.id != ownId && !MentionComposer::mentions(text, agent.name), "suggestions are new");

    QStringList mentioned;
    for (const Agent& agent : agents) {
        if (MentionComposer::mentions(text, agent.name))
            mentioned.append(agent.id);
        const QString inserted = MentionComposer::inserting(agent, text);
        require(inserted == text || inserted.endsWith(u'@' + agent.name + u' '), "a mention ends the text");
    }
    require(MentionComposer::sendableIds(agents, text) == mentioned, "whom the text mentions is sent");
}

void checkCanned(const QString& text, const std::vector<Agent>& agents)
{
    std::vector<CannedResponse> canned;
    for (const Agent& agent : agents)
        canned.push_back({agent.id, std::nullopt, agent.name, agent.id, std::nullopt});
    const std::vector<CannedResponse> found = CannedMatching::matches(text, canned, 1000);
    require(isSubsequence(found, canned), "matches are responses in their order");
    require(text.startsWith(u'/') || found.empty(), "only a slash asks for responses");
    require(CannedMatching::matches(u"/"_s, canned, 1000) == canned, "a slash alone matches everything");
}

/// The searches of names and responses keep to whole characters.
void checkSearches(const QString& text, const QString& what)
{
    const UnicodeText::SearchableText searchable(text);
    const QString wanted = UnicodeText::canonical(what);
    require(UnicodeText::canonical(wanted) == wanted, "a canonical form is final");
    if (wanted.isEmpty())
        return;
    const qsizetype found = searchable.indexOf(wanted);
    require(found < 0
                || (searchable.isBoundary(found) && searchable.isBoundary(found + wanted.size())
                    && searchable.form().sliced(found).startsWith(wanted)),
            "what is found are whole characters");
    require(!UnicodeText::startsWith(searchable.form(), wanted) || found == 0, "a beginning is found first");
}

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace orvia::fuzzing;
    Input input(data, size);
    const QString text = input.text();
    const QString ownId = input.text();
    std::vector<orvia::Agent> agents;
    while (!input.atEnd()) {
        orvia::Agent& agent = agents.emplace_back();
        agent.name = input.text();
        agent.id = input.text();
    }
    checkMentions(text, agents, ownId);
    checkCanned(text, agents);
    checkSearches(text, ownId);
    return 0;
}
