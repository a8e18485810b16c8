#include "Models/JSON/Decoding.h"

#include "Models/JSON/Tolerance.h"

#include <QHash>
#include <QThread>
#include <QThreadPool>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <mutex>
#include <semaphore>

namespace orvia::json {

using namespace Qt::StringLiterals;

namespace {

/// Parsers keep their buffers, which are worth keeping between the many small documents of the live channel.
/// They are several times as large as the document, so that those of a whole inbox are given back.
constexpr std::size_t largestKeptCapacity = 64 * 1024;

struct ParserPool {
    std::mutex mutex;
    std::vector<std::unique_ptr<DocumentParser>> idle;

    static ParserPool& shared()
    {
        static ParserPool pool;
        return pool;
    }

    std::unique_ptr<DocumentParser> take()
    {
        {
            const std::lock_guard lock(mutex);
            if (!idle.empty()) {
                auto parser = std::move(idle.back());
                idle.pop_back();
                return parser;
            }
        }
        return std::make_unique<DocumentParser>();
    }

    void giveBack(std::unique_ptr<DocumentParser> parser)
    {
        constexpr std::size_t mostIdle = 4;
        if (parser->capacity() > largestKeptCapacity)
            return;
        const std::lock_guard lock(mutex);
        if (idle.size() < mostIdle)
            idle.push_back(std::move(parser));
    }
};

/// A parser that goes back to the others.
class LentParser {
public:
    LentParser()
        : m_parser(ParserPool::shared().take())
    {
    }
    ~LentParser() { ParserPool::shared().giveBack(std::move(m_parser)); }
    LentParser(const LentParser&) = delete;
    LentParser& operator=(const LentParser&) = delete;

    DocumentParser* operator->() const { return m_parser.get(); }

private:
    std::unique_ptr<DocumentParser> m_parser;
};

void readOnlyValue(std::string_view document, TextPool* pool,
                   const std::function<void(Value&, Context&)>& read)
{
    const LentParser parser;
    KeptTexts kept;
    simdjson::ondemand::array list = parser->listOf(document).get_array();
    bool isFirst = true;
    for (Value value : list) {
        if (!std::exchange(isFirst, false))
            throw simdjson::simdjson_error(simdjson::TAPE_ERROR);
        Context context(pool, kept, parser->hasEscapes());
        read(value, context);
    }
    parser->expectEnd();
}

[[noreturn]] void fail(simdjson::error_code error)
{
    throw DecodingError(DecodingError::Kind::syntax, QString::fromLatin1(simdjson::error_message(error)));
}

} // namespace

DecodingError Context::error() const
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

QString TextPool::text(std::string_view utf8)
{
    constexpr std::size_t longestShared = 256;
    if (utf8.empty() || utf8.size() > longestShared)
        return toQString(utf8);
    // Both ends tell most texts apart; telling all of them apart is the comparison's task.
    std::uint64_t head = 0;
    std::uint64_t tail = 0;
    const std::size_t length = std::min(utf8.size(), sizeof head);
    std::memcpy(&head, utf8.data(), length);
    std::memcpy(&tail, utf8.data() + utf8.size() - length, length);
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
    const std::uint64_t mixed = ((head * odd) ^ tail ^ utf8.size()) * odd;
    constexpr int indexShift = 64 - std::countr_zero(size);
    Entry& known = m_entries[mixed >> indexShift];

    if (known.bytes == utf8.size() && known.head == head && known.tail == tail) {
        // The ends of a short text are all of it. A text has as many code units as bytes exactly when it is
        // ASCII, which is Latin-1 too and compared sooner.
        const auto count = static_cast<qsizetype>(utf8.size());
        const bool isKnown = utf8.size() <= sizeof head + sizeof tail
                             || (known.text.size() == count
                                     ? known.text == QLatin1StringView(utf8.data(), count)
                                     : QAnyStringView(known.text) == QUtf8StringView(utf8.data(), count));
        if (isKnown)
            return known.text;
    }
    QString text = toQString(utf8);
    if (std::exchange(known.latest, mixed) == mixed)
        known = {mixed, head, tail, utf8.size(), text};
    return text;
}

DocumentParser::DocumentParser() = default;
DocumentParser::~DocumentParser() = default;

Value DocumentParser::listOf(std::string_view values)
{
    if (values.find_first_not_of(" \t\n\r") == std::string_view::npos)
        throw simdjson::simdjson_error(simdjson::EMPTY);
    m_text.clear();
    m_text.reserve(values.size() + 2 + simdjson::SIMDJSON_PADDING);
    m_text.append(1, '[').append(values).append(1, ']');
    m_hasEscapes = values.find('\\') != std::string_view::npos;
    const std::size_t size = m_text.size();
    m_text.append(simdjson::SIMDJSON_PADDING, '\0');
    // Room for the documents to come, which differ a little.
    if (m_parser.capacity() < size) {
        if (const auto error = m_parser.allocate(std::bit_ceil(size)))
            throw simdjson::simdjson_error(error);
    }
    m_document = m_parser.iterate(m_text.data(), size, m_text.size());
    return m_document.get_value();
}

void DocumentParser::expectEnd()
{
    if (m_document.current_location().error() != simdjson::OUT_OF_BOUNDS)
        throw simdjson::simdjson_error(simdjson::TRAILING_CONTENT);
}

void readDocument(QByteArrayView bytes, const std::function<void(Value&, Context&)>& read)
{
    std::string_view document(bytes.data(), static_cast<std::size_t>(bytes.size()));
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (document.starts_with(byteOrderMark))
        document.remove_prefix(byteOrderMark.size());
    if (bytes.size() > APIJSON::maxDocumentBytes)
        fail(simdjson::CAPACITY);
    // Small documents, such as the frames of the live channel, repeat nothing.
    constexpr std::size_t worthPooling = 16 * 1024;
    const auto pool = document.size() < worthPooling ? nullptr : std::make_unique<TextPool>();
    try {
        readOnlyValue(document, pool.get(), read);
    } catch (const simdjson::simdjson_error& error) {
        const auto mended =
            error.error() == simdjson::STRING_ERROR ? withoutHalvedCharacters(document) : std::nullopt;
        if (!mended)
            fail(error.error());
        try {
            readOnlyValue(*mended, pool.get(), read);
        } catch (const simdjson::simdjson_error& stillRefused) {
            fail(stillRefused.error());
        }
    }
}

void withHelpers(int mostHelpers, const std::function<void()>& work)
{
    QThreadPool& pool = *QThreadPool::globalInstance();
    std::counting_semaphore<> finished(0);
    // Queued where no thread is free: one may become so before the work is done, as when two pages arrive.
    std::vector<std::unique_ptr<QRunnable>> helpers;
    const int wanted = std::min(mostHelpers, QThread::idealThreadCount() - 1);
    for (int index = 0; index < wanted; ++index) {
        helpers.emplace_back(QRunnable::create([&work, &finished] {
            work();
            finished.release();
        }));
        helpers.back()->setAutoDelete(false);
        pool.start(helpers.back().get());
    }
    work();
    for (const auto& helper : helpers) {
        if (!pool.tryTake(helper.get()))
            finished.acquire();
    }
}

namespace {

/// The text of a number. What follows passes it by itself.
std::string_view numberIn(Value& value)
{
    std::string_view token = value.raw_json_token();
    token = token.substr(0, token.find_last_not_of(" \t\n\r") + 1);
    if (!isNumber(token))
        throw simdjson::simdjson_error(simdjson::NUMBER_ERROR);
    return token;
}

void passString(Value& value, const Context& context)
{
    if (context.hasEscapes())
        stringIn(value, context);
    else
        value.get_raw_json_string().value();
}

} // namespace

void pass(Value& value, const Context& context)
{
    // In its document the value is one level deeper than in the one that was received.
    if (value.current_depth() > static_cast<std::int32_t>(APIJSON::maxDepth))
        throw simdjson::simdjson_error(simdjson::DEPTH_ERROR);
    switch (typeOf(value)) {
    case ValueType::object:
        for (auto found : value.get_object()) {
            Member& member = inPlace(found);
            if (context.hasEscapes())
                member.unescaped_key().value();
            pass(member.value(), context);
        }
        break;
    case ValueType::array:
        for (auto found : value.get_array())
            pass(inPlace(found), context);
        break;
    case ValueType::string:
        passString(value, context);
        break;
    case ValueType::number:
        numberIn(value);
        break;
    case ValueType::boolean:
        value.get_bool().value();
        break;
    case ValueType::null:
        isNull(value);
        break;
    }
}

bool mismatch(Value& value, QStringView expected, Context& context)
{
    pass(value, context);
    return context.typeMismatch(expected);
}

std::string_view stringIn(Value& value, const Context& context)
{
    const std::string_view token = value.raw_json_token();
    if (context.hasEscapes() && token.find('\\') != std::string_view::npos)
        return value.get_string();
    value.get_raw_json_string().value();
    constexpr std::size_t quote = 1;
    return token.substr(quote, token.rfind('"') - quote);
}

bool readValue(Value& json, QString& value, Context& context)
{
    if (typeOf(json) != ValueType::string)
        return mismatch(json, u"a string", context);
    value = context.text(stringIn(json, context));
    return true;
}

bool readValue(Value& json, bool& value, Context& context)
{
    if (typeOf(json) != ValueType::boolean)
        return mismatch(json, u"a boolean", context);
    value = json.get_bool();
    return true;
}

bool readValue(Value& json, qint64& value, Context& context)
{
    if (typeOf(json) != ValueType::number)
        return mismatch(json, u"an integer", context);
    const std::string_view number = numberIn(json);
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc() && result.ptr == number.data() + number.size())
        return true;
    // A whole number may be written with a decimal point or an exponent.
    const std::optional<double> written = nearestDouble(number);
    if (!written || std::trunc(*written) != *written || std::abs(*written) >= 0x1p63)
        return context.typeMismatch(u"an integer");
    value = static_cast<qint64>(*written);
    return true;
}

bool readValue(Value& json, Instant& value, Context& context)
{
    if (typeOf(json) != ValueType::string)
        return mismatch(json, u"a string", context);
    const std::string_view text = stringIn(json, context);
    const auto instant = instantFromISO8601(text);
    if (!instant)
        return context.corruptedData(u"Unrecognized date: "_s + toQString(text));
    value = *instant;
    return true;
}

namespace {

/// The text that stands for a value of custom data, or none for values that are left out.
std::optional<QString> textOfValue(Value& value, const Context& context)
{
    switch (typeOf(value)) {
    case ValueType::string:
        return context.text(stringIn(value, context));
    case ValueType::boolean:
        return value.get_bool() ? u"true"_s : u"false"_s;
    case ValueType::number: {
        const std::optional<double> number = nearestDouble(numberIn(value));
        return number ? std::optional(OrderedStringMap::textFromNumber(*number)) : std::nullopt;
    }
    default:
        pass(value, context);
        return std::nullopt;
    }
}

using Members = std::vector<std::pair<QString, std::optional<QString>>>;

/// Leaves every key once: of repeated members the last one counts, at the place of the first.
void uniteRepeatedMembers(Members& members)
{
    QHash<QString, std::size_t> positions;
    Members united;
    for (auto& [key, text] : members) {
        const auto known = positions.constFind(key);
        if (known != positions.cend()) {
            united[*known].second = std::move(text);
            continue;
        }
        positions.insert(key, united.size());
        united.emplace_back(key, std::move(text));
    }
    members = std::move(united);
}

} // namespace

bool readValue(Value& json, OrderedStringMap& map, Context& context)
{
    if (typeOf(json) != ValueType::object)
        return mismatch(json, u"an object", context);
    Members members;
    for (Member member : json.get_object()) {
        QString key = context.text(member.unescaped_key());
        members.emplace_back(std::move(key), textOfValue(member.value(), context));
    }
    uniteRepeatedMembers(members);
    std::vector<OrderedStringMap::Pair> pairs;
    pairs.reserve(members.size());
    for (auto& [key, text] : members) {
        if (text)
            pairs.push_back({JSONDynamicKey(std::move(key)).stringValue, *std::move(text)});
    }
    map.pairs = OrderedStringMap::arranged(std::move(pairs), decoderPreservesKeyOrder());
    return true;
}

} // namespace orvia::json
