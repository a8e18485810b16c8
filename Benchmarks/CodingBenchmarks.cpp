#include "Benchmarks/Benchmarks.h"
#include "Benchmarks/Sample.h"
#include "Models/APIJSON.h"
#include "Models/Responses.h"

#include <QJsonDocument>

#include <simdjson.h>

#include <cstdlib>
#include <memory>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr double millisecondsPerSecond = 1e3;

void collectStrings(const simdjson::dom::element& element, std::vector<QString>& strings)
{
    switch (element.type()) {
    case simdjson::dom::element_type::OBJECT:
        for (const auto member : simdjson::dom::object(element))
            collectStrings(member.value, strings);
        break;
    case simdjson::dom::element_type::ARRAY:
        for (const auto item : simdjson::dom::array(element))
            collectStrings(item, strings);
        break;
    case simdjson::dom::element_type::STRING: {
        const std::string_view text = element;
        strings.push_back(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
        break;
    }
    default:
        break;
    }
}

/// The least that any reader of the page does: parse it and make a QString of every string value.
void parseAndCopyStrings(simdjson::dom::parser& parser, const QByteArray& page)
{
    const simdjson::dom::element root = parser.parse(page.constData(), static_cast<std::size_t>(page.size()));
    std::vector<QString> strings;
    collectStrings(root, strings);
    if (strings.empty())
        std::abort();
}

void decodePage(const QByteArray& page)
{
    if (APIJSON::decoder.decode<ConversationsResponse>(page).conversations.wrappedValue.empty())
        std::abort();
}

/// Leaves nothing of the page for later.
void decodeAndReadAll(const QByteArray& page)
{
    const auto decoded = APIJSON::decoder.decode<ConversationsResponse>(page);
    std::vector<std::shared_ptr<const VisitorMeta>> known;
    known.reserve(decoded.conversations.wrappedValue.size());
    for (const Conversation& conversation : decoded.conversations.wrappedValue)
        known.push_back(conversation.visitor.meta->value());
}

void parseWithQt(const QByteArray& page)
{
    if (QJsonDocument::fromJson(page).isNull())
        std::abort();
}

std::function<double()> milliseconds(std::function<void()> work)
{
    return [work = std::move(work)] { return secondsPerRun(work) * millisecondsPerSecond; };
}

/// Reading a page of the inbox. The largest takes seconds and needs no more than two rounds.
Measurement decoding(int conversations, Budget budget)
{
    const QByteArray page = inboxPage(conversations);
    const auto parser = std::make_shared<simdjson::dom::parser>();
    return {u"decode inbox page of %L1"_s.arg(conversations),
            u"ms"_s,
            milliseconds([page] { decodePage(page); }),
            u"parse + one QString per text"_s,
            milliseconds([page, parser] { parseAndCopyStrings(*parser, page); }),
            budget,
            conversations > 10'000 ? 2 : 7};
}

} // namespace

std::vector<Measurement> codingMeasurements()
{
    constexpr int pageSize = 10'000;
    const QByteArray page = inboxPage(pageSize);
    const auto records =
        std::make_shared<ConversationsResponse>(APIJSON::decoder.decode<ConversationsResponse>(page));
    const QJsonDocument document = QJsonDocument::fromJson(page);
    const auto parser = std::make_shared<simdjson::dom::parser>();

    return {
        decoding(1'000, {}),
        decoding(pageSize, {Budget::Kind::ratio, 1.5}),
        decoding(100'000, {}),
        {u"decode inbox page of 10,000 once more"_s,
         u"ms"_s,
         milliseconds([page] { decodePage(page); }),
         u"Qt's JSON parse"_s,
         milliseconds([page] { parseWithQt(page); }),
         {Budget::Kind::ratio, 1.0}},
        {u"decode it and read what is known of each visitor"_s,
         u"ms"_s,
         milliseconds([page] { decodeAndReadAll(page); }),
         u"parse + one QString per text"_s,
         milliseconds([page, parser] { parseAndCopyStrings(*parser, page); }),
         {Budget::Kind::ratio, 1.5}},
        {u"encode inbox page of 10,000"_s,
         u"ms"_s,
         milliseconds([records] { APIJSON::encoder.encode(*records); }),
         u"Qt's JSON writer"_s,
         milliseconds([document] { document.toJson(QJsonDocument::Compact); }),
         {Budget::Kind::ratio, 1.0}},
    };
}

} // namespace orvia::bench
