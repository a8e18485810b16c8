#pragma once

#include "Models/JSON/Fields.h"

#include <QString>

#include <array>
#include <optional>

namespace orvia {

/// An administrator may use the administration screens.
enum class AgentRole { admin, agent };

/// Which conversations raise notifications for an agent.
enum class NotifyMode { all, mine, mentions };

enum class ConversationStatus { open, closed };

/// Who wrote a message; a note is internal and seen by agents only.
enum class MessageSender { visitor, agent, system, note };

/// The channel by which a message travelled.
enum class MessageVia { chat, email };

enum class AttachmentKind { image, file };

/// The inbox's assignment filter. Never part of a body: it becomes a query item.
enum class InboxQueue { all, unassigned, mine };

namespace json {

template <>
struct EnumTexts<AgentRole> {
    static constexpr std::array<std::string_view, 2> values{"admin", "agent"};
};
template <>
struct EnumTexts<NotifyMode> {
    static constexpr std::array<std::string_view, 3> values{"all", "mine", "mentions"};
};
template <>
struct EnumTexts<ConversationStatus> {
    static constexpr std::array<std::string_view, 2> values{"open", "closed"};
};
template <>
struct EnumTexts<MessageSender> {
    static constexpr std::array<std::string_view, 4> values{"visitor", "agent", "system", "note"};
};
template <>
struct EnumTexts<MessageVia> {
    static constexpr std::array<std::string_view, 2> values{"chat", "email"};
};
template <>
struct EnumTexts<AttachmentKind> {
    static constexpr std::array<std::string_view, 2> values{"image", "file"};
};
template <>
struct EnumTexts<InboxQueue> {
    static constexpr std::array<std::string_view, 3> values{"all", "unassigned", "mine"};
};

} // namespace json

/// All cases of an enumeration in their declared order.
template <json::TextEnum Enum>
constexpr auto allCases()
{
    std::array<Enum, json::EnumTexts<Enum>::values.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        cases[i] = static_cast<Enum>(i);
    return cases;
}

/// The text that stands for @p value on the wire.
template <json::TextEnum Enum>
QString wireText(Enum value)
{
    const std::string_view text = json::EnumTexts<Enum>::values[static_cast<std::size_t>(value)];
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

/// The case whose wire text is exactly @p text, or none.
template <json::TextEnum Enum>
constexpr std::optional<Enum> enumFromWireText(std::string_view text)
{
    const auto& values = json::EnumTexts<Enum>::values;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] == text)
            return static_cast<Enum>(i);
    }
    return std::nullopt;
}

} // namespace orvia
