#include "Views/ConversationDetailView/TranscriptRules.h"

#include <QCoreApplication>
#include <QDateTime>

namespace orvia::TranscriptRules {

using namespace Qt::StringLiterals;
using namespace std::chrono;

namespace {

constexpr seconds dividerGap(600);
constexpr int spacingWithinSender = 3;
constexpr int spacingBetweenSenders = 12;

QString translated(const char* text)
{
    return QCoreApplication::translate("ConversationDetailView", text);
}

QDateTime localTime(Instant instant, const QTimeZone& zone)
{
    return QDateTime::fromMSecsSinceEpoch(instant.time_since_epoch().count(), zone);
}

/// The instant at which the clocks of @p zone show @p date and @p time: the first one if they do so twice,
/// the next that exists if they never do. QDateTime leaves both cases open, hence this search.
std::optional<Instant> firstInstant(QDate date, QTime time, const QTimeZone& zone)
{
    const qint64 shown = QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch();
    if (!date.isValid() || !zone.isValid())
        return std::nullopt;
    constexpr qint64 window = milliseconds(days(2)).count();
    const auto offsetAt = [&zone](qint64 instant) {
        return 1000LL * zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(instant, Qt::UTC));
    };
    // Between two changes of the clocks the offset is one number; the earliest stretch that shows the time
    // wins.
    qint64 begin = shown - window;
    for (;;) {
        const qint64 offset = offsetAt(begin);
        const qint64 candidate = qMax(begin, shown - offset);
        const QTimeZone::OffsetData change =
            zone.hasTransitions() ? zone.nextTransition(QDateTime::fromMSecsSinceEpoch(begin, Qt::UTC))
                                  : QTimeZone::OffsetData();
        const bool lasts = !change.atUtc.isValid() || candidate < change.atUtc.toMSecsSinceEpoch();
        if (lasts)
            return Instant(milliseconds(candidate));
        begin = change.atUtc.toMSecsSinceEpoch();
    }
}

} // namespace

bool showsTimeDivider(const Message* previous, const Message& current)
{
    return previous && previous->createdAt && current.createdAt
           && *current.createdAt - *previous->createdAt > dividerGap;
}

int topSpacing(const Message* previous, const Message& current, bool dividerShown)
{
    if (!previous || dividerShown)
        return 0;
    return previous->sender == current.sender ? spacingWithinSender : spacingBetweenSenders;
}

bool showsEmailCaption(const Message& current, const Message* next)
{
    if (current.via != MessageVia::email)
        return false;
    return !next || next->via != MessageVia::email || next->sender != current.sender;
}

std::optional<QString> presenceLine(const std::vector<ViewerAgent>& viewers)
{
    QStringList names;
    for (const ViewerAgent& viewer : viewers) {
        if (!viewer.name.isEmpty())
            names.append(viewer.name);
    }
    switch (names.size()) {
    case 0:
        return std::nullopt;
    case 1:
        return translated("%1 is also viewing").arg(names[0]);
    case 2:
        return translated("%1 and %2 are also viewing").arg(names[0], names[1]);
    default:
        return translated("%1 and %2 others are also viewing")
            .arg(names[0], QString::number(names.size() - 1));
    }
}

QString noteCaption(const std::optional<QString>& author)
{
    const QString caption = translated("Internal note");
    return author && !author->isEmpty() ? caption + u" · "_s + *author : caption;
}

QString assignmentLine(const Conversation* conversation, const std::optional<QString>& ownId,
                       const std::optional<QString>& assigneeName)
{
    if (!conversation || !conversation->assigneeId)
        return translated("Unassigned");
    if (conversation->assigneeId == ownId)
        return translated("Assigned to you");
    return translated("Assigned to %1").arg(assigneeName.value_or(translated("a teammate")));
}

std::optional<QUrl> resolvedURL(const Attachment& attachment, const QUrl& baseURL)
{
    if (!attachment.url || attachment.url->isEmpty())
        return std::nullopt;
    QUrl url(*attachment.url, QUrl::TolerantMode);
    if (!url.isValid())
        return std::nullopt;
    if (url.isRelative())
        url = baseURL.resolved(url);
    return url.isValid() && !url.isRelative() ? std::optional(url) : std::nullopt;
}

Instant tomorrowMorning(Instant now, const QTimeZone& zone)
{
    const QDateTime today = localTime(now, zone);
    const Instant nextDay = firstInstant(today.date().addDays(1), today.time(), zone).value_or(now);
    return firstInstant(localTime(nextDay, zone).date(), QTime(9, 0), zone).value_or(now + days(1));
}

Instant threeDaysOut(Instant now, const QTimeZone& zone)
{
    const QDateTime today = localTime(now, zone);
    return firstInstant(today.date().addDays(3), today.time(), zone).value_or(now);
}

} // namespace orvia::TranscriptRules
