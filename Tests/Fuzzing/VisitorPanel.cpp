#include "Input.h"

#include "Views/ConversationDetailView/TranscriptRules.h"
#include "Views/ConversationListView/ListRules.h"
#include "Views/VisitorPanel/VisitorHelpers.h"

#include <algorithm>

/// What the screens make of texts that a visitor, a site or a network wrote. Fields, each of which may be a
/// lone "-" for absent: city, region, country, country code, time zone, organisation, address, referrer, user
/// agent, language, screen; then pages of address and title.
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
    const orvia::VisitorGeo& geo = *meta.geo;
    require(orvia::placeLine(geo)->isEmpty()
                == !(hasText(geo.city) || hasText(geo.region) || hasText(geo.country)
                     || hasText(geo.countryCode)),
            "a known place has a line");
    require(orvia::networkLine(geo)->isEmpty() == !(hasText(geo.timezone) || hasText(geo.org)),
            "a known network has a line");
    checkPage({meta.url, meta.referrer, std::nullopt});
    checkPage({meta.referrer, std::nullopt, std::nullopt});
    require(orvia::currentPage(meta).has_value() == hasText(meta.url), "an address is a page");
    for (const orvia::LabelledValue& row : orvia::deviceRows(meta))
        require(!row.label.isEmpty() && !row.value.isEmpty(), "a row says something");
    checkHighlights(geo.city.value_or(QString()), geo.region.value_or(QString()));
    return 0;
}
