#include "Models/JSON/Decoding.h"

#include <mutex>

namespace orvia::json {

using namespace Qt::StringLiterals;

namespace {

/// The service may send integers beyond 64 bits in custom data, which the parser refuses. Written with an
/// exponent they are ordinary doubles. Answers the rewritten document, or none when nothing had to change.
std::optional<std::string> withLongIntegersAsDoubles(std::string_view document)
{
    constexpr std::size_t longestSafeInteger = 18;
    std::string rewritten;
    std::size_t copied = 0;
    bool inString = false;
    for (std::size_t i = 0; i < document.size(); ++i) {
        const char c = document[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
            continue;
        }
        if (c == '"') {
            inString = true;
            continue;
        }
        if (c < '0' || c > '9')
            continue;
        const std::size_t end = std::min(document.find_first_not_of("0123456789+-.eE", i), document.size());
        const std::string_view number = document.substr(i, end - i);
        if (number.size() > longestSafeInteger && number.find_first_of("+-.eE") == std::string_view::npos) {
            rewritten.append(document.substr(copied, end - copied)).append("e0");
            copied = end;
        }
        i = end - 1;
    }
    if (copied == 0)
        return std::nullopt;
    rewritten.append(document.substr(copied));
    return rewritten;
}

/// Parsers keep their buffers, which are worth keeping between documents of ordinary size.
constexpr std::size_t largestKeptCapacity = 4 * 1024 * 1024;

struct ParserPool {
    std::mutex mutex;
    std::vector<std::unique_ptr<simdjson::dom::parser>> idle;

    static ParserPool& shared()
    {
        static ParserPool pool;
        return pool;
    }

    std::unique_ptr<simdjson::dom::parser> take()
    {
        {
            const std::lock_guard lock(mutex);
            if (!idle.empty()) {
                auto parser = std::move(idle.back());
                idle.pop_back();
                return parser;
            }
        }
        return std::make_unique<simdjson::dom::parser>(static_cast<std::size_t>(APIJSON::maxDocumentBytes));
    }

    void giveBack(std::unique_ptr<simdjson::dom::parser> parser)
    {
        constexpr std::size_t mostIdle = 4;
        if (parser->capacity() > largestKeptCapacity)
            return;
        const std::lock_guard lock(mutex);
        if (idle.size() < mostIdle)
            idle.push_back(std::move(parser));
    }
};

simdjson::error_code parse(simdjson::dom::parser& parser, std::string_view document, Element& root)
{
    if (parser.capacity() < document.size() || parser.max_depth() != APIJSON::maxDepth) {
        const std::size_t capacity = std::max<std::size_t>(document.size(), 4096);
        if (const auto error = parser.allocate(capacity, APIJSON::maxDepth))
            return error;
    }
    return parser.parse(document.data(), document.size()).get(root);
}

} // namespace

DecodingError Failure::error() const
{
    switch (m_kind) {
    case DecodingError::Kind::typeMismatch:
        return {m_kind, u"Expected %1"_s.arg(m_subject)};
    case DecodingError::Kind::missingMember:
        return {m_kind, u"Missing member: "_s + toQString(m_key)};
    default:
        return {m_kind, m_description};
    }
}

ParsedDocument::ParsedDocument(QByteArrayView bytes)
    : m_parser(ParserPool::shared().take())
{
    std::string_view document(bytes.data(), static_cast<std::size_t>(bytes.size()));
    simdjson::error_code error = simdjson::CAPACITY;
    if (bytes.size() <= APIJSON::maxDocumentBytes) {
        error = parse(*m_parser, document, m_root);
        std::optional<std::string> rewritten;
        if (error == simdjson::NUMBER_ERROR && (rewritten = withLongIntegersAsDoubles(document)))
            error = parse(*m_parser, *rewritten, m_root);
    }
    if (error != simdjson::SUCCESS) {
        throw DecodingError(DecodingError::Kind::syntax,
                            QString::fromLatin1(simdjson::error_message(error)));
    }
}

ParsedDocument::~ParsedDocument()
{
    ParserPool::shared().giveBack(std::move(m_parser));
}

bool readValue(const Element& element, QString& value, Failure& failure)
{
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS)
        return failure.typeMismatch(u"a string");
    value = toQString(text);
    return true;
}

bool readValue(const Element& element, bool& value, Failure& failure)
{
    return element.get(value) == simdjson::SUCCESS || failure.typeMismatch(u"a boolean");
}

bool readValue(const Element& element, qint64& value, Failure& failure)
{
    std::int64_t integer = 0;
    if (element.get(integer) == simdjson::SUCCESS) {
        value = integer;
        return true;
    }
    // A whole number may be written with a decimal point or an exponent.
    double number = 0;
    if (element.is_double() && element.get(number) == simdjson::SUCCESS && std::trunc(number) == number
        && number >= -0x1p63 && number < 0x1p63) {
        value = static_cast<qint64>(number);
        return true;
    }
    return failure.typeMismatch(u"an integer");
}

bool readValue(const Element& element, Instant& value, Failure& failure)
{
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS)
        return failure.typeMismatch(u"a string");
    const auto instant = instantFromISO8601(text);
    if (!instant)
        return failure.corruptedData(u"Unrecognized date: "_s + toQString(text));
    value = *instant;
    return true;
}

bool readValue(const Element& element, OrderedStringMap& map, Failure& failure)
{
    simdjson::dom::object object;
    if (element.get(object) != simdjson::SUCCESS)
        return failure.typeMismatch(u"an object");
    std::vector<OrderedStringMap::Pair> pairs;
    for (const auto member : object) {
        std::string_view text;
        bool flag = false;
        double number = 0;
        QString value;
        if (member.value.get(text) == simdjson::SUCCESS)
            value = toQString(text);
        else if (member.value.get(flag) == simdjson::SUCCESS)
            value = flag ? u"true"_s : u"false"_s;
        else if (member.value.get(number) == simdjson::SUCCESS)
            value = OrderedStringMap::textFromNumber(number);
        else
            continue;
        pairs.push_back({JSONDynamicKey(toQString(member.key)).stringValue, std::move(value)});
    }
    map.pairs = OrderedStringMap::arranged(std::move(pairs), decoderPreservesKeyOrder());
    return true;
}

} // namespace orvia::json
