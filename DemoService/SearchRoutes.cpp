#include "DemoService/Routes.h"
#include "DemoService/WireEncoding.h"
#include "Models/Responses.h"

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualLimit = 20;
constexpr int highestLimit = 100;
/// How much of a text a snippet shows, and how much of it before the match.
constexpr qsizetype snippetLength = 140;
constexpr qsizetype snippetLead = 40;

/// The part of @p text around the match at @p position, cut at spaces where there are any.
QString snippetOf(const QString& text, qsizetype position)
{
    const QString line = QString(text).replace(u'\n', u' ');
    if (line.size() <= snippetLength)
        return line;
    qsizetype start = std::max<qsizetype>(0, position - snippetLead);
    if (start > 0) {
        const qsizetype space = line.indexOf(u' ', start);
        start = space >= 0 && space < position ? space + 1 : position;
    }
    qsizetype end = std::min(line.size(), start + snippetLength);
    if (end < line.size() && line.at(end).isLowSurrogate())
        ++end;
    const QString ellipsis = u"…"_s;
    return (start > 0 ? ellipsis : QString()) + line.mid(start, end - start)
           + (end < line.size() ? ellipsis : QString());
}

/// Adds the hits of one thread, the conversation itself first, then its messages as they were written.
void addHits(const Thread& thread, const QString& query, std::size_t limit,
             std::vector<SearchResult>& results)
{
    const Conversation& conversation = thread.conversation;
    for (const QString& text : {conversation.visitor.name, conversation.visitor.email}) {
        if (results.size() < limit && text.contains(query, Qt::CaseInsensitive)) {
            results.push_back({conversation, text, std::nullopt});
            break;
        }
    }
    for (const Message& message : thread.messages) {
        if (results.size() >= limit)
            return;
        if (message.sender == MessageSender::system)
            continue;
        const qsizetype position = message.body.indexOf(query, 0, Qt::CaseInsensitive);
        if (position >= 0)
            results.push_back({conversation, snippetOf(message.body, position), message.id});
    }
}

int limitOf(const Request& request)
{
    const QString text = request.queryValue(u"limit"_s);
    if (text.isEmpty())
        return usualLimit;
    bool isNumber = false;
    const int limit = text.toInt(&isNumber);
    if (!isNumber || limit < 1 || limit > highestLimit)
        throw Refusal(400, u"\"limit\" must be a number from 1 to %1."_s.arg(highestLimit));
    return limit;
}

Answer search(Store& store, const Account& caller, const Request& request)
{
    if (!request.query.hasQueryItem(u"q"_s))
        throw Refusal(400, u"\"q\" is missing."_s);
    const QString query = request.queryValue(u"q"_s).trimmed();
    const auto limit = static_cast<std::size_t>(limitOf(request));
    SearchResponse response;
    if (query.isEmpty())
        return {200, wire::encoded(response)};
    for (const Thread* thread : store.latestFirst()) {
        if (caller.serves(thread->conversation.productId))
            addHits(*thread, query, limit, response.results.wrappedValue);
        if (response.results.wrappedValue.size() >= limit)
            break;
    }
    return {200, wire::encoded(response)};
}

} // namespace

void addSearchRoutes(Router& router, Workplace workplace)
{
    router.add("GET", u"/v1/agent/search"_s, Router::Access::agent,
               [store = &workplace.store](const Request& request, Account* caller) {
                   return search(*store, *caller, request);
               });
}

} // namespace orvia::demo
