#include "DemoService/LoadGenerator.h"

#include "DemoService/WireEncoding.h"

#include <array>
#include <iterator>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds catchUpInterval(10);
/// A service that was held up does not make up for all of it at once.
constexpr qint64 mostAtOnce = 2000;

const std::array givenNames{u"Ada"_s,   u"Björn"_s, u"Carmen"_s, u"Dmitri"_s, u"Élodie"_s, u"Farid"_s,
                            u"Greta"_s, u"Hugo"_s,  u"Ingrid"_s, u"João"_s,   u"Kwame"_s,  u"Leïla"_s,
                            u"Mihai"_s, u"Noor"_s,  u"Óscar"_s,  u"Petra"_s};
const std::array familyNames{
    u"Abel"_s, u"Bianchi"_s, u"Çelik"_s, u"Dahl"_s,  u"Eriksen"_s, u"Fournier"_s, u"García"_s,  u"Holm"_s,
    u"Ito"_s,  u"Jansen"_s,  u"Kaya"_s,  u"Lopes"_s, u"Müller"_s,  u"Nagy"_s,     u"Okonkwo"_s, u"Petrov"_s};
const std::array sentences{
    u"When will my order arrive?"_s,
    u"Können Sie mir bei der Rücksendung helfen?"_s,
    u"Is there a shop near me that has it on the shelf?"_s,
    u"Merci pour votre réponse, c’est très clair."_s,
    u"¿Tienen otra talla disponible?"_s,
    u"I would like to change the address before it leaves the warehouse, if that is still possible."_s,
    u"The page stays empty after I press the button 🙁"_s,
    u"Ok"_s,
    u"電話でも注文できますか。"_s,
    u"هل يمكن الدفع عند الاستلام؟"_s};

struct Place {
    QLatin1StringView city;
    QLatin1StringView country;
    QLatin1StringView code;
    QLatin1StringView zone;
    QLatin1StringView language;
};
constexpr std::array places{Place{"Hamburg"_L1, "Germany"_L1, "de"_L1, "Europe/Berlin"_L1, "de-DE"_L1},
                            Place{"Toronto"_L1, "Canada"_L1, "ca"_L1, "America/Toronto"_L1, "en-CA"_L1},
                            Place{"Lille"_L1, "France"_L1, "fr"_L1, "Europe/Paris"_L1, "fr-FR"_L1},
                            Place{"Nagoya"_L1, "Japan"_L1, "jp"_L1, "Asia/Tokyo"_L1, "ja-JP"_L1},
                            Place{"Sevilla"_L1, "Spain"_L1, "es"_L1, "Europe/Madrid"_L1, "es-ES"_L1}};

const QString userAgent =
    u"Mozilla/5.0 (X11; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/126.0.0.0 Safari/537.36"_s;

} // namespace

LoadGenerator::LoadGenerator(Store& store, Desk& desk, const LiveChannel& live, quint64 seed)
    : m_store(store)
    , m_desk(desk)
    , m_live(live)
    , m_random(seed)
{
    m_timer.setInterval(catchUpInterval);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &LoadGenerator::catchUp);
}

void LoadGenerator::addConversations(int count, int messages)
{
    const Instant now = m_store.now();
    for (int index = 0; index < count; ++index) {
        Thread& thread = m_store.addThread(conversation(index));
        // Two minutes apart and a little uneven, so that the newest come first and pages have many days.
        const Instant last = now - std::chrono::minutes(2) * (index + 1)
                             - std::chrono::milliseconds(static_cast<qint64>(choose(60'000)));
        fill(thread, index == 0 ? std::max(1, messages) : 1 + static_cast<int>(choose(3)), last);
    }
}

void LoadGenerator::start(int eventsPerSecond)
{
    m_eventsPerSecond = eventsPerSecond;
    m_sent = 0;
    m_elapsed.start();
    if (eventsPerSecond > 0)
        m_timer.start();
    else
        m_timer.stop();
}

void LoadGenerator::catchUp()
{
    const qint64 due = m_elapsed.elapsed() * m_eventsPerSecond / 1000;
    const qint64 before = m_live.eventCount();
    const qint64 missing = std::min(due - m_sent, mostAtOnce);
    while (m_store.threadCount() > 0 && m_live.eventCount() - before < missing)
        happen();
    // One thing may be several events: the surplus counts for the next turn.
    m_sent = missing == mostAtOnce ? due : m_sent + m_live.eventCount() - before;
}

void LoadGenerator::happen()
{
    if (m_store.threadCount() == 0)
        return;
    Thread& thread = m_store.threadAt(choose(m_store.threadCount()));
    const QString& sentence = sentences[choose(sentences.size())];
    const std::size_t kind = choose(20);
    if (kind < 8) {
        m_desk.visitorTyping(thread, sentence.left(static_cast<qsizetype>(1 + choose(8))));
    } else if (kind < 15) {
        MessageDraft draft;
        draft.body = sentence;
        draft.via = MessageVia::chat;
        m_desk.post(thread, std::move(draft));
    } else if (kind < 18) {
        m_desk.readByVisitor(thread);
    } else {
        const auto& accounts = m_store.accounts();
        const Account& account = *accounts[choose(accounts.size())];
        m_desk.assign(thread, account.serves(thread.conversation.productId) ? &account.agent : nullptr);
    }
}

Conversation LoadGenerator::conversation(int index)
{
    Conversation conversation;
    conversation.id = u"load-%1"_s.arg(index + 1);
    const Product& product = m_store.products()[choose(m_store.products().size())];
    conversation.productId = product.id;
    const QString& given = givenNames[choose(givenNames.size())];
    conversation.visitor.name = given + u' ' + familyNames[choose(familyNames.size())];
    conversation.visitor.email = u"visitor%1@example.org"_s.arg(index + 1);
    conversation.status = choose(5) == 0 ? ConversationStatus::closed : ConversationStatus::open;
    const auto& accounts = m_store.accounts();
    const Account& account = *accounts[choose(accounts.size())];
    if (choose(3) != 0 && account.serves(product.id))
        conversation.assigneeId = account.agent.id;
    if (choose(20) == 0)
        conversation.rating = Rating{static_cast<qint64>(1 + choose(5)), std::nullopt};
    return conversation;
}

void LoadGenerator::fill(Thread& thread, int messages, Instant last)
{
    Conversation& conversation = thread.conversation;
    thread.messages.reserve(static_cast<std::size_t>(messages));
    const QString answerer = conversation.assigneeId.value_or(m_store.accounts().front()->agent.id);
    for (int index = 0; index < messages; ++index) {
        Message message;
        message.id = m_store.newId("m"_L1);
        message.conversationId = conversation.id;
        // The last message is always the visitor's.
        const bool fromVisitor = (messages - 1 - index) % 3 != 1;
        message.sender = fromVisitor ? MessageSender::visitor : MessageSender::agent;
        if (!fromVisitor)
            message.agentId = answerer;
        message.via = MessageVia::chat;
        message.body = sentences[choose(sentences.size())];
        message.createdAt = last - std::chrono::seconds(50) * (messages - 1 - index);
        thread.messages.push_back(std::move(message));
    }
    conversation.createdAt = thread.messages.front().createdAt;
    conversation.lastMessageAt = last;
    conversation.lastMessagePreview = thread.messages.back().body;
    conversation.visitorUnread = 0;
    conversation.agentUnread = static_cast<qint64>(choose(2));
    conversation.visitorLastReadAt = last;
    conversation.visitor.meta = wire::deferred(meta(m_store.product(conversation.productId)->slug, last));
    m_store.touch(thread);
}

VisitorMeta LoadGenerator::meta(const QString& site, Instant last)
{
    const Place& place = places[choose(places.size())];
    VisitorMeta meta;
    meta.userAgent = userAgent;
    meta.ip = u"198.51.100.%1"_s.arg(1 + choose(254));
    meta.geo = VisitorGeo{place.city,          std::nullopt,        QString(place.country),
                          QString(place.code), QString(place.zone), std::nullopt};
    meta.language = place.language;
    meta.screen = u"1920x1080"_s;
    meta.timezoneOffset = 0;
    meta.pages.emplace();
    const std::size_t pages = 1 + choose(3);
    for (std::size_t page = 0; page < pages; ++page) {
        meta.pages->push_back({u"https://%1.example/item/%2"_s.arg(site).arg(choose(900)), u"Item"_s,
                               last - std::chrono::minutes(static_cast<int>(pages - page))});
    }
    meta.url = meta.pages->back().url;
    meta.data = OrderedStringMap{{{u"Plan"_s, u"basic"_s}, {u"Orders"_s, QString::number(choose(40))}}};
    return meta;
}

} // namespace orvia::demo
