#pragma once

#include "Models/Agent.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// Finding, offering and inserting @mentions in an internal note. Pure functions; a character is a
/// user-perceived character (an extended grapheme cluster, UAX #29), and texts compare by canonical
/// equivalence.
namespace orvia::MentionComposer {

/// The partial name being typed after the last "@", or none. Replies carry no mentions.
std::optional<QString> query(const QString& text, bool isNote);

/// The agents that may still be offered: not oneself, and not mentioned in the text already.
std::vector<Agent> candidates(const std::vector<Agent>& agents, const std::optional<QString>& selfId,
                              const QString& text);

/// Whether @p text holds "@" and @p name, not followed by a letter or a number.
bool mentions(const QString& text, const QString& name);

/// @p text with everything from the last "@" on replaced by the agent's mention and a space; unchanged
/// without one.
QString inserting(const Agent& agent, const QString& text);

/// The ids of the picked agents whom the final text still mentions, in picked order.
QStringList sendableIds(const std::vector<Agent>& picked, const QString& text);

/// The suggestion list: the candidates whose name contains the query, at most the first six.
std::vector<Agent> matches(const std::vector<Agent>& agents, const std::optional<QString>& selfId,
                           const QString& text, bool isNote);

} // namespace orvia::MentionComposer
