#include "Input.h"

#include "Models/APIJSON.h"
#include "Models/JSON/Decoding.h"
#include "Models/Responses.h"
#include "Models/SocketEvent.h"

#include <QStringDecoder>

#include <array>

/// The JSON coder over every record: the first byte chooses the record, the rest is the document.
namespace orvia::fuzzing {
namespace {

template <class T>
std::optional<T> decoded(const QByteArray& document)
{
    try {
        return APIJSON::decoder.decode<T>(document);
    } catch (const DecodingError& error) {
        require(!error.description().isEmpty() && *error.what() != '\0', "a failure says what is wrong");
        return std::nullopt;
    }
}

/// Writing drops fractions of seconds and nothing else, so that what was written once stays as it is.
template <class T>
void roundTrip(const QByteArray& document)
{
    const std::optional<T> record = decoded<T>(document);
    // Long documents share equal texts, which must not change what is read.
    constexpr qsizetype beyondPooling = 17 * 1024;
    const QByteArray padded = document + QByteArray(beyondPooling, ' ');
    require(decoded<T>(padded) == record, "white space behind a document changes nothing");
    if constexpr (json::PageList<T>::isPage) {
        const std::optional<T> sliced = json::decodeInSlices<T>(document, 1);
        require(!sliced || sliced == record, "what is read in slices is what is read as a whole");
    }
    if (!record)
        return;
    const QByteArray written = APIJSON::encoder.encode(*record);
    const std::optional<T> again = decoded<T>(written);
    require(again.has_value(), "what is written can be read");
    require(APIJSON::encoder.encode(*again) == written, "what is read is written as it was");
    require(decoded<T>(written) == again, "what is read is the same each time");
}

/// Every text survives, whatever it holds.
void checkText(const QByteArray& utf8)
{
    const QString text = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(utf8);
    const ViewerAgent viewer{text, text};
    require(decoded<ViewerAgent>(APIJSON::encoder.encode(viewer)) == viewer,
            "a text is read as it was written");
}

template <class... T>
constexpr std::array<void (*)(const QByteArray&), sizeof...(T)> roundTripsOf()
{
    return {&roundTrip<T>...};
}

constexpr auto roundTrips =
    roundTripsOf<Agent, ViewerAgent, Product, WidgetConfig, WidgetGreeting, CannedResponse, Visitor,
                 VisitorMeta, VisitorGeo, VisitorPage, OrderedStringMap, Rating, Conversation, Attachment,
                 Message, SearchResult, SocketEvent, JSONValueIgnored, LoginResponse, MeResponse,
                 AgentResponse, AgentsResponse, ProductsResponse, ConversationsResponse, ConversationResponse,
                 ConversationDetailResponse, MessageResponse, CannedResponsesResponse, SearchResponse>();

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace orvia::fuzzing;
    if (size == 0)
        return 0;
    // Letters choose, from "A" on, so that an input can be written by hand.
    const size_t choice = static_cast<size_t>(data[0] - uint8_t{'A'}) % roundTrips.size();
    const QByteArray document(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));
    roundTrips.at(choice)(document);
    checkText(document);
    return 0;
}
