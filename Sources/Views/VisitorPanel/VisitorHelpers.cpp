#include "Views/VisitorPanel/VisitorHelpers.h"

#include "Platform/WebAddress.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <utility>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("VisitorPanel", text);
}

bool hasText(const std::optional<QString>& text)
{
    return text && !text->isEmpty();
}

using NamedToken = std::pair<QLatin1StringView, QLatin1StringView>;

template <std::size_t size>
QString firstMatch(const QString& text, const std::array<NamedToken, size>& tokens)
{
    const auto match = std::find_if(tokens.begin(), tokens.end(),
                                    [&text](const NamedToken& token) { return text.contains(token.first); });
    return match == tokens.end() ? QString() : QString(match->second);
}

} // namespace

std::optional<QString> placeLine(const std::optional<VisitorGeo>& geo)
{
    if (!geo)
        return std::nullopt;
    QStringList parts;
    for (const auto& part : {geo->city, geo->region, geo->country}) {
        if (hasText(part) && (parts.isEmpty() || parts.last().compare(*part, Qt::CaseInsensitive) != 0))
            parts.append(*part);
    }
    const QString place = parts.join(", "_L1);
    if (!hasText(geo->countryCode))
        return place;
    const QString code = geo->countryCode->toUpper();
    return place.isEmpty() ? code : place + " ("_L1 + code + u')';
}

std::optional<QString> networkLine(const std::optional<VisitorGeo>& geo)
{
    if (!geo)
        return std::nullopt;
    QStringList parts;
    for (const auto& part : {geo->timezone, geo->org}) {
        if (hasText(part))
            parts.append(*part);
    }
    return parts.join(u" · "_s);
}

QString pageLabel(const VisitorPage& page)
{
    if (hasText(page.title))
        return *page.title;
    if (!hasText(page.url))
        return translated("Untitled page");
    // Browsers leave characters in addresses that a strict reader refuses.
    const QUrl url(*page.url, QUrl::TolerantMode);
    if (!url.isValid())
        return *page.url;
    const QString path = url.path(QUrl::FullyDecoded);
    if (!path.isEmpty() && path != "/"_L1)
        return path;
    return url.host().isEmpty() ? *page.url : url.host();
}

std::optional<QUrl> webURL(const QString& text)
{
    const QUrl url(text.trimmed(), QUrl::TolerantMode);
    return url.isValid() && isWebAddress(url) && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

std::optional<QUrl> openableURL(const QString& text)
{
    const QUrl url(text, QUrl::TolerantMode);
    return url.isValid() && !url.scheme().isEmpty() ? std::optional(url) : std::nullopt;
}

std::optional<VisitorPage> currentPage(const VisitorMeta& meta)
{
    if (!hasText(meta.url))
        return std::nullopt;
    if (meta.pages) {
        const auto page =
            std::find_if(meta.pages->crbegin(), meta.pages->crend(),
                         [&meta](const VisitorPage& visited) { return visited.url == meta.url; });
        if (page != meta.pages->crend())
            return *page;
    }
    return VisitorPage{meta.url, std::nullopt, std::nullopt};
}

std::vector<LabelledValue> deviceRows(const VisitorMeta& meta)
{
    std::vector<LabelledValue> rows;
    if (hasText(meta.userAgent))
        rows.push_back({translated("Browser"), UserAgentInfo::describe(*meta.userAgent)});
    if (hasText(meta.language))
        rows.push_back({translated("Language"), *meta.language});
    if (hasText(meta.screen))
        rows.push_back({translated("Screen"), *meta.screen});
    if (hasText(meta.referrer))
        rows.push_back({translated("Referrer"), *meta.referrer});
    return rows;
}

QString UserAgentInfo::describe(const QString& userAgent)
{
    // The order matters: most browsers and systems also claim to be the ones below them.
    static constexpr std::array<NamedToken, 8> browsers{{
        {"Edg/"_L1, "Edge"_L1},
        {"Edge/"_L1, "Edge"_L1},
        {"OPR/"_L1, "Opera"_L1},
        {"Opera"_L1, "Opera"_L1},
        {"Firefox/"_L1, "Firefox"_L1},
        {"Chrome/"_L1, "Chrome"_L1},
        {"CriOS/"_L1, "Chrome"_L1},
        {"Safari/"_L1, "Safari"_L1},
    }};
    static constexpr std::array<NamedToken, 7> systems{{
        {"Windows"_L1, "Windows"_L1},
        {"iPhone"_L1, "iOS"_L1},
        {"iPad"_L1, "iOS"_L1},
        {"Mac OS X"_L1, "macOS"_L1},
        {"Macintosh"_L1, "macOS"_L1},
        {"Android"_L1, "Android"_L1},
        {"Linux"_L1, "Linux"_L1},
    }};
    QString browser = firstMatch(userAgent, browsers);
    if (browser.isEmpty())
        browser = translated("Unknown browser");
    const QString system = firstMatch(userAgent, systems);
    return system.isEmpty() ? browser : translated("%1 on %2").arg(browser, system);
}

} // namespace orvia
