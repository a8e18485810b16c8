#include "Views/AdminViews/AdminRules.h"

#include <algorithm>

namespace orvia::AdminRules {

qint64 greetingDelay(const QString& text)
{
    // QString's own reading would also accept surrounding white space.
    const bool isSigned = text.startsWith(u'+') || text.startsWith(u'-');
    const QStringView digits = QStringView(text).sliced(isSigned ? 1 : 0);
    const bool isNumber = std::all_of(digits.begin(), digits.end(),
                                      [](QChar character) { return character >= u'0' && character <= u'9'; });
    bool fits = false;
    const qint64 value = text.toLongLong(&fits);
    return isNumber && fits ? value : 0;
}

} // namespace orvia::AdminRules
