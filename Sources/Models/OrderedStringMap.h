#pragma once

#include <QString>

#include <vector>

namespace orvia {

/// A map from text to text that keeps the order in which the service wrote its members. On the wire it is an
/// object: strings are kept, booleans and numbers become text, every other value is left out.
struct OrderedStringMap {
    /// One member; identified by its key.
    struct Pair {
        QString key;
        QString value;

        friend bool operator==(const Pair&, const Pair&) = default;
    };

    std::vector<Pair> pairs;

    friend bool operator==(const OrderedStringMap&, const OrderedStringMap&) = default;

    /// The pairs as they are shown: as given when the parser reports members in document order, else in
    /// ascending order of the key's code points, equal keys keeping their order.
    static std::vector<Pair> arranged(std::vector<Pair> pairs, bool preservesKeyOrder);

    /// The text of a number of custom data: a whole number below 1e15 in plain decimal digits, anything else
    /// in the shortest form that reads back as the same double.
    static QString textFromNumber(double number);
};

/// Whether the JSON parser reports an object's members in document order. Worked out at first use by decoding
/// a probe, then fixed for the life of the process.
bool decoderPreservesKeyOrder();

} // namespace orvia
