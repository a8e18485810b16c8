#include "Input.h"

#include "Views/AdminViews/AdminRules.h"
#include "Views/ConversationDetailView/TranscriptRules.h"
#include "Views/ConversationListView/ListRules.h"
#include "Views/VisitorPanel/VisitorHelpers.h"

#include <algorithm>

/// What the screens make of texts that a visitor, a site or a network wrote. Fields, each of which may be a
/// lone "-" for absent: city, region, country, country code, time zone, organisation, address, referrer, user
/// agent, language, screen; then pages of address and title; the names of viewers come from the titles.
namespace orvia::fuzzing {
namespace {

using namespace Qt::StringLiterals;

bool hasText(const std::optional<QString>& text)
{
    return text && !text->isEmpty();
}

VisitorMeta visitor(Input& input)
{
    VisitorMeta meta;
    VisitorGeo& geo = meta.geo.emplace();
    for (auto* field : {&geo.city, &geo.region, &geo.country, &geo.countryCode, &geo.timezone, &geo.org,
                        &meta.url, &meta.referrer, &meta.userAgent, &meta.language, &meta.screen})
        *field = input.optionalText();
    while (!input.atEnd()) {
        std::optional<QString> url = input.optionalText();
        std::optional<QString> title = input.optionalText();
        if (!meta.pages)
            meta.pages.emplace();
        meta.pages->push_back({std::move(url), std::move(title), std::nullopt});
    }
    return meta;
}

void checkPlace(const VisitorGeo& geo)
{
    const QString place = placeLine(geo).value_or(u"absent"_s);
    const bool isKnown =
        hasText(geo.city) || hasText(geo.region) || hasText(geo.country) || hasText(geo.countryCode);
    require(place.isEmpty() == !isKnown, "a known place has a line");
    require(!hasText(geo.city) || place.startsWith(*geo.city), "the city comes first");
    require(!hasText(geo.countryCode) || place.contains(geo.countryCode->toUpper()), "the code is capital");
    const QString network = networkLine(geo).value_or(u"absent"_s);
    require(network.isEmpty() == (!hasText(geo.timezone) && !hasText(geo.org)), "a known network has a line");
    require(!hasText(geo.org) || network.endsWith(*geo.org), "the organisation comes last");
}

void checkPage(const VisitorPage& page)
{
    require(!pageLabel(page).isEmpty(), "every page has a label");
    require(!hasText(page.title) || pageLabel(page) == *page.title, "a title is the label");
    const QString address = page.url.value_or(QString());
    if (const auto url = webURL(address)) {
        require(url->isValid() && !url->host().isEmpty(), "a web address names a host");
        require(url->scheme() == "http"_L1 || url->scheme() == "https"_L1, "a web address is of the web");
        require(openableURL(address.trimmed()) == url, "a web address can be opened");
    }
    Attachment attachment;
    attachment.url = page.url;
    const QUrl origin(u"https://chat.example/base"_s);
    if (const auto url = TranscriptRules::resolvedURL(attachment, origin))
        require(url->isValid() && !url->isRelative(), "an attachment's address is absolute");
}

void checkCurrentPage(const VisitorMeta& meta)
{
    const auto page = currentPage(meta);
    require(page.has_value() == hasText(meta.url), "an address is a page");
    if (!page)
        return;
    require(page->url == meta.url, "the current page has the current address");
    const bool wasVisited =
        meta.pages && std::find(meta.pages->begin(), meta.pages->end(), *page) != meta.pages->end();
    require(wasVisited || !page->title, "a title is that of a visit");
}

void checkDevice(const VisitorMeta& meta)
{
    for (const LabelledValue& row : deviceRows(meta))
        require(!row.label.isEmpty() && !row.value.isEmpty(), "a row says something");
    const QString device = UserAgentInfo::describe(meta.userAgent.value_or(QString()));
    require(!device.isEmpty() && device.size() < 40, "a device is a short text of ours");
}

void checkViewers(const VisitorMeta& meta)
{
    std::vector<ViewerAgent> viewers;
    for (const VisitorPage& page : meta.pages.value_or(std::vector<VisitorPage>()))
        viewers.push_back({page.url.value_or(QString()), page.title.value_or(QString())});
    const bool isSeen = std::any_of(viewers.begin(), viewers.end(),
                                    [](const auto& viewer) { return !viewer.name.isEmpty(); });
    require(TranscriptRules::presenceLine(viewers).has_value() == isSeen, "who has a name is seen");
    require(ListRules::viewingCaption(viewers).has_value() == isSeen, "who has a name is counted");
}

/// The numbers of a delay, counted by hand.
void checkDelay(const QString& text)
{
    qint64 expected = 0;
    const bool isNegative = text.startsWith(u'-');
    const qsizetype start = isNegative || text.startsWith(u'+') ? 1 : 0;
    bool isNumber = start < text.size();
    for (qsizetype position = start; isNumber && position < text.size(); ++position) {
        const int digit = text[position].unicode() - u'0';
        isNumber = digit >= 0 && digit <= 9 && !__builtin_mul_overflow(expected, 10, &expected)
                   && !__builtin_add_overflow(expected, isNegative ? -digit : digit, &expected);
    }
    require(AdminRules::greetingDelay(text) == (isNumber ? expected : 0), "a delay is a decimal number");
}

void checkHighlights(const QString& snippet, const QString& query)
{
    qsizetype end = 0;
    for (const UnicodeText::Range& range : ListRules::highlighted(snippet, query)) {
        require(range.start >= end && range.length > 0, "highlights ascend and do not overlap");
        end = range.start + range.length;
        require(end <= snippet.size(), "a highlight lies in the text");
        require(!ListRules::highlighted(snippet.sliced(range.start, range.length), query).empty(),
                "what is highlighted is the query");
    }
    require(query.isEmpty() || !ListRules::highlighted(query, query).empty(), "a query is found in itself");
}

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace orvia::fuzzing;
    Input input(data, size);
    const orvia::VisitorMeta meta = visitor(input);
    checkPlace(*meta.geo);
    checkPage({meta.url, meta.referrer, std::nullopt});
    checkPage({meta.referrer, std::nullopt, std::nullopt});
    checkCurrentPage(meta);
    checkDevice(meta);
    checkViewers(meta);
    checkDelay(meta.screen.value_or(QString()));
    checkHighlights(meta.geo->city.value_or(QString()), meta.geo->region.value_or(QString()));
    return 0;
}
