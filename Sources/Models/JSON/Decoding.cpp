#include "Models/JSON/Decoding.h"

#include "Models/JSON/Tolerance.h"

#include <QThread>
#include <QThreadPool>

#include <cstring>
#include <mutex>
#include <semaphore>
#include <unordered_map>

namespace orvia::json {

using namespace Qt::StringLiterals;

namespace {

/// Parsers keep their buffers, which are worth keeping between the many small documents of the live channel.
/// They are some fourteen times as large as the document, so that those of a whole inbox are given back.
constexpr std::size_t largestKeptCapacity = 64 * 1024;

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
    known = {head, tail, utf8.size(), toQString(utf8)};
    return known.text;
}

ParsedDocument::ParsedDocument(QByteArrayView bytes)
    : m_parser(ParserPool::shared().take())
{
    std::string_view document(bytes.data(), static_cast<std::size_t>(bytes.size()));
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (document.starts_with(byteOrderMark))
        document.remove_prefix(byteOrderMark.size());
    simdjson::error_code error = document.empty() ? simdjson::EMPTY : simdjson::CAPACITY;
    if (!document.empty() && bytes.size() <= APIJSON::maxDocumentBytes) {
        error = parse(*m_parser, document, m_root);
        if (error == simdjson::NUMBER_ERROR || error == simdjson::STRING_ERROR) {
            if (const auto rewritten = withinParserLimits(document))
                error = parse(*m_parser, *rewritten, m_root);
        }
    }
    if (error != simdjson::SUCCESS) {
        throw DecodingError(DecodingError::Kind::syntax, QString::fromLatin1(simdjson::error_message(error)));
    }
}

ParsedDocument::~ParsedDocument()
{
    ParserPool::shared().giveBack(std::move(m_parser));
}

SliceParser::SliceParser()
    : m_parser(std::make_unique<simdjson::dom::parser>())
{
}

SliceParser::~SliceParser() = default;

std::optional<Element> SliceParser::list(std::string_view elements)
{
    m_document.clear();
    m_document.reserve(elements.size() + 2 + simdjson::SIMDJSON_PADDING);
    m_document.append(1, '[').append(elements).append(1, ']');
    if (m_parser->capacity() < m_document.size()) {
        // In its document the list is one level deeper. Room for the slices to come, which differ a little.
        if (m_parser->allocate(std::bit_ceil(m_document.size()), APIJSON::maxDepth - 1) != simdjson::SUCCESS)
            return std::nullopt;
    }
    Element root;
    constexpr bool isPadded = true;
    if (m_parser->parse(m_document.data(), m_document.size(), !isPadded).get(root) != simdjson::SUCCESS)
        return std::nullopt;
    const simdjson::dom::array list = root;
    return list.begin() == list.end() ? std::nullopt : std::optional(root);
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

bool readValue(const Element& element, QString& value, Context& context)
{
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS)
        return context.typeMismatch(u"a string");
    value = context.text(text);
    return true;
}

bool readValue(const Element& element, bool& value, Context& context)
{
    return element.get(value) == simdjson::SUCCESS || context.typeMismatch(u"a boolean");
}

bool readValue(const Element& element, qint64& value, Context& context)
{
    std::int64_t integer = 0;
    if (element.get(integer) == simdjson::SUCCESS) {
        value = integer;
        return true;
    }
    // A whole number may be written with a decimal point or an exponent.
    double number = 0;
    if (element.is_double() && element.get(number) == simdjson::SUCCESS && std::trunc(number) == number
        && std::abs(number) < 0x1p63) {
        value = static_cast<qint64>(number);
        return true;
    }
    return context.typeMismatch(u"an integer");
}

bool readValue(const Element& element, Instant& value, Context& context)
{
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS)
        return context.typeMismatch(u"a string");
    const auto instant = instantFromISO8601(text);
    if (!instant)
        return context.corruptedData(u"Unrecognized date: "_s + toQString(text));
    value = *instant;
    return true;
}

namespace {

/// The text that stands for a value of custom data, or none for values that are left out.
std::optional<QString> textOfValue(const Element& value, const Context& context)
{
    std::string_view text;
    if (value.get(text) == simdjson::SUCCESS)
        return context.text(text);
    bool flag = false;
    if (value.get(flag) == simdjson::SUCCESS)
        return flag ? u"true"_s : u"false"_s;
    double number = 0;
    if (value.get(number) == simdjson::SUCCESS)
        return OrderedStringMap::textFromNumber(number);
    return std::nullopt;
}

using Members = std::vector<std::pair<std::string_view, Element>>;

/// Leaves every key once: of repeated members the last one counts, at the place of the first.
void uniteRepeatedMembers(Members& members)
{
    std::vector<std::string_view> keys(members.size());
    std::transform(members.begin(), members.end(), keys.begin(),
                   [](const auto& member) { return member.first; });
    std::sort(keys.begin(), keys.end());
    if (std::adjacent_find(keys.begin(), keys.end()) == keys.end())
        return;
    Members united;
    std::unordered_map<std::string_view, std::size_t> positions;
    for (const auto& [key, value] : members) {
        const auto [known, isNew] = positions.try_emplace(key, united.size());
        if (isNew)
            united.emplace_back(key, value);
        else
            united[known->second].second = value;
    }
    members = std::move(united);
}

} // namespace

bool readValue(const Element& element, OrderedStringMap& map, Context& context)
{
    simdjson::dom::object object;
    if (element.get(object) != simdjson::SUCCESS)
        return context.typeMismatch(u"an object");
    Members members;
    for (const auto member : object)
        members.emplace_back(member.key, member.value);
    uniteRepeatedMembers(members);
    std::vector<OrderedStringMap::Pair> pairs;
    pairs.reserve(members.size());
    for (const auto& [key, value] : members) {
        if (auto text = textOfValue(value, context))
            pairs.push_back({JSONDynamicKey(context.text(key)).stringValue, *std::move(text)});
    }
    map.pairs = OrderedStringMap::arranged(std::move(pairs), decoderPreservesKeyOrder());
    return true;
}

} // namespace orvia::json
