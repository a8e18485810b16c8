#pragma once

#include "Models/Enums.h"
#include "Models/Instant.h"
#include "Models/Lossy.h"
#include "Models/OrderedStringMap.h"

#include <QSet>

#include <random>

namespace orvia {

/// Makes records from their field declarations: every member that may be absent is so half of the time, lists
/// hold up to three elements, texts hold what is hard to write. The same seed makes the same records.
class RecordGenerator {
public:
    explicit RecordGenerator(unsigned seed)
        : m_engine(seed)
    {
    }

    template <class T>
    T make()
    {
        T value{};
        fill(value);
        return value;
    }

    /// Gives @p value another value than it has.
    template <class T>
    void change(T& value)
    {
        const T before = value;
        while (value == before)
            fill(value);
    }

private:
    int below(int bound) { return std::uniform_int_distribution(0, bound - 1)(m_engine); }

    void fill(QString& value)
    {
        static const std::array<QString, 13> pieces{QStringLiteral("a"),
                                                    QStringLiteral("Straße "),
                                                    QStringLiteral("\""),
                                                    QStringLiteral("\\u0041"),
                                                    QStringLiteral("\n\t\r"),
                                                    QStringLiteral("/</script>"),
                                                    QString(QChar(0)),
                                                    QString(QChar(0x1F)),
                                                    QString(QChar(0x7F)),
                                                    QStringLiteral("\u2028"),
                                                    QStringLiteral("👩‍👩‍👧‍👦"),
                                                    QStringLiteral("\uFFFF"),
                                                    QString(QChar(QChar::ByteOrderMark))};
        value.clear();
        for (int count = below(6); count > 0; --count)
            value += pieces[static_cast<std::size_t>(below(static_cast<int>(pieces.size())))];
    }

    void fill(bool& value) { value = below(2) == 1; }

    void fill(qint64& value)
    {
        const std::array<qint64, 4> edges{0, -1, std::numeric_limits<qint64>::min(),
                                          std::numeric_limits<qint64>::max()};
        value = below(2) == 0 ? edges[static_cast<std::size_t>(below(4))]
                              : std::uniform_int_distribution<qint64>()(m_engine);
    }

    /// Whole seconds of the years 0000 to 9999, which is what the wire carries.
    void fill(Instant& value)
    {
        using namespace std::chrono;
        const auto first = sys_seconds(sys_days(year(0) / January / 1)).time_since_epoch().count();
        const auto last = sys_seconds(sys_days(year(10000) / January / 1)).time_since_epoch().count() - 1;
        value = Instant(seconds(std::uniform_int_distribution(first, last)(m_engine)));
    }

    void fill(OrderedStringMap& map)
    {
        map.pairs.clear();
        QSet<QString> keys;
        for (int count = below(4); count > 0; --count) {
            OrderedStringMap::Pair pair{make<QString>(), make<QString>()};
            if (!keys.contains(pair.key))
                map.pairs.push_back(pair);
            keys.insert(pair.key);
        }
    }

    template <json::TextEnum Enum>
    void fill(Enum& value)
    {
        const auto cases = allCases<Enum>();
        value = cases[static_cast<std::size_t>(below(static_cast<int>(cases.size())))];
    }

    template <json::StrictList List>
    void fill(List& list)
    {
        list.clear();
        for (int count = below(4); count > 0; --count)
            list.push_back(make<typename List::value_type>());
    }

    template <class Element>
    void fill(Lossy<Element>& list)
    {
        fill(list.wrappedValue);
    }

    template <class T>
    void fill(std::optional<T>& value)
    {
        value.reset();
        if (below(2) == 1)
            fill(value.emplace());
    }

    template <json::Record T>
    void fill(T& record)
    {
        std::apply([&](const auto&... field) { (fill(record.*(field.member)), ...); }, T::fields());
    }

    std::mt19937 m_engine;
};

} // namespace orvia
