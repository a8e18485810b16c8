#include "Models/APIJSON.h"

#include "Models/JSON/Decoding.h"
#include "Models/JSON/Encoding.h"
#include "Models/Responses.h"
#include "Models/SocketEvent.h"

/// The coders of every shared record are compiled here, once.
namespace orvia {

#define ORVIA_CODE(Type)                                                                                     \
    template Type APIJSON::Decoder::decode<Type>(QByteArrayView) const;                                      \
    template QByteArray APIJSON::Encoder::encode<Type>(const Type&) const;

ORVIA_CODE(Agent)
ORVIA_CODE(ViewerAgent)
ORVIA_CODE(Product)
ORVIA_CODE(WidgetConfig)
ORVIA_CODE(WidgetGreeting)
ORVIA_CODE(CannedResponse)
ORVIA_CODE(Visitor)
ORVIA_CODE(VisitorMeta)
ORVIA_CODE(VisitorGeo)
ORVIA_CODE(VisitorPage)
ORVIA_CODE(OrderedStringMap)
ORVIA_CODE(Rating)
ORVIA_CODE(Conversation)
ORVIA_CODE(Attachment)
ORVIA_CODE(Message)
ORVIA_CODE(SearchResult)
ORVIA_CODE(SocketEvent)
ORVIA_CODE(JSONValueIgnored)
ORVIA_CODE(LoginResponse)
ORVIA_CODE(MeResponse)
ORVIA_CODE(AgentResponse)
ORVIA_CODE(AgentsResponse)
ORVIA_CODE(ProductsResponse)
ORVIA_CODE(ConversationsResponse)
ORVIA_CODE(ConversationResponse)
ORVIA_CODE(ConversationDetailResponse)
ORVIA_CODE(MessageResponse)
ORVIA_CODE(CannedResponsesResponse)
ORVIA_CODE(SearchResponse)

#undef ORVIA_CODE

} // namespace orvia
