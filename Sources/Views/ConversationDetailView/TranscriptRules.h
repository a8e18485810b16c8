#pragma once

#include "Models/Agent.h"
#include "Models/Conversation.h"
#include "Models/Message.h"

#include <QTimeZone>
#include <QUrl>

#include <optional>
#include <vector>

/// The rules of the conversation screen as pure functions. Neighbouring messages are null at a thread's ends.
namespace orvia::TranscriptRules {

/// Whether the time stands above a message: when more than ten minutes passed since the one before it.
bool showsTimeDivider(const Message* previous, const Message& current);

/// The space above a message, in device-independent pixels.
int topSpacing(const Message* previous, const Message& current, bool dividerShown);

/// Whether a message carries "via email": it closes a run of e-mails from one sender.
bool showsEmailCaption(const Message& current, const Message* next);

/// Which teammates are also looking. Nameless viewers do not count; none gives no line.
std::optional<QString> presenceLine(const std::vector<ViewerAgent>& viewers);

/// The header of an internal note; @p author is absent or empty when unknown.
QString noteCaption(const std::optional<QString>& author);

/// To whom a conversation is assigned, seen by the agent @p ownId. @p assigneeName is absent when unknown.
QString assignmentLine(const Conversation* conversation, const std::optional<QString>& ownId,
                       const std::optional<QString>& assigneeName);

/// Where an attachment's file is, as an absolute URL; none without one.
std::optional<QUrl> resolvedURL(const Attachment& attachment, const QUrl& baseURL);

/// Nine o'clock on the day after @p now in @p zone: the next time that exists where clocks skip it, the first
/// where they show it twice.
Instant tomorrowMorning(Instant now, const QTimeZone& zone);

/// The same time of day three days after @p now in @p zone, by the same rule.
Instant threeDaysOut(Instant now, const QTimeZone& zone);

} // namespace orvia::TranscriptRules
