#pragma once

#include "Models/Conversation.h"
#include "Models/SocketEvent.h"

#include <QByteArray>

namespace orvia::bench {

/// A conversation as a busy shop has them: place, device, pages, custom data, ratings now and then.
Conversation sampleConversation(int number);

/// The answer to the request for the inbox, with @p count conversations.
QByteArray inboxPage(int count);

/// The live events of an inbox of @p count conversations: messages, changed conversations, typing and read
/// marks, spread evenly over the inbox.
std::vector<SocketEvent> sampleEvents(int count, int inboxSize);

} // namespace orvia::bench
