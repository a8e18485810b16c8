#include "Input.h"

#include "ComposerLogic/CannedMatching.h"
#include "ComposerLogic/MentionComposer.h"
#include "ComposerLogic/ReadReceipt.h"
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

bool isPlainWord(const QString& text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return character.unicode() < 0x80 && character.isLetterOrNumber();
    });
}

void checkMentions(const QString& text, const std::vector<Agent>& agents, const QString& ownId)
{
    require(!MentionComposer::query(text, false), "a reply mentions nobody");
    require(MentionComposer::matches(agents, ownId, text, false).empty(), "a reply suggests nobody");
    const auto query = MentionComposer::query(text, true);
    require(!query || text.endsWith(u'@' + *query), "a query is the end of the text");

    const std::vector<Agent> candidates = MentionComposer::candidates(agents, ownId, text);
    require(isSubsequence(candidates, agents), "candidates are teammates in their order");
    for (const Agent& agent : candidates)
        require(agent.id != ownId && !MentionComposer::mentions(text, agent.name), "candidates are new");
    const std::vector<Agent> matches = MentionComposer::matches(agents, ownId, text, true);
    require(matches.size() <= 6 && isSubsequence(matches, candidates), "suggestions are some candidates");
    require(query || matches.empty(), "nothing typed suggests nobody");

    const QStringList sendable = MentionComposer::sendableIds(agents, text);
    require(static_cast<std::size_t>(sendable.size())
                == static_cast<std::size_t>(std::count_if(
                    agents.begin(), agents.end(),
                    [&](const Agent& agent) { return MentionComposer::mentions(text, agent.name); })),
            "whom the text mentions is sent");
    for (const Agent& agent : agents) {
        const QString inserted = MentionComposer::inserting(agent, text);
        require(inserted == text || inserted.endsWith(u'@' + agent.name + u' '), "a mention ends the text");
        require(!query || !isPlainWord(agent.name) || MentionComposer::mentions(inserted, agent.name),
                "what is inserted is a mention");
    }
}

void checkCanned(const QString& text, const std::vector<Agent>& agents)
{
    std::vector<CannedResponse> canned;
    for (const Agent& agent : agents)
        canned.push_back({agent.id, std::nullopt, agent.name, agent.id, std::nullopt});
    const std::vector<CannedResponse> all = CannedMatching::matches(text, canned, 1000);
    require(isSubsequence(all, canned), "matches are responses in their order");
    require(text.startsWith(u'/') || all.empty(), "only a slash asks for responses");
    std::vector<CannedResponse> first = all;
    first.resize(qMin<std::size_t>(first.size(), 2));
    require(CannedMatching::matches(text, canned, 2) == first, "the first ones are kept");
    require(CannedMatching::matches(u"/"_s, canned, 1000) == canned, "a slash alone matches everything");
    for (const CannedResponse& response : canned) {
        if (!isPlainWord(response.shortcut))
            continue;
        const auto found = CannedMatching::matches(u'/' + response.shortcut.toUpper(), canned, 1000);
        require(std::find(found.begin(), found.end(), response) != found.end(),
                "a shortcut finds its response");
    }
}

void checkReceipt(const std::vector<Agent>& agents, const QString& text)
{
    std::vector<Message> messages;
    for (const Agent& agent : agents) {
        Message& message = messages.emplace_back();
        message.id = agent.id;
        message.sender = static_cast<MessageSender>(agent.name.size() % 4);
        if (!agent.name.isEmpty())
            message.createdAt = Instant(std::chrono::milliseconds(agent.name[0].unicode()));
    }
    require(!ReadReceipt::seenMessageId(messages, std::nullopt), "nothing read is nothing seen");
    const Instant readAt{std::chrono::milliseconds(text.size())};
    std::optional<QString> expected;
    for (const Message& message : messages) {
        if (message.sender == MessageSender::agent && message.createdAt && *message.createdAt <= readAt)
            expected = message.id;
    }
    require(ReadReceipt::seenMessageId(messages, readAt) == expected, "the last message read is seen");
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
    UnicodeText::lastCharacter(what);
    for (qsizetype position = 0; position < text.size(); ++position) {
        if (text[position] == u'@' && UnicodeText::standsAlone(text, position))
            require(UnicodeText::codePointAt(text, position) == U'@', "a mark is a character");
    }
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
    checkReceipt(agents, text);
    checkSearches(text, ownId);
    return 0;
}
