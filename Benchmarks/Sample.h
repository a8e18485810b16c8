#pragma once

#include "Models/Conversation.h"
#include "Models/SocketEvent.h"

#include <QByteArray>

namespace orvia::bench {

/// A conversation as a busy shop has them: place, device, pages, custom data, ratings now and then.
Conversation sampleConversation(int number);

/// The answer to the request for the inbox, with @p count conversations.
QByteArray inboxPage(int count);

/// The live events of an inbox of @p inboxSize conversations: messages, changed conversations, typing and
/// read marks of @p active of them, which lie evenly spread over the inbox.
std::vector<SocketEvent> sampleEvents(int count, int inboxSize, int active);

} // namespace orvia::bench
