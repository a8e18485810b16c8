#pragma once

#include "Models/APIJSON.h"
#include "Models/Deferred.h"
#include "Models/Enums.h"
#include "Models/Instant.h"
#include "Models/JSON/DynamicKey.h"
#include "Models/JSON/Fields.h"
#include "Models/JSON/ListSlicer.h"
#include "Models/Lossy.h"
#include "Models/OrderedStringMap.h"

#include <QList>

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/// How declared records are read from a document, front to back and without a tree of it. Included only where
/// a record's decoder is instantiated: the parser's header is large.
///
/// Every reader passes its value whole, whether it can use it or not, and checks all of it: a document is
/// either strict JSON or none, in the parts that nobody reads too. That it is none is thrown, as
/// simdjson::simdjson_error.
namespace orvia::json {

/// A value that is to be read or passed once, before whatever follows it.
using Value = simdjson::ondemand::value;
using ValueType = simdjson::ondemand::json_type;
using Member = simdjson::ondemand::field;

/// Every character of @p text. The toolkit takes a byte order mark at the beginning for one of the whole
/// document and drops it; within a document it is a character like any other.
inline QString toQString(std::string_view text)
{
    QString result = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    if (text.starts_with("\xEF\xBB\xBF")) [[unlikely]]
        result.prepend(QChar(QChar::ByteOrderMark));
    return result;
}

/// Lets equal texts of one document share their memory: an inbox repeats the identifiers of products and
/// agents in every conversation. A text is remembered from its second time on, until another takes its place:
/// most come once, and forgetting one whose memory is far away costs more than making it.
class TextPool {
public:
    QString text(std::string_view utf8);

private:
    struct Entry {
        std::uint64_t latest = 0; ///< the hash of the latest text that belonged here and was not remembered
        std::uint64_t head = 0;   ///< the first bytes of the text in UTF-8
        std::uint64_t tail = 0;   ///< the last ones
        std::size_t bytes = 0;
        QString text;
    };

    static constexpr std::size_t size = 512;
    std::vector<Entry> m_entries = std::vector<Entry>(size);
};

/// The texts of a document that are kept until somebody reads them, behind each other in one piece of memory:
/// allocating each of them cost more than reading the document.
class KeptTexts {
public:
    KeptTexts() = default;
    ~KeptTexts() { close(); }
    KeptTexts(const KeptTexts&) = delete;
    KeptTexts& operator=(const KeptTexts&) = delete;

    template <class T>
    Deferred<T> keep(std::string_view json)
    {
        if (!m_kept)
            m_kept = std::make_shared<std::string>();
        const std::size_t begin = m_gathered.size();
        m_gathered.append(json);
        return Deferred<T>(m_kept, begin, QByteArrayView(json.data(), static_cast<qsizetype>(json.size())));
    }

    /// Completes the texts that were kept since the last call. What was made of them can be used from now on.
    void close()
    {
        if (m_kept)
            *m_kept = m_gathered;
        m_kept.reset();
        m_gathered.clear();
    }

private:
    std::string m_gathered; ///< stays in the processor's caches
    std::shared_ptr<std::string> m_kept;
};

/// What readers of one document share: the texts read so far, and where a failing read leaves its reason. The
/// functions that note a reason answer false, so that a reader can return them.
class Context {
public:
    /// Without a pool every text is made anew. A document in which no character is escaped is read faster.
    Context(TextPool* pool, KeptTexts& kept, bool hasEscapes)
        : m_pool(pool)
        , m_kept(kept)
        , m_hasEscapes(hasEscapes)
    {
    }

    bool hasEscapes() const { return m_hasEscapes; }
    KeptTexts& kept() const { return m_kept; }
    QString text(std::string_view utf8) const { return m_pool ? m_pool->text(utf8) : toQString(utf8); }

    bool typeMismatch(QStringView expected)
    {
        m_kind = DecodingError::Kind::typeMismatch;
        m_subject = expected;
        return false;
    }

    bool missingMember(std::string_view key)
    {
        m_kind = DecodingError::Kind::missingMember;
        m_key = key;
        return false;
    }

    bool corruptedData(QString description)
    {
        m_kind = DecodingError::Kind::corruptedData;
        m_description = std::move(description);
        return false;
    }

    DecodingError error() const;

private:
    TextPool* m_pool;
    KeptTexts& m_kept;
    bool m_hasEscapes;
    DecodingError::Kind m_kind = DecodingError::Kind::syntax;
    QStringView m_subject;
    std::string_view m_key;
    QString m_description;
};

/// Opens documents one after the other, with buffers that serve the next one too.
class DocumentParser {
public:
    DocumentParser();
    ~DocumentParser();
    DocumentParser(const DocumentParser&) = delete;
    DocumentParser& operator=(const DocumentParser&) = delete;

    /// The list of @p values, which are one or more with commas between them, until the next call.
    Value listOf(std::string_view values);
    bool hasEscapes() const { return m_hasEscapes; }
    /// To be called behind the list: throws when something follows it.
    void expectEnd();
    /// The longest text for which there are buffers, in bytes.
    std::size_t capacity() const { return m_parser.capacity(); }

private:
    simdjson::ondemand::parser m_parser;
    simdjson::ondemand::document m_document;
    std::string m_text;
    bool m_hasEscapes = false;
};

/// Hands the one value of the document in @p bytes to @p read. A document with halves of characters, which
/// the parser refuses, is mended and read from the beginning: then @p read is called twice. Throws
/// DecodingError when the document is none.
void readDocument(QByteArrayView bytes, const std::function<void(Value&, Context&)>& read);

/// Runs @p work, which must not throw, on this thread and at the same time on threads of the global pool, as
/// far as they and other cores are or become idle but on no more than @p mostHelpers, and waits for all.
void withHelpers(int mostHelpers, const std::function<void()>& work);

/// What a walk over a list or an object has come to, in its place: the processor waits for a copy of what has
/// only just been written.
template <class Found>
auto& inPlace(Found& found)
{
    if (const simdjson::error_code error = found.error())
        throw simdjson::simdjson_error(error);
    return found.value_unsafe();
}

inline ValueType typeOf(Value& value)
{
    return value.type();
}

/// Passes over @p value if it is null.
inline bool isNull(Value& value)
{
    return value.is_null();
}

/// Passes over @p value, whatever it is.
void pass(Value& value, const Context& context);

/// Passes over @p value and notes that it is not what was @p expected.
bool mismatch(Value& value, QStringView expected, Context& context);

/// The text of a string, in UTF-8 and as long as the document.
std::string_view stringIn(Value& value, const Context& context);

bool readValue(Value& json, QString& value, Context& context);
bool readValue(Value& json, bool& value, Context& context);
bool readValue(Value& json, qint64& value, Context& context);
bool readValue(Value& json, Instant& value, Context& context);
bool readValue(Value& json, OrderedStringMap& value, Context& context);
inline bool readValue(Value& json, JSONValueIgnored&, Context& context)
{
    pass(json, context);
    return true;
}

template <TextEnum Enum>
bool readValue(Value& json, Enum& value, Context& context)
{
    if (typeOf(json) != ValueType::string)
        return mismatch(json, u"a string", context);
    const std::string_view text = stringIn(json, context);
    const auto found = enumFromWireText<Enum>(text);
    if (!found)
        return context.corruptedData(QStringLiteral("Unknown case: ") + toQString(text));
    value = *found;
    return true;
}

template <Record T>
bool readValue(Value& json, T& record, Context& context);

/// Makes room for the elements at once, so that a list holds no more memory than it needs.
template <class List>
void reserveFor(simdjson::ondemand::array& array, List& list)
{
    // A hostile page of a million numbers must not reserve room for a million records.
    constexpr std::size_t mostReserved = 16 * 1024;
    const std::size_t count = array.count_elements();
    list.reserve(static_cast<typename List::size_type>(std::min(count, mostReserved)));
}

/// A strict list: one bad element fails it.
template <StrictList List>
bool readValue(Value& json, List& list, Context& context)
{
    if (typeOf(json) != ValueType::array)
        return mismatch(json, u"an array", context);
    simdjson::ondemand::array array = json.get_array();
    list.clear();
    reserveFor(array, list);
    bool isGood = true;
    for (auto found : array) {
        Value& item = inPlace(found);
        typename List::value_type value{};
        if (!isGood)
            pass(item, context);
        else if (readValue(item, value, context))
            list.push_back(std::move(value));
        else
            isGood = false;
    }
    return isGood;
}

template <class Item>
bool readValue(Value& json, Lossy<Item>& list, Context& context)
{
    if (typeOf(json) != ValueType::array)
        return mismatch(json, u"an array", context);
    simdjson::ondemand::array array = json.get_array();
    list.wrappedValue.clear();
    if (list.wrappedValue.capacity() == 0)
        reserveFor(array, list.wrappedValue);
    for (auto found : array) {
        // Decoded in place: a page of records is large, and nearly all of them are good.
        if (!readValue(inPlace(found), list.wrappedValue.emplace_back(), context))
            list.wrappedValue.pop_back();
    }
    return true;
}

/// Checked, but not read: that waits until somebody asks for the record.
template <class T>
bool readValue(Value& json, Deferred<T>& record, Context& context)
{
    static_assert(isAlwaysReadable<T>, "what is wrong with a record would be found too late");
    if (typeOf(json) != ValueType::object)
        return mismatch(json, u"an object", context);
    const char* const begin = json.current_location();
    pass(json, context);
    const char* const end = json.current_location();
    record = context.kept().keep<T>({begin, end});
    return true;
}

template <class T>
struct OptionalValue {
    using Type = T;
    static constexpr bool isOptional = false;
};
template <class T>
struct OptionalValue<std::optional<T>> {
    using Type = T;
    static constexpr bool isOptional = true;
};

/// Reads the member that the field at @p Index of the record declares.
template <Record T, std::size_t Index>
bool readField(Value& json, T& record, Context& context)
{
    constexpr auto field = std::get<Index>(T::fields());
    auto& member = record.*(field.member);
    using Held = std::remove_reference_t<decltype(member)>;

    if constexpr (field.kind == FieldKind::required) {
        static_assert(!OptionalValue<Held>::isOptional, "a required member is never absent");
        return readValue(json, member, context);
    } else if constexpr (field.kind == FieldKind::defaulted) {
        return isNull(json) || readValue(json, member, context);
    } else {
        static_assert(OptionalValue<Held>::isOptional, "a member that may be absent is a std::optional");
        if (isNull(json)) {
            member.reset();
            return true;
        }
        if (!readValue(json, member.emplace(), context)) {
            member.reset();
            return field.kind == FieldKind::lenient;
        }
        return true;
    }
}

template <Record T>
struct RecordReader {
    using Function = bool (*)(Value&, T&, Context&);
    static constexpr std::size_t count = fieldCount<T>;

    template <std::size_t... Index>
    static constexpr auto makeKeys(std::index_sequence<Index...>)
    {
        return std::array<std::string_view, count>{std::get<Index>(T::fields()).key...};
    }

    template <std::size_t... Index>
    static constexpr auto makeFunctions(std::index_sequence<Index...>)
    {
        return std::array<Function, count>{&readField<T, Index>...};
    }

    template <std::size_t... Index>
    static constexpr std::uint64_t makeRequired(std::index_sequence<Index...>)
    {
        return ((std::get<Index>(T::fields()).kind == FieldKind::required ? std::uint64_t{1} << Index : 0)
                | ...);
    }

    static constexpr auto keys = makeKeys(std::make_index_sequence<count>());
    static constexpr auto functions = makeFunctions(std::make_index_sequence<count>());
    static constexpr std::uint64_t required = makeRequired(std::make_index_sequence<count>());

    /// The first field, from @p next on and then from the beginning, whose key @p isKey holds for; @c count
    /// if there is none.
    template <class IsKey>
    static std::size_t find(std::size_t next, IsKey isKey)
    {
        for (std::size_t tried = 0; tried < count; ++tried) {
            const std::size_t index = next + tried < count ? next + tried : next + tried - count;
            if (isKey(keys[index]))
                return index;
        }
        return count;
    }

    static std::size_t fieldOf(Member& member, std::size_t next, const Context& context)
    {
        static_assert(
            std::ranges::all_of(keys, [](auto key) { return key.size() < simdjson::SIMDJSON_PADDING; }),
            "a key is compared before it is known to be as long");
        const auto written = member.key();
        const std::size_t index =
            find(next, [&](std::string_view key) { return written.unsafe_is_equal(key); });
        if (index < count || !context.hasEscapes())
            return index;
        const std::string_view unescaped = member.unescaped_key();
        return find(next, [&](std::string_view key) { return key == unescaped; });
    }
};

/// Walks the object's members once and hands each to the field of its key. The search starts behind the last
/// field found, so that members in the declared order cost one comparison each.
template <Record T>
bool readValue(Value& json, T& record, Context& context)
{
    using Reader = RecordReader<T>;
    static_assert(Reader::count <= 64);
    if (typeOf(json) != ValueType::object)
        return mismatch(json, u"an object", context);

    std::uint64_t missing = Reader::required;
    std::size_t next = 0;
    bool isGood = true;
    simdjson::ondemand::object object = json.get_object();
    for (auto found : object) {
        Member& member = inPlace(found);
        const std::size_t index = Reader::fieldOf(member, next, context);
        if (!isGood || index == Reader::count) {
            pass(member.value(), context);
            continue;
        }
        isGood = Reader::functions[index](member.value(), record, context);
        missing &= ~(std::uint64_t{1} << index);
        next = index + 1 < Reader::count ? index + 1 : 0;
    }
    if (isGood && missing != 0)
        return context.missingMember(Reader::keys[static_cast<std::size_t>(std::countr_zero(missing))]);
    return isGood;
}

/// The list type of a record that has one lossy list and nothing else: a page.
template <class T>
struct PageList {
    static constexpr bool isPage = false;
};
template <Record T>
requires(fieldCount<T> == 1) struct PageList<T> {
    static constexpr auto field = std::get<0>(T::fields());
    using List = std::remove_cvref_t<decltype(std::declval<T>().*(field.member))>;
    static constexpr bool isPage = isLossy<List>;
};

/// What is worth a thread of its own.
inline constexpr qsizetype worthSlicing = 256 * 1024;

/// Puts the runs of a list, which end in any order, behind each other. Thread-safe.
template <class Item>
class RunJoiner {
public:
    /// Fills @p list with about @p expectedRuns runs.
    RunJoiner(std::vector<Item>& list, std::size_t expectedRuns)
        : m_list(list)
        , m_expectedRuns(expectedRuns)
    {
    }

    /// Takes the run at @p index over at once, if those before it are there: its records are then still in
    /// the processor's caches, and its memory serves the next run.
    void take(std::size_t index, std::vector<Item> run)
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.emplace(index, std::move(run));
        for (auto first = m_waiting.begin(); first != m_waiting.end() && first->first == m_next;
             first = m_waiting.erase(first), ++m_next)
            append(first->second);
    }

private:
    void append(std::vector<Item>& run)
    {
        // Room that stays empty is never touched and so costs nothing but addresses.
        if (m_next == 0)
            m_list.reserve(run.size() * (m_expectedRuns + m_expectedRuns / 8 + 1));
        std::move(run.begin(), run.end(), std::back_inserter(m_list));
    }

    std::mutex m_mutex;
    std::vector<Item>& m_list;
    const std::size_t m_expectedRuns;
    std::map<std::size_t, std::vector<Item>> m_waiting; ///< runs whose predecessors are still being read
    std::size_t m_next = 0;
};

/// The page in @p bytes, read in slices on all cores: no thread waits for another to parse, and the buffers
/// of a slice, about @p sliceSize bytes, stay in the processor's caches. None when the document is anything
/// but a flawless page; reading it as a whole tells then what it is.
template <class T>
std::optional<T> decodeInSlices(QByteArrayView bytes, std::size_t sliceSize = 48 * 1024)
{
    constexpr auto field = PageList<T>::field;
    using List = typename PageList<T>::List;

    ListSlicer slicer(bytes, field.key);
    std::atomic<bool> isSound = true;
    std::optional<T> page(std::in_place);
    RunJoiner joiner(((*page).*(field.member)).wrappedValue,
                     static_cast<std::size_t>(bytes.size()) / sliceSize);
    withHelpers(static_cast<int>(bytes.size() / worthSlicing), [&] {
        DocumentParser parser;
        TextPool pool;
        KeptTexts kept;
        std::size_t longest = 0;
        try {
            while (isSound) {
                const auto slice = slicer.next(sliceSize);
                if (!slice)
                    return;
                List run;
                // Runs are about as long as each other.
                run.wrappedValue.reserve(longest);
                Value elements = parser.listOf(slice->elements);
                Context context(&pool, kept, parser.hasEscapes());
                readValue(elements, run, context);
                parser.expectEnd();
                kept.close();
                longest = std::max(longest, run.wrappedValue.size());
                joiner.take(slice->index, std::move(run.wrappedValue));
            }
        } catch (const simdjson::simdjson_error&) {
            isSound = false;
        }
    });
    if (!isSound || !slicer.reachedEnd())
        return std::nullopt;
    return page;
}

template <class T>
T decode(QByteArrayView bytes)
{
    if constexpr (PageList<T>::isPage) {
        if (bytes.size() >= worthSlicing && bytes.size() <= APIJSON::maxDocumentBytes) {
            if (auto page = decodeInSlices<T>(bytes))
                return *std::move(page);
        }
    }
    std::optional<T> record;
    std::optional<DecodingError> failure;
    readDocument(bytes, [&](Value& root, Context& context) {
        failure.reset();
        if (!readValue(root, record.emplace(), context))
            failure = context.error();
    });
    if (failure)
        throw DecodingError(*std::move(failure));
    return *std::move(record);
}

} // namespace orvia::json

namespace orvia {

template <class T>
T APIJSON::Decoder::decode(QByteArrayView bytes) const
{
    return json::decode<T>(bytes);
}

} // namespace orvia
