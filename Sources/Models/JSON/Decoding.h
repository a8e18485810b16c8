#pragma once

#include "Models/APIJSON.h"
#include "Models/Enums.h"
#include "Models/Instant.h"
#include "Models/JSON/DynamicKey.h"
#include "Models/JSON/Fields.h"
#include "Models/JSON/ListSlicer.h"
#include "Models/Lossy.h"
#include "Models/OrderedStringMap.h"

#include <QList>

#include <simdjson.h>

#include <array>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/// How declared records are read from a parsed document. Included only where a record's decoder is
/// instantiated: the parser's header is large.
namespace orvia::json {

using Element = simdjson::dom::element;

/// Every character of @p text. The toolkit takes a byte order mark at the beginning for one of the whole
/// document and drops it; within a document it is a character like any other.
inline QString toQString(std::string_view text)
{
    QString result = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    if (text.starts_with("\xEF\xBB\xBF")) [[unlikely]]
        result.prepend(QChar(QChar::ByteOrderMark));
    return result;
}

/// Lets equal texts of one document share their memory: an inbox repeats places, devices, identifiers and
/// keys in every conversation. A text that is not among the latest is made anew.
class TextPool {
public:
    QString text(std::string_view utf8);

private:
    struct Entry {
        std::uint64_t head = 0; ///< the first bytes of the text in UTF-8
        std::uint64_t tail = 0; ///< the last ones
        std::size_t bytes = 0;
        QString text;
    };

    static constexpr std::size_t size = 4096;
    std::vector<Entry> m_entries = std::vector<Entry>(size);
};

/// What readers of one document share: the texts read so far, and where a failing read leaves its reason. The
/// functions that note a reason answer false, so that a reader can return them.
class Context {
public:
    /// Without a pool every text is made anew.
    explicit Context(TextPool* pool)
        : m_pool(pool)
    {
    }

    TextPool* pool() const { return m_pool; }
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
    DecodingError::Kind m_kind = DecodingError::Kind::syntax;
    QStringView m_subject;
    std::string_view m_key;
    QString m_description;
};

/// A document that passed the strict parser. Parsing throws DecodingError; the root lives as long as this.
class ParsedDocument {
public:
    explicit ParsedDocument(QByteArrayView bytes);
    ~ParsedDocument();
    ParsedDocument(const ParsedDocument&) = delete;
    ParsedDocument& operator=(const ParsedDocument&) = delete;

    const Element& root() const { return m_root; }

private:
    std::unique_ptr<simdjson::dom::parser> m_parser;
    Element m_root;
};

/// Reads the slices of a list one after the other, with buffers that stay as small as a slice.
class SliceParser {
public:
    SliceParser();
    ~SliceParser();
    SliceParser(const SliceParser&) = delete;
    SliceParser& operator=(const SliceParser&) = delete;

    /// The list of @p elements, until the next call; none when they are not one or more strict values.
    std::optional<Element> list(std::string_view elements);

private:
    std::unique_ptr<simdjson::dom::parser> m_parser;
    std::string m_document;
};

/// Runs @p work, which must not throw, on this thread and at the same time on threads of the global pool, as
/// far as they and other cores are or become idle but on no more than @p mostHelpers, and waits for all.
void withHelpers(int mostHelpers, const std::function<void()>& work);

bool readValue(const Element& element, QString& value, Context& context);
bool readValue(const Element& element, bool& value, Context& context);
bool readValue(const Element& element, qint64& value, Context& context);
bool readValue(const Element& element, Instant& value, Context& context);
bool readValue(const Element& element, OrderedStringMap& value, Context& context);
inline bool readValue(const Element&, JSONValueIgnored&, Context&)
{
    return true;
}

template <TextEnum Enum>
bool readValue(const Element& element, Enum& value, Context& context)
{
    std::string_view text;
    if (element.get(text) != simdjson::SUCCESS)
        return context.typeMismatch(u"a string");
    const auto found = enumFromWireText<Enum>(text);
    if (!found)
        return context.corruptedData(QStringLiteral("Unknown case: ") + toQString(text));
    value = *found;
    return true;
}

template <Record T>
bool readValue(const Element& element, T& record, Context& context);

/// Makes room for the elements at once, so that a list holds no more memory than it needs.
template <class List>
void reserveFor(const simdjson::dom::array& array, List& list)
{
    // A hostile page of a million numbers must not reserve room for a million records.
    constexpr std::size_t mostReserved = 16 * 1024;
    list.reserve(static_cast<typename List::size_type>(std::min(array.size(), mostReserved)));
}

/// A strict list: one bad element fails it.
template <StrictList List>
bool readValue(const Element& element, List& list, Context& context)
{
    simdjson::dom::array array;
    if (element.get(array) != simdjson::SUCCESS)
        return context.typeMismatch(u"an array");
    list.clear();
    reserveFor(array, list);
    for (const Element item : array) {
        typename List::value_type value{};
        if (!readValue(item, value, context))
            return false;
        list.push_back(std::move(value));
    }
    return true;
}

template <class Item>
bool readValue(const Element& element, Lossy<Item>& list, Context& context)
{
    simdjson::dom::array array;
    if (element.get(array) != simdjson::SUCCESS)
        return context.typeMismatch(u"an array");
    list.wrappedValue.clear();
    reserveFor(array, list.wrappedValue);
    for (const Element item : array) {
        Context discarded(context.pool());
        // Decoded in place: a page of records is large, and nearly all of them are good.
        if (!readValue(item, list.wrappedValue.emplace_back(), discarded))
            list.wrappedValue.pop_back();
    }
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
bool readField(const Element& element, T& record, Context& context)
{
    constexpr auto field = std::get<Index>(T::fields());
    auto& member = record.*(field.member);
    using Member = std::remove_reference_t<decltype(member)>;

    if constexpr (field.kind == FieldKind::required) {
        static_assert(!OptionalValue<Member>::isOptional, "a required member is never absent");
        return readValue(element, member, context);
    } else if constexpr (field.kind == FieldKind::defaulted) {
        return element.is_null() || readValue(element, member, context);
    } else {
        static_assert(OptionalValue<Member>::isOptional, "a member that may be absent is a std::optional");
        if (element.is_null()) {
            member.reset();
            return true;
        }
        if (!readValue(element, member.emplace(), context)) {
            member.reset();
            return field.kind == FieldKind::lenient;
        }
        return true;
    }
}

template <Record T>
struct RecordReader {
    using Function = bool (*)(const Element&, T&, Context&);
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
};

/// Walks the object's members once and hands each to the field of its key. The search starts behind the last
/// field found, so that members in the declared order cost one comparison each.
template <Record T>
bool readValue(const Element& element, T& record, Context& context)
{
    using Reader = RecordReader<T>;
    static_assert(Reader::count <= 64);
    simdjson::dom::object object;
    if (element.get(object) != simdjson::SUCCESS)
        return context.typeMismatch(u"an object");

    std::uint64_t missing = Reader::required;
    std::size_t next = 0;
    for (const auto member : object) {
        for (std::size_t tried = 0; tried < Reader::count; ++tried) {
            const std::size_t index =
                next + tried < Reader::count ? next + tried : next + tried - Reader::count;
            if (Reader::keys[index] != member.key)
                continue;
            if (!Reader::functions[index](member.value, record, context))
                return false;
            missing &= ~(std::uint64_t{1} << index);
            next = index + 1 < Reader::count ? index + 1 : 0;
            break;
        }
    }
    if (missing != 0)
        return context.missingMember(Reader::keys[static_cast<std::size_t>(std::countr_zero(missing))]);
    return true;
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
        SliceParser parser;
        TextPool pool;
        while (isSound) {
            const auto slice = slicer.next(sliceSize);
            if (!slice)
                return;
            List run;
            Context context(&pool);
            const auto elements = parser.list(slice->elements);
            if (!elements || !readValue(*elements, run, context)) {
                isSound = false;
                return;
            }
            joiner.take(slice->index, std::move(run.wrappedValue));
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
    const ParsedDocument document(bytes);
    // Small documents, such as the frames of the live channel, repeat nothing.
    constexpr qsizetype worthPooling = 16 * 1024;
    const auto pool = bytes.size() < worthPooling ? nullptr : std::make_unique<TextPool>();
    Context context(pool.get());
    T record{};
    if (!readValue(document.root(), record, context))
        throw context.error();
    return record;
}

} // namespace orvia::json

namespace orvia {

template <class T>
T APIJSON::Decoder::decode(QByteArrayView bytes) const
{
    return json::decode<T>(bytes);
}

} // namespace orvia
