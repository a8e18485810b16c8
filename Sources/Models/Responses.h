#pragma once

#include "Models/Agent.h"
#include "Models/Conversation.h"
#include "Models/Lossy.h"
#include "Models/Message.h"
#include "Models/Product.h"

/// The objects in which the service wraps what it answers. Every member is required; lists are lossy.
namespace orvia {

struct LoginResponse {
    QString token;
    Agent agent;

    friend bool operator==(const LoginResponse&, const LoginResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("token", &LoginResponse::token),
                          json::required("agent", &LoginResponse::agent)};
    }
};

struct MeResponse {
    Agent agent;
    Lossy<Product> products;

    friend bool operator==(const MeResponse&, const MeResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("agent", &MeResponse::agent),
                          json::required("products", &MeResponse::products)};
    }
};

struct AgentResponse {
    Agent agent;

    friend bool operator==(const AgentResponse&, const AgentResponse&) = default;

    static constexpr auto fields() { return std::tuple{json::required("agent", &AgentResponse::agent)}; }
};

struct AgentsResponse {
    Lossy<Agent> agents;

    friend bool operator==(const AgentsResponse&, const AgentsResponse&) = default;

    static constexpr auto fields() { return std::tuple{json::required("agents", &AgentsResponse::agents)}; }
};

struct ProductsResponse {
    Lossy<Product> products;

    friend bool operator==(const ProductsResponse&, const ProductsResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("products", &ProductsResponse::products)};
    }
};

struct ConversationsResponse {
    Lossy<Conversation> conversations;

    friend bool operator==(const ConversationsResponse&, const ConversationsResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("conversations", &ConversationsResponse::conversations)};
    }
};

struct ConversationResponse {
    Conversation conversation;

    friend bool operator==(const ConversationResponse&, const ConversationResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("conversation", &ConversationResponse::conversation)};
    }
};

struct ConversationDetailResponse {
    Conversation conversation;
    Lossy<Message> messages;

    friend bool operator==(const ConversationDetailResponse&, const ConversationDetailResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("conversation", &ConversationDetailResponse::conversation),
                          json::required("messages", &ConversationDetailResponse::messages)};
    }
};

struct MessageResponse {
    Message message;

    friend bool operator==(const MessageResponse&, const MessageResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("message", &MessageResponse::message)};
    }
};

struct CannedResponsesResponse {
    Lossy<CannedResponse> canned;

    friend bool operator==(const CannedResponsesResponse&, const CannedResponsesResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{json::required("canned", &CannedResponsesResponse::canned)};
    }
};

struct SearchResponse {
    Lossy<SearchResult> results;

    friend bool operator==(const SearchResponse&, const SearchResponse&) = default;

    static constexpr auto fields() { return std::tuple{json::required("results", &SearchResponse::results)}; }
};

} // namespace orvia
