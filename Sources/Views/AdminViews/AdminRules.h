#pragma once

#include <QString>

namespace orvia::AdminRules {

/// The seconds that a delay field holds: a decimal integer with an optional sign, within 64 bits. Anything
/// else counts as 0.
qint64 greetingDelay(const QString& text);

} // namespace orvia::AdminRules
