#include "DemoService/WireEncoding.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace orvia::demo::wire {

using namespace Qt::StringLiterals;

namespace {

void writeNumber(Writer& writer, double number)
{
    constexpr double largestPlain = 1e15;
    if (std::trunc(number) == number && std::abs(number) < largestPlain)
        writer.Int64(static_cast<qint64>(number));
    else
        writer.Double(number);
}

} // namespace

void write(Writer& writer, const Instant& value)
{
    std::string text = iso8601FromInstant(value);
    const auto milliseconds =
        static_cast<int>((value - std::chrono::floor<std::chrono::seconds>(value)).count());
    if (milliseconds != 0) {
        std::array<char, 16> fraction{};
        std::snprintf(fraction.data(), fraction.size(), ".%03dZ", milliseconds);
        text.pop_back();
        text += fraction.data();
    }
    write(writer, std::string_view(text));
}

void write(Writer& writer, const OrderedStringMap& map)
{
    writer.StartObject();
    for (const auto& [key, value] : map.pairs) {
        write(writer, key);
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        if (value == "true"_L1 || value == "false"_L1)
            writer.Bool(value == "true"_L1);
        else if (isNumber && std::isfinite(number) && OrderedStringMap::textFromNumber(number) == value)
            writeNumber(writer, number);
        else
            write(writer, value);
    }
    writer.EndObject();
}

} // namespace orvia::demo::wire
