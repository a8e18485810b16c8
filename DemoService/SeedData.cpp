#include "DemoService/SeedData.h"

#include "DemoService/WireEncoding.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

/// Resources of a static library have to be asked for, outside of every namespace.
static void initializeResources()
{
    Q_INIT_RESOURCE(demo);
}

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

QByteArray resource(const QString& name)
{
    initializeResources();
    QFile file(u":/demo/"_s + name);
    const bool opened = file.open(QIODevice::ReadOnly);
    Q_ASSERT(opened);
    return opened ? file.readAll() : QByteArray();
}

std::optional<QString> text(const QJsonObject& object, QLatin1StringView key)
{
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<QStringList> texts(const QJsonObject& object, QLatin1StringView key)
{
    if (!object.contains(key))
        return std::nullopt;
    QStringList list;
    for (const QJsonValue item : object.value(key).toArray())
        list.push_back(item.toString());
    return list;
}

template <class Enum>
Enum oneOf(const QJsonObject& object, QLatin1StringView key, Enum fallback)
{
    return enumFromWireText<Enum>(object.value(key).toString().toStdString()).value_or(fallback);
}

/// The instant that lies the member's number of minutes before @p now.
std::optional<Instant> ago(const QJsonObject& object, QLatin1StringView key, Instant now)
{
    const QJsonValue minutes = object.value(key);
    if (!minutes.isDouble())
        return std::nullopt;
    return now - std::chrono::milliseconds(std::llround(minutes.toDouble() * 60'000));
}

WidgetConfig widgetFrom(const QJsonObject& object)
{
    WidgetConfig widget;
    widget.title = text(object, "title"_L1);
    widget.accentColor = text(object, "accentColor"_L1);
    widget.position = text(object, "position"_L1);
    const QJsonObject greeting = object.value("greeting"_L1).toObject();
    widget.greeting =
        WidgetGreeting{greeting.value("enabled"_L1).toBool(), greeting.value("delaySeconds"_L1).toInteger(),
                       text(greeting, "text"_L1)};
    return widget;
}

VisitorGeo geoFrom(const QJsonObject& object)
{
    return {text(object, "city"_L1),        text(object, "region"_L1),   text(object, "country"_L1),
            text(object, "countryCode"_L1), text(object, "timezone"_L1), text(object, "org"_L1)};
}

/// Custom data stands as a list of pairs, because a JSON object does not keep their order here.
OrderedStringMap customDataFrom(const QJsonArray& pairs)
{
    OrderedStringMap data;
    for (const QJsonValue item : pairs) {
        const QJsonValue value = item.toArray().at(1);
        QString shown = value.toString();
        if (value.isBool())
            shown = value.toBool() ? u"true"_s : u"false"_s;
        else if (value.isDouble())
            shown = OrderedStringMap::textFromNumber(value.toDouble());
        data.pairs.push_back({item.toArray().at(0).toString(), shown});
    }
    return data;
}

VisitorMeta metaFrom(const QJsonObject& object, Instant now)
{
    VisitorMeta meta;
    meta.url = text(object, "url"_L1);
    meta.referrer = text(object, "referrer"_L1);
    meta.userAgent = text(object, "userAgent"_L1);
    meta.ip = text(object, "ip"_L1);
    meta.geo = geoFrom(object.value("geo"_L1).toObject());
    meta.language = text(object, "language"_L1);
    meta.screen = text(object, "screen"_L1);
    meta.timezoneOffset = object.value("timezoneOffset"_L1).toInteger();
    meta.pages.emplace();
    for (const QJsonValue item : object.value("pages"_L1).toArray()) {
        const QJsonObject page = item.toObject();
        meta.pages->push_back({text(page, "url"_L1), text(page, "title"_L1), ago(page, "ago"_L1, now)});
    }
    if (object.contains("data"_L1))
        meta.data = customDataFrom(object.value("data"_L1).toArray());
    return meta;
}

Conversation conversationFrom(const QJsonObject& object, Instant now)
{
    Conversation conversation;
    conversation.id = object.value("id"_L1).toString();
    conversation.productId = object.value("product"_L1).toString();
    conversation.visitor.name = object.value("name"_L1).toString();
    conversation.visitor.email = object.value("email"_L1).toString();
    if (object.contains("meta"_L1))
        conversation.visitor.meta = wire::deferred(metaFrom(object.value("meta"_L1).toObject(), now));
    conversation.status = oneOf(object, "status"_L1, ConversationStatus::open);
    conversation.createdAt = ago(object, "started"_L1, now);
    conversation.assigneeId = text(object, "assignee"_L1);
    if (conversation.assigneeId)
        conversation.assignedAt = conversation.createdAt;
    if (const QJsonValue minutes = object.value("snoozedFor"_L1); minutes.isDouble())
        conversation.snoozedUntil = now + std::chrono::minutes(minutes.toInteger());
    conversation.agentUnread = object.value("agentUnread"_L1).toInteger();
    conversation.visitorUnread = 0;
    conversation.visitorLastReadAt = ago(object, "visitorRead"_L1, now);
    conversation.agentLastReadAt = ago(object, "agentRead"_L1, now);
    if (const QJsonObject rating = object.value("rating"_L1).toObject(); !rating.isEmpty())
        conversation.rating = Rating{rating.value("score"_L1).toInteger(), text(rating, "comment"_L1)};
    return conversation;
}

std::optional<Attachment> attachmentFrom(const QJsonObject& object, Store& store, FileShelf& files)
{
    const QString name = object.value("name"_L1).toString();
    const auto stored = text(object, "resource"_L1);
    const QByteArray data =
        stored ? resource(*stored) : pdfDocument(name.toLatin1(), object.value("bytes"_L1).toInteger());
    return files.add(store.newId("f"_L1), name, object.value("mime"_L1).toString(), data);
}

Message messageFrom(const QJsonObject& object, const Conversation& conversation, Store& store,
                    FileShelf& files, Instant now)
{
    constexpr QLatin1StringView notePrefix("note:");
    Message message;
    message.id = store.newId("m"_L1);
    message.conversationId = conversation.id;
    message.body = object.value("body"_L1).toString();
    message.createdAt = ago(object, "ago"_L1, now);
    message.mentions = texts(object, "mentions"_L1);

    const QString from = object.value("from"_L1).toString();
    if (from.startsWith(notePrefix)) {
        message.sender = MessageSender::note;
        message.agentId = from.mid(notePrefix.size());
    } else if (from == "visitor"_L1 || from == "system"_L1) {
        message.sender = oneOf(object, "from"_L1, MessageSender::visitor);
    } else {
        message.sender = MessageSender::agent;
        message.agentId = from;
    }
    if (message.sender == MessageSender::visitor || message.sender == MessageSender::agent)
        message.via = oneOf(object, "via"_L1, MessageVia::chat);
    if (object.contains("file"_L1))
        message.attachment = attachmentFrom(object.value("file"_L1).toObject(), store, files);
    return message;
}

void addConversation(const QJsonObject& object, Store& store, FileShelf& files, Instant now)
{
    Thread& thread = store.addThread(conversationFrom(object, now));
    Conversation& conversation = thread.conversation;
    for (const QJsonValue item : object.value("messages"_L1).toArray()) {
        Message message = messageFrom(item.toObject(), conversation, store, files, now);
        if (message.sender != MessageSender::system) {
            conversation.lastMessageAt = message.createdAt;
            conversation.lastMessagePreview =
                message.body.isEmpty() && message.attachment ? *message.attachment->name : message.body;
        }
        thread.messages.push_back(std::move(message));
    }
    store.touch(thread);
}

} // namespace

QJsonObject seedDocument(const QString& name)
{
    QJsonParseError error;
    const QJsonDocument parsed = QJsonDocument::fromJson(resource(name), &error);
    Q_ASSERT(error.error == QJsonParseError::NoError);
    return parsed.object();
}

void addTeam(Store& store, const QString& password)
{
    const Instant founded = store.now() - std::chrono::days(400);
    const QJsonObject team = seedDocument(u"team.json"_s);
    for (const QJsonValue item : team.value("products"_L1).toArray()) {
        const QJsonObject object = item.toObject();
        Product product;
        product.id = object.value("id"_L1).toString();
        product.name = object.value("name"_L1).toString();
        product.slug = object.value("slug"_L1).toString();
        product.publicKey = text(object, "publicKey"_L1);
        if (object.contains("widget"_L1))
            product.widget = widgetFrom(object.value("widget"_L1).toObject());
        product.createdAt = founded;
        store.products().push_back(std::move(product));
    }
    for (const QJsonValue item : team.value("agents"_L1).toArray()) {
        const QJsonObject object = item.toObject();
        Agent agent;
        agent.id = object.value("id"_L1).toString();
        agent.name = object.value("name"_L1).toString();
        agent.email = object.value("email"_L1).toString();
        agent.role = oneOf(object, "role"_L1, AgentRole::agent);
        agent.productIds = texts(object, "productIds"_L1);
        if (object.contains("notifyMode"_L1))
            agent.notifyMode = oneOf(object, "notifyMode"_L1, NotifyMode::all);
        agent.mutedConversationIds = texts(object, "mutedConversationIds"_L1);
        store.addAccount(std::move(agent), password);
    }
    for (const QJsonValue item : team.value("canned"_L1).toArray()) {
        const QJsonObject object = item.toObject();
        store.canned().push_back({object.value("id"_L1).toString(), text(object, "productId"_L1),
                                  object.value("shortcut"_L1).toString(), object.value("body"_L1).toString(),
                                  founded});
    }
}

void addConversations(Store& store, FileShelf& files)
{
    const Instant now = store.now();
    for (const QString& name : {u"conversations-1.json"_s, u"conversations-2.json"_s}) {
        for (const QJsonValue item : seedDocument(name).value("conversations"_L1).toArray())
            addConversation(item.toObject(), store, files, now);
    }
}

QByteArray pdfDocument(const QByteArray& title, qsizetype size)
{
    const QByteArray content = "BT /F1 18 Tf 72 760 Td (" + title + ") Tj ET";
    const QList<QByteArray> objects{
        "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R"
        " /Resources << /Font << /F1 5 0 R >> >> >>",
        "<< /Length " + QByteArray::number(content.size()) + " >>\nstream\n" + content + "\nendstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};

    QByteArray document = "%PDF-1.4\n";
    QList<qsizetype> offsets;
    for (qsizetype i = 0; i < objects.size(); ++i) {
        offsets.push_back(document.size());
        document += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    // The trailer is a little over 200 bytes long; what is missing before it is filled with comment lines.
    constexpr qsizetype trailerSize = 220;
    const QByteArray comment = '%' + QByteArray(78, '.') + '\n';
    while (document.size() + trailerSize + comment.size() <= size)
        document += comment;

    const qsizetype tableStart = document.size();
    document += "xref\n0 6\n0000000000 65535 f \n";
    for (const qsizetype offset : offsets)
        document += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    return document + "trailer\n<< /Size 6 /Root 1 0 R >>\nstartxref\n" + QByteArray::number(tableStart)
           + "\n%%EOF\n";
}

} // namespace orvia::demo
