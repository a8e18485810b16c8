#pragma once

#include "Models/Visitor.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

/// The lines of the visitor panel as pure functions.
namespace orvia {

/// City, region, country and country code on one line; may be empty. None without a place.
std::optional<QString> placeLine(const std::optional<VisitorGeo>& geo);

/// Time zone and organisation on one line; may be empty. None without a place.
std::optional<QString> networkLine(const std::optional<VisitorGeo>& geo);

/// The text that names a page: its title, else its path, else its host, else its address.
QString pageLabel(const VisitorPage& page);

/// The web address that a text is, surrounding white space aside; none for anything but http and https.
std::optional<QUrl> webURL(const QString& text);

/// The address as something that can be opened: a URL with a scheme, whatever scheme that is.
std::optional<QUrl> openableURL(const QString& text);

/// The page that the visitor looks at: the last visited one with the visitor's current address, or that
/// address alone when none has it. None without an address.
std::optional<VisitorPage> currentPage(const VisitorMeta& meta);

/// One line of a table of labels and values.
struct LabelledValue {
    QString label;
    QString value;

    friend bool operator==(const LabelledValue&, const LabelledValue&) = default;
};

/// Browser, language, screen and referrer, each where it is known.
std::vector<LabelledValue> deviceRows(const VisitorMeta& meta);

namespace UserAgentInfo {

/// The browser and the operating system that a User-Agent header names, for example "Firefox on Linux".
QString describe(const QString& userAgent);

} // namespace UserAgentInfo

} // namespace orvia
