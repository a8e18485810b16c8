#include "Models/OrderedStringMap.h"

#include "Models/APIJSON.h"
#include "Models/JSON/Decoding.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// What the key-order probe keeps: the members' names as the parser reports them.
struct Probe {
    QStringList keys;
};

bool readValue(json::Value& value, Probe& probe, json::Context& context)
{
    if (json::typeOf(value) != json::ValueType::object)
        return json::mismatch(value, u"an object", context);
    for (json::Member member : value.get_object()) {
        probe.keys.append(json::toQString(member.unescaped_key()));
        json::pass(member.value(), context);
    }
    return true;
}

} // namespace

std::vector<OrderedStringMap::Pair> OrderedStringMap::arranged(std::vector<Pair> pairs,
                                                               bool preservesKeyOrder)
{
    if (preservesKeyOrder)
        return pairs;
    std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& left, const Pair& right) {
        const auto leftPoints = left.key.toUcs4();
        const auto rightPoints = right.key.toUcs4();
        return std::lexicographical_compare(leftPoints.begin(), leftPoints.end(), rightPoints.begin(),
                                            rightPoints.end());
    });
    return pairs;
}

QString OrderedStringMap::textFromNumber(double number)
{
    if (std::round(number) == number && std::abs(number) < 1e15)
        return QString::number(static_cast<qint64>(number));
    std::array<char, 32> buffer{};
    char* const end = buffer.data() + buffer.size();
    // By itself it writes 0.0001 as 1e-04, which is shorter, and 0.00025 as it is.
    const bool isSmallFraction = std::abs(number) < 1 && std::abs(number) >= 1e-4;
    const auto result = isSmallFraction ? std::to_chars(buffer.data(), end, number, std::chars_format::fixed)
                                        : std::to_chars(buffer.data(), end, number);
    return QString::fromLatin1(buffer.data(), result.ptr - buffer.data());
}

bool decoderPreservesKeyOrder()
{
    static const bool preserves = [] {
        const QStringList written{u"m"_s, u"b"_s, u"z"_s, u"a"_s, u"q"_s, u"c"_s,
                                  u"y"_s, u"d"_s, u"x"_s, u"e"_s, u"p"_s, u"f"_s};
        QByteArray document = "{";
        for (qsizetype i = 0; i < written.size(); ++i) {
            document += i == 0 ? "\"" : ",\"";
            document += written[i].toUtf8() + "\":\"" + QByteArray::number(i) + '"';
        }
        document += '}';
        try {
            return json::decode<Probe>(document).keys == written;
        } catch (const DecodingError&) {
            return false;
        }
    }();
    return preserves;
}

} // namespace orvia
