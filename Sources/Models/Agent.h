#pragma once

#include "Models/Enums.h"

#include <QStringList>

namespace orvia {

/// A user of the console.
struct Agent {
    QString id;
    QString name;
    QString email; ///< empty when the service sends none
    AgentRole role = AgentRole::agent;
    std::optional<QStringList> productIds; ///< the products that this agent serves
    std::optional<NotifyMode> notifyMode;
    std::optional<QStringList> mutedConversationIds;

    friend bool operator==(const Agent&, const Agent&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("_id", &Agent::id),
            json::required("name", &Agent::name),
            json::defaulted("email", &Agent::email),
            json::required("role", &Agent::role),
            json::optional("productIds", &Agent::productIds),
            json::lenient("notifyMode", &Agent::notifyMode),
            json::optional("mutedConversationIds", &Agent::mutedConversationIds),
        };
    }
};

/// An agent who has a conversation open. Its identifier stands under the plain key "id".
struct ViewerAgent {
    QString id;
    QString name;

    friend bool operator==(const ViewerAgent&, const ViewerAgent&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("id", &ViewerAgent::id),
            json::required("name", &ViewerAgent::name),
        };
    }
};

} // namespace orvia
