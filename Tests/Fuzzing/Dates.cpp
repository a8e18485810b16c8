#include "Input.h"

#include "Models/Instant.h"
#include "Views/ConversationDetailView/TranscriptRules.h"

#include <QDateTime>
#include <QTimeZone>

#include <array>

/// Instants on the wire and on the clock. Fields: a date-time; a number of milliseconds since 1970; a zone,
/// of which the first letter chooses.
namespace orvia::fuzzing {
namespace {

using namespace std::chrono;

constexpr Instant earliest = sys_days(year(0) / January / 1);
constexpr Instant behindLatest = sys_days(year(10000) / January / 1);

bool isWithinRange(Instant instant)
{
    return instant >= earliest && instant < behindLatest;
}

void checkWritten(Instant instant)
{
    const std::string written = iso8601FromInstant(instant);
    require(written.size() == 20, "a written instant has four digits for the year");
    require(instantFromISO8601(written) == floor<seconds>(instant), "an instant is read as it was written");
}

void checkRead(const QByteArray& text)
{
    // A copy without a terminating zero, so that reading too far is found.
    const std::vector<char> exact(text.begin(), text.end());
    const auto instant = instantFromISO8601({exact.data(), exact.size()});
    if (!instant)
        return;
    require(isWithinRange(*instant), "a year has four digits");
    checkWritten(*instant);
    // The toolkit knows no year 0 and rounds what we cut, hence the first 19 characters: date and time.
    const QDateTime time = QDateTime::fromString(QString::fromLatin1(text.first(19)) + u'Z', Qt::ISODate);
    const milliseconds difference = Instant(milliseconds(time.toMSecsSinceEpoch())) - *instant;
    require(!time.isValid() || abs(difference) < days(1),
            "the toolkit reads the same instant, its zone aside");
    require(time.isValid() || text.startsWith("0000"), "what is read is a date");
}

void checkClock(Instant now, const QByteArray& choice)
{
    static const std::array zones{QTimeZone(QByteArrayLiteral("UTC")),
                                  QTimeZone(QByteArrayLiteral("Europe/Berlin")),
                                  QTimeZone(QByteArrayLiteral("America/New_York")),
                                  QTimeZone(QByteArrayLiteral("Australia/Lord_Howe")),
                                  QTimeZone(QByteArrayLiteral("Pacific/Apia")),
                                  QTimeZone(QByteArrayLiteral("America/Sao_Paulo")),
                                  QTimeZone(QByteArrayLiteral("Africa/Casablanca")),
                                  QTimeZone(5 * 3600 + 2700)};
    const QTimeZone& zone =
        zones.at(choice.isEmpty() ? 0 : static_cast<unsigned char>(choice[0]) % zones.size());
    // A day that the calendar skips makes the day after it the next one.
    const Instant morning = TranscriptRules::tomorrowMorning(now, zone);
    require(morning > now && morning - now < hours(60), "tomorrow morning is on the next day");
    const Instant later = TranscriptRules::threeDaysOut(now, zone);
    require(abs(later - now - days(3)) <= hours(25), "three days out is three days away");
}

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace orvia::fuzzing;
    Input input(data, size);
    checkRead(input.bytes());
    const orvia::Instant instant{std::chrono::milliseconds(input.bytes().toLongLong())};
    if (isWithinRange(instant)) {
        checkWritten(instant);
        checkClock(instant, input.bytes());
    }
    return 0;
}
