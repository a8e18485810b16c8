#include "Models/Instant.h"

#include <array>
#include <cstdio>

namespace orvia {

namespace {

using namespace std::chrono;

/// Walks a text and consumes what a date is made of; the first mismatch makes every later step fail.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
    {
    }

    bool literal(char expected)
    {
        if (m_rest.empty() || m_rest.front() != expected)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// Exactly @p count decimal digits, or none.
    std::optional<int> digits(std::size_t count)
    {
        if (m_rest.size() < count)
            return std::nullopt;
        int value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const char digit = m_rest[i];
            if (digit < '0' || digit > '9')
                return std::nullopt;
            value = value * 10 + (digit - '0');
        }
        m_rest.remove_prefix(count);
        return value;
    }

    /// One or more digits after the decimal point, as milliseconds.
    std::optional<milliseconds> fraction()
    {
        int value = 0;
        int weight = 100;
        std::size_t count = 0;
        while (count < m_rest.size() && m_rest[count] >= '0' && m_rest[count] <= '9') {
            value += (m_rest[count] - '0') * weight;
            weight /= 10;
            ++count;
        }
        if (count == 0)
            return std::nullopt;
        m_rest.remove_prefix(count);
        return milliseconds(value);
    }

    bool atEnd() const { return m_rest.empty(); }

private:
    std::string_view m_rest;
};

std::optional<minutes> scanZone(Scanner& scanner)
{
    if (scanner.literal('Z'))
        return minutes(0);
    const bool east = scanner.literal('+');
    if (!east && !scanner.literal('-'))
        return std::nullopt;
    const auto hour = scanner.digits(2);
    if (!hour || *hour > 23 || !scanner.literal(':'))
        return std::nullopt;
    const auto minute = scanner.digits(2);
    if (!minute || *minute > 59)
        return std::nullopt;
    const minutes offset = hours(*hour) + minutes(*minute);
    return east ? offset : -offset;
}

} // namespace

Instant currentInstant()
{
    return floor<milliseconds>(system_clock::now());
}

std::optional<Instant> instantFromISO8601(std::string_view text)
{
    Scanner scanner(text);
    const auto yearNumber = scanner.digits(4);
    if (!yearNumber || !scanner.literal('-'))
        return std::nullopt;
    const auto monthNumber = scanner.digits(2);
    if (!monthNumber || !scanner.literal('-'))
        return std::nullopt;
    const auto dayNumber = scanner.digits(2);
    if (!dayNumber || !scanner.literal('T'))
        return std::nullopt;
    const auto hour = scanner.digits(2);
    if (!hour || *hour > 23 || !scanner.literal(':'))
        return std::nullopt;
    const auto minute = scanner.digits(2);
    if (!minute || *minute > 59 || !scanner.literal(':'))
        return std::nullopt;
    const auto second = scanner.digits(2);
    if (!second || *second > 59)
        return std::nullopt;
    milliseconds fraction(0);
    if (scanner.literal('.')) {
        const auto scanned = scanner.fraction();
        if (!scanned)
            return std::nullopt;
        fraction = *scanned;
    }
    const auto zone = scanZone(scanner);
    if (!zone || !scanner.atEnd())
        return std::nullopt;

    const year_month_day date(year(*yearNumber), month(static_cast<unsigned>(*monthNumber)),
                              day(static_cast<unsigned>(*dayNumber)));
    if (!date.ok())
        return std::nullopt;
    const Instant instant =
        Instant(sys_days(date)) + hours(*hour) + minutes(*minute) + seconds(*second) + fraction - *zone;
    // An offset may lead out of the years that four digits can write.
    constexpr Instant earliest = sys_days(year(0) / January / 1);
    constexpr Instant behindLatest = sys_days(year(10000) / January / 1);
    if (instant < earliest || instant >= behindLatest)
        return std::nullopt;
    return instant;
}

std::string iso8601FromInstant(Instant instant)
{
    const auto wholeSeconds = floor<seconds>(instant);
    const auto midnight = floor<days>(wholeSeconds);
    const year_month_day date(midnight);
    const hh_mm_ss time(wholeSeconds - midnight);
    std::array<char, 48> buffer{};
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

} // namespace orvia
