#include "Platform/Formats.h"

#include <QDateTime>
#include <QLocale>

#include <unicode/smpdtfmt.h>

#include <memory>

namespace orvia::Formats {

using namespace Qt::StringLiterals;

namespace {

using TimePoint = std::chrono::sys_time<std::chrono::milliseconds>;

bool hasLocale()
{
    return QLocale().language() != QLocale::C;
}

QDateTime local(TimePoint instant)
{
    return QDateTime::fromMSecsSinceEpoch(instant.time_since_epoch().count());
}

/// The date format of the user's locale, kept until that changes. It writes dates that are given as
/// Greenwich noon, so that Qt alone decides on the local time zone.
const icu::DateFormat* dateFormat()
{
    static std::string language;
    static std::unique_ptr<icu::DateFormat> kept;
    const std::string current = languageTag();
    if (!kept || language != current) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale locale = icu::Locale::forLanguageTag(current, status);
        std::unique_ptr<icu::DateFormat> made(
            hasLocale() ? icu::DateFormat::createInstanceForSkeleton("yMMMd", locale, status)
                        : new icu::SimpleDateFormat("d MMM y", locale, status));
        if (U_FAILURE(status) || !made)
            return nullptr;
        made->setTimeZone(*icu::TimeZone::getGMT());
        kept = std::move(made);
        language = current;
    }
    return kept.get();
}

} // namespace

std::string languageTag()
{
    return hasLocale() ? QLocale().bcp47Name().toStdString() : std::string("en");
}

QString timeOfDay(TimePoint instant)
{
    const QTime time = local(instant).time();
    return hasLocale() ? QLocale().toString(time, QLocale::ShortFormat)
                       : QLocale::c().toString(time, u"h:mm AP"_s);
}

QString date(TimePoint instant)
{
    const icu::DateFormat* format = dateFormat();
    if (!format)
        return {};
    const QDateTime noon(local(instant).date(), QTime(12, 0), Qt::UTC);
    icu::UnicodeString text;
    format->format(static_cast<UDate>(noon.toMSecsSinceEpoch()), text);
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

QString fileSize(qint64 bytes)
{
    if (bytes < 0)
        return {};
    constexpr qint64 nearlyOneMegabyte = 999'500;
    constexpr qint64 nearlyOneGigabyte = 999'950'000;
    if (bytes >= nearlyOneMegabyte && bytes < 1'000'000)
        bytes = 1'000'000;
    if (bytes >= nearlyOneGigabyte && bytes < 1'000'000'000)
        bytes = 1'000'000'000;
    const int digits = bytes < 1'000'000 ? 0 : bytes < 1'000'000'000 ? 1 : 2;
    QLocale locale = hasLocale() ? QLocale() : QLocale(QLocale::English);
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.formattedDataSize(bytes, digits, QLocale::DataSizeSIFormat);
}

} // namespace orvia::Formats
