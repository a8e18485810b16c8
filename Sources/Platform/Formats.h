#pragma once

#include <QString>

#include <chrono>
#include <string>

/// Times, dates and sizes as the user's locale writes them. Without a locale (C, POSIX) they are English.
/// Main thread.
namespace orvia::Formats {

/// The user's locale as a BCP 47 tag.
std::string languageTag();

/// Hour and minute of the local time zone, with a day period where the locale uses one: "3:41 PM".
QString timeOfDay(std::chrono::sys_time<std::chrono::milliseconds> instant);

/// Day, abbreviated month and year in the local time zone: "14 Sep 2025".
QString date(std::chrono::sys_time<std::chrono::milliseconds> instant);

/// A size in decimal units, more precise the larger the unit: "512 bytes", "34 kB", "1.2 MB". Empty for a
/// negative one, which no file has.
QString fileSize(qint64 bytes);

} // namespace orvia::Formats
