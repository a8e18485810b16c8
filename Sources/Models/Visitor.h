#pragma once

#include "Models/Deferred.h"
#include "Models/Instant.h"
#include "Models/JSON/Fields.h"
#include "Models/OrderedStringMap.h"

namespace orvia {

/// Where the visitor's network address is.
struct VisitorGeo {
    std::optional<QString> city;
    std::optional<QString> region;
    std::optional<QString> country;
    std::optional<QString> countryCode;
    std::optional<QString> timezone;
    std::optional<QString> org;

    friend bool operator==(const VisitorGeo&, const VisitorGeo&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::lenient("city", &VisitorGeo::city),
            json::lenient("region", &VisitorGeo::region),
            json::lenient("country", &VisitorGeo::country),
            json::lenient("countryCode", &VisitorGeo::countryCode),
            json::lenient("timezone", &VisitorGeo::timezone),
            json::lenient("org", &VisitorGeo::org),
        };
    }
};

/// A page that the visitor opened.
struct VisitorPage {
    std::optional<QString> url;
    std::optional<QString> title;
    std::optional<Instant> at;

    friend bool operator==(const VisitorPage&, const VisitorPage&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::lenient("url", &VisitorPage::url),
            json::lenient("title", &VisitorPage::title),
            json::lenient("at", &VisitorPage::at),
        };
    }
};

/// What the chat widget learned about the visitor. A member of the wrong type is absent, the others survive.
struct VisitorMeta {
    std::optional<QString> url;
    std::optional<QString> referrer;
    std::optional<QString> userAgent;
    std::optional<QString> ip;
    std::optional<VisitorGeo> geo;
    std::optional<QString> language;
    std::optional<QString> screen;
    std::optional<qint64> timezoneOffset;
    std::optional<std::vector<VisitorPage>> pages; ///< absent as a whole when one of its elements fails
    std::optional<OrderedStringMap> data;          ///< custom data that the site attached

    friend bool operator==(const VisitorMeta&, const VisitorMeta&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::lenient("url", &VisitorMeta::url),
            json::lenient("referrer", &VisitorMeta::referrer),
            json::lenient("userAgent", &VisitorMeta::userAgent),
            json::lenient("ip", &VisitorMeta::ip),
            json::lenient("geo", &VisitorMeta::geo),
            json::lenient("language", &VisitorMeta::language),
            json::lenient("screen", &VisitorMeta::screen),
            json::lenient("timezoneOffset", &VisitorMeta::timezoneOffset),
            json::lenient("pages", &VisitorMeta::pages),
            json::lenient("data", &VisitorMeta::data),
        };
    }
};

/// The person on the site.
struct Visitor {
    QString name;
    QString email;
    std::optional<Deferred<VisitorMeta>> meta; ///< read when it is looked at: more than half of an inbox

    friend bool operator==(const Visitor&, const Visitor&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("name", &Visitor::name),
            json::required("email", &Visitor::email),
            json::optional("meta", &Visitor::meta),
        };
    }
};

} // namespace orvia
