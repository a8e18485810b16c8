#include "Platform/RelativeTime.h"

#include "Platform/Formats.h"

#include <QDate>
#include <QDateTime>

#include <unicode/reldatefmt.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

namespace orvia {

namespace {

using namespace std::chrono;
using TimePoint = sys_time<milliseconds>;

struct Distance {
    int amount = 0; ///< negative in the past
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    TimePoint nextChange;
};

QDate localDate(TimePoint instant)
{
    return QDateTime::fromMSecsSinceEpoch(instant.time_since_epoch().count()).date();
}

TimePoint nextMidnight(TimePoint now)
{
    const QDateTime midnight = localDate(now).addDays(1).startOfDay();
    const TimePoint instant{milliseconds(midnight.toMSecsSinceEpoch())};
    return midnight.isValid() && instant > now ? instant : now + days(1);
}

int wholeMonths(QDate earlier, QDate later)
{
    const int months = (later.year() - earlier.year()) * 12 + later.month() - earlier.month();
    return earlier.addMonths(months) > later ? months - 1 : months;
}

/// A distance of whole steps of a fixed length.
Distance fixedDistance(TimePoint then, TimePoint now, milliseconds step, URelativeDateTimeUnit unit)
{
    if (then > now) {
        const auto count = (then - now) / step;
        return {static_cast<int>(count), unit, then - count * step + milliseconds(1)};
    }
    const auto count = (now - then) / step;
    return {static_cast<int>(-count), unit, then + (count + 1) * step};
}

Distance calendarDistance(TimePoint then, TimePoint now, qint64 daysAhead)
{
    const int sign = daysAhead < 0 ? -1 : 1;
    const auto dayCount = static_cast<int>(std::abs(daysAhead));
    const QDate earlier = localDate(std::min(then, now));
    const QDate later = localDate(std::max(then, now));
    const int months = wholeMonths(earlier, later);
    const TimePoint next = nextMidnight(now);
    if (dayCount < 7)
        return {sign * dayCount, UDAT_REL_UNIT_DAY,
                then > now ? std::min(next, std::max(now, then - 12h) + 1ms) : next};
    if (months < 1)
        return {sign * (dayCount / 7), UDAT_REL_UNIT_WEEK, next};
    if (months < 12)
        return {sign * months, UDAT_REL_UNIT_MONTH, next};
    return {sign * (months / 12), UDAT_REL_UNIT_YEAR, next};
}

Distance distance(TimePoint then, TimePoint now)
{
    const milliseconds apart = then > now ? then - now : now - then;
    if (apart < 1min)
        return {0, UDAT_REL_UNIT_SECOND, then + 1min};
    if (apart < 1h)
        return fixedDistance(then, now, 1min, UDAT_REL_UNIT_MINUTE);
    const qint64 daysAhead = apart < 12h ? 0 : localDate(now).daysTo(localDate(then));
    if (daysAhead != 0)
        return calendarDistance(then, now, daysAhead);
    Distance hours = fixedDistance(then, now, 1h, UDAT_REL_UNIT_HOUR);
    hours.nextChange = std::min(hours.nextChange, nextMidnight(now));
    return hours;
}

/// Making a formatter takes milliseconds, so one is kept until the user's language changes.
std::shared_ptr<const icu::RelativeDateTimeFormatter> formatter()
{
    static std::mutex mutex;
    static std::string language;
    static std::shared_ptr<const icu::RelativeDateTimeFormatter> kept;
    const std::lock_guard lock(mutex);
    const std::string current = Formats::languageTag();
    if (!kept || language != current) {
        UErrorCode status = U_ZERO_ERROR;
        auto made = std::make_shared<icu::RelativeDateTimeFormatter>(
            icu::Locale::forLanguageTag(current, status), nullptr, UDAT_STYLE_LONG,
            UDISPCTX_CAPITALIZATION_NONE, status);
        if (U_FAILURE(status))
            return nullptr;
        kept = std::move(made);
        language = current;
    }
    return kept;
}

} // namespace

QString relativeTime(TimePoint then, TimePoint now)
{
    const Distance found = distance(then, now);
    const auto words = formatter();
    if (!words)
        return {};
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text;
    // Zero counts as the future for ICU and "now" is its name for no seconds.
    words->format(static_cast<double>(found.amount), found.unit, text, status);
    return U_FAILURE(status) ? QString()
                             : QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

TimePoint nextRelativeTimeChange(TimePoint then, TimePoint now)
{
    return distance(then, now).nextChange;
}

} // namespace orvia
