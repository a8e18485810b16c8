#include "DemoService/MultipartParser.h"
#include "DemoService/RequestBody.h"
#include "DemoService/Routes.h"
#include "DemoService/WireEncoding.h"
#include "Models/Responses.h"

namespace orvia::demo {

using namespace Qt::StringLiterals;
using Access = Router::Access;

namespace {

constexpr qsizetype longestMessage = 20'000;
/// What a form adds to the bytes of its file.
constexpr qsizetype formOverhead = 64 * 1024;

/// The thread that the path names. What an agent does not serve does not exist for them.
Thread& threadOf(Store& store, const Request& request, const Account& caller)
{
    Thread* const thread = store.thread(request.arguments.first());
    if (!thread || !caller.serves(thread->conversation.productId))
        throw Refusal(404, u"There is no such conversation."_s);
    return *thread;
}

Answer conversationAnswer(Store& store, Thread& thread)
{
    return {200, R"({"conversation":)" + store.encodedConversation(thread) + '}'};
}

std::optional<QString> assigneeOf(const QString& text, const Account& caller)
{
    if (text.isEmpty())
        return std::nullopt;
    if (text == "me"_L1)
        return caller.agent.id;
    return text == "unassigned"_L1 ? QString() : text;
}

Answer page(Store& store, const Account& caller, const Request& request)
{
    InboxFilter filter;
    if (const QString productId = request.queryValue(u"productId"_s); !productId.isEmpty()) {
        if (!store.product(productId) || !caller.serves(productId))
            throw Refusal(404, u"There is no such product."_s);
        filter.productId = productId;
    }
    if (const QString status = request.queryValue(u"status"_s); !status.isEmpty()) {
        filter.status = enumFromWireText<ConversationStatus>(status.toStdString());
        if (!filter.status)
            throw Refusal(400, u"\"status\" must be one of: open, closed."_s);
    }
    filter.assigneeId = assigneeOf(request.queryValue(u"assignee"_s), caller);
    if (filter.assigneeId && !filter.assigneeId->isEmpty() && !store.account(*filter.assigneeId))
        throw Refusal(400, u"\"assignee\" must be me, unassigned or the id of an agent."_s);
    const QString snoozed = request.queryValue(u"includeSnoozed"_s);
    if (!snoozed.isEmpty() && snoozed != "true"_L1 && snoozed != "false"_L1)
        throw Refusal(400, u"\"includeSnoozed\" must be true or false."_s);
    filter.includeSnoozed = snoozed == "true"_L1;
    return {200, store.encodedPage(caller, filter)};
}

Answer visitorConversations(Store& store, const Account& caller, const Request& request)
{
    InboxFilter filter;
    filter.email = request.queryValue(u"email"_s).trimmed();
    if (filter.email->isEmpty())
        throw Refusal(400, u"\"email\" is missing."_s);
    return {200, store.encodedPage(caller, filter)};
}

Answer detail(Workplace at, const Account& caller, const Request& request)
{
    Thread& thread = threadOf(at.store, request, caller);
    // Opening a thread reads it; the others learn that it waits for nobody any more.
    if (thread.conversation.agentUnread.value_or(0) > 0) {
        at.desk.readByAgent(thread);
        at.desk.announce(thread);
    }
    ConversationDetailResponse response;
    response.conversation = thread.conversation;
    response.messages.wrappedValue = thread.messages;
    return {200, wire::encoded(response)};
}

Answer setStatus(Workplace at, const Account& caller, const Request& request, ConversationStatus status)
{
    Thread& thread = threadOf(at.store, request, caller);
    at.desk.setStatus(thread, status, caller.agent);
    return conversationAnswer(at.store, thread);
}

Answer assign(Workplace at, const Account& caller, const Request& request)
{
    Thread& thread = threadOf(at.store, request, caller);
    const RequestBody body(request);
    body.allowOnly({"agentId"_L1});
    const auto agentId = body.nullableText("agentId"_L1);
    const Account* assignee = nullptr;
    if (agentId) {
        assignee = at.store.account(*agentId);
        if (!assignee)
            throw Refusal(404, u"There is no such agent."_s);
        if (!assignee->serves(thread.conversation.productId))
            throw Refusal(422, u"%1 does not serve this product."_s.arg(assignee->agent.name));
    }
    at.desk.assign(thread, assignee ? &assignee->agent : nullptr);
    return conversationAnswer(at.store, thread);
}

Answer snooze(Workplace at, const Account& caller, const Request& request)
{
    Thread& thread = threadOf(at.store, request, caller);
    const RequestBody body(request);
    body.allowOnly({"until"_L1});
    at.desk.snooze(thread, body.nullableInstant("until"_L1));
    return conversationAnswer(at.store, thread);
}

Answer mute(Store& store, Account& caller, const Request& request)
{
    const Thread& thread = threadOf(store, request, caller);
    const RequestBody body(request);
    body.allowOnly({"muted"_L1});
    const bool muted = body.flag("muted"_L1);
    if (!caller.agent.mutedConversationIds)
        caller.agent.mutedConversationIds.emplace();
    QStringList& ids = *caller.agent.mutedConversationIds;
    ids.removeAll(thread.conversation.id);
    if (muted)
        ids.push_back(thread.conversation.id);
    return {};
}

QStringList mentionsOf(Store& store, const RequestBody& body)
{
    QStringList mentions = body.texts("mentions"_L1);
    for (const QString& id : mentions) {
        if (!store.account(id))
            throw Refusal(400, u"\"mentions\" names an unknown agent: %1."_s.arg(id));
    }
    mentions.removeDuplicates();
    return mentions;
}

Answer sendMessage(Workplace at, const Account& caller, const Request& request)
{
    Thread& thread = threadOf(at.store, request, caller);
    const RequestBody body(request);
    body.allowOnly({"body"_L1, "note"_L1, "mentions"_L1});
    MessageDraft draft;
    draft.body = body.filledText("body"_L1).trimmed();
    if (draft.body.size() > longestMessage)
        throw Refusal(413, u"A message is limited to %1 characters."_s.arg(longestMessage));
    const bool note = body.has("note"_L1) && body.flag("note"_L1);
    if (body.has("mentions"_L1)) {
        if (!note)
            throw Refusal(400, u"\"mentions\" is for internal notes only."_s);
        draft.mentions = mentionsOf(at.store, body);
    }
    draft.sender = note ? MessageSender::note : MessageSender::agent;
    draft.agentId = caller.agent.id;
    if (!note)
        draft.via = MessageVia::chat;
    return {200, wire::encoded(MessageResponse{at.desk.post(thread, std::move(draft))})};
}

Answer uploadAttachment(Workplace at, const Account& caller, const Request& request)
{
    Thread& thread = threadOf(at.store, request, caller);
    if (request.body.size() > FileShelf::maxFileBytes + formOverhead)
        throw Refusal(413, u"Attachments are limited to 10MB."_s);

    const FormPart* file = nullptr;
    bool note = false;
    const std::vector<FormPart> parts = parseMultipart(request.contentType, request.body);
    for (const FormPart& part : parts) {
        if (part.name == "note"_L1) {
            if (part.data != "true" && part.data != "false")
                throw Refusal(400, u"\"note\" must be true or false."_s);
            note = part.data == "true";
        } else if (part.name == "file"_L1 && !file) {
            file = &part;
        } else {
            throw Refusal(400, u"\"%1\" is not a member of this request, or stands twice."_s.arg(part.name));
        }
    }
    if (!file || !file->fileName || file->fileName->isEmpty())
        throw Refusal(400, u"\"file\" is missing or has no file name."_s);
    if (file->data.size() > FileShelf::maxFileBytes)
        throw Refusal(413, u"Attachments are limited to 10MB."_s);

    MessageDraft draft;
    draft.attachment =
        at.files.add(at.store.newId("f"_L1), *file->fileName,
                     file->mime.isEmpty() ? u"application/octet-stream"_s : file->mime, file->data);
    if (!draft.attachment)
        throw Refusal(500, u"The file could not be stored."_s);
    draft.sender = note ? MessageSender::note : MessageSender::agent;
    draft.agentId = caller.agent.id;
    if (!note)
        draft.via = MessageVia::chat;
    return {200, wire::encoded(MessageResponse{at.desk.post(thread, std::move(draft))})};
}

/// Open to everybody who knows the address, as the widgets of visitors have no token.
Answer download(const FileShelf& files, const Request& request)
{
    auto file = files.file(request.arguments.first());
    if (!file)
        throw Refusal(404, u"There is no such file."_s);
    return {200, std::move(file->data), file->mime.toLatin1()};
}

} // namespace

void addConversationRoutes(Router& router, Workplace at)
{
    const auto path = [](QLatin1StringView suffix) { return "/v1/agent/conversations/*"_L1 + suffix; };
    router.add("GET", u"/v1/agent/conversations"_s, Access::agent,
               [at](const Request& request, Account* caller) { return page(at.store, *caller, request); });
    router.add("GET", u"/v1/agent/visitors/conversations"_s, Access::agent,
               [at](const Request& request, Account* caller) {
                   return visitorConversations(at.store, *caller, request);
               });
    router.add("GET", path({}), Access::agent,
               [at](const Request& request, Account* caller) { return detail(at, *caller, request); });
    router.add("POST", path("/close"_L1), Access::agent, [at](const Request& request, Account* caller) {
        return setStatus(at, *caller, request, ConversationStatus::closed);
    });
    router.add("POST", path("/open"_L1), Access::agent, [at](const Request& request, Account* caller) {
        return setStatus(at, *caller, request, ConversationStatus::open);
    });
    router.add("POST", path("/assign"_L1), Access::agent,
               [at](const Request& request, Account* caller) { return assign(at, *caller, request); });
    router.add("POST", path("/snooze"_L1), Access::agent,
               [at](const Request& request, Account* caller) { return snooze(at, *caller, request); });
    router.add("POST", path("/mute"_L1), Access::agent,
               [at](const Request& request, Account* caller) { return mute(at.store, *caller, request); });
    router.add("POST", path("/messages"_L1), Access::agent,
               [at](const Request& request, Account* caller) { return sendMessage(at, *caller, request); });
    router.add("POST", path("/attachments"_L1), Access::agent, [at](const Request& request, Account* caller) {
        return uploadAttachment(at, *caller, request);
    });
    router.add("GET", u"/files/*/*"_s, Access::anybody,
               [at](const Request& request, Account*) { return download(at.files, request); });
}

} // namespace orvia::demo
