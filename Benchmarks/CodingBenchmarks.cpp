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

constexpr int pageSize = 10'000;
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
    if (strings.size() < static_cast<std::size_t>(pageSize))
        std::abort();
}

void decodePage(const QByteArray& page)
{
    const auto response = APIJSON::decoder.decode<ConversationsResponse>(page);
    if (response.conversations.wrappedValue.size() != static_cast<std::size_t>(pageSize))
        std::abort();
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

} // namespace

std::vector<Measurement> codingMeasurements()
{
    const QByteArray page = inboxPage(pageSize);
    const auto parser = std::make_shared<simdjson::dom::parser>();
    const auto records =
        std::make_shared<ConversationsResponse>(APIJSON::decoder.decode<ConversationsResponse>(page));
    const QJsonDocument document = QJsonDocument::fromJson(page);
    const QString pageName = u"inbox page of 10,000 (%1 MB)"_s.arg(page.size() / 1'000'000);

    return {
        {u"decode "_s + pageName,
         u"ms"_s,
         milliseconds([page] { decodePage(page); }),
         u"parse + one QString per text"_s,
         milliseconds([page, parser] { parseAndCopyStrings(*parser, page); }),
         {Budget::Kind::ratio, 1.5}},
        {u"decode "_s + pageName,
         u"ms"_s,
         milliseconds([page] { decodePage(page); }),
         u"Qt's JSON parse"_s,
         milliseconds([page] { parseWithQt(page); }),
         {Budget::Kind::ratio, 1.0}},
        {u"encode "_s + pageName,
         u"ms"_s,
         milliseconds([records] { APIJSON::encoder.encode(*records); }),
         u"Qt's JSON writer"_s,
         milliseconds([document] { document.toJson(QJsonDocument::Compact); }),
         {Budget::Kind::ratio, 1.0}},
    };
}

} // namespace orvia::bench
