#include "APIClient/Perform.h"

/// The operations under /v1/admin. The service decides who may call them.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

struct CreateAgentBody {
    QString name;
    QString email;
    QString password;
    AgentRole role = AgentRole::agent;
    QStringList productIds;

    static constexpr auto fields()
    {
        return std::tuple{json::required("name", &CreateAgentBody::name),
                          json::required("email", &CreateAgentBody::email),
                          json::required("password", &CreateAgentBody::password),
                          json::required("role", &CreateAgentBody::role),
                          json::required("productIds", &CreateAgentBody::productIds)};
    }
};

struct UpdateAgentBody {
    std::optional<QStringList> productIds;
    std::optional<AgentRole> role;
    std::optional<QString> password;

    static constexpr auto fields()
    {
        return std::tuple{json::optional("productIds", &UpdateAgentBody::productIds),
                          json::optional("role", &UpdateAgentBody::role),
                          json::optional("password", &UpdateAgentBody::password)};
    }
};

struct CreateProductBody {
    QString name;
    QString slug;

    static constexpr auto fields()
    {
        return std::tuple{json::required("name", &CreateProductBody::name),
                          json::required("slug", &CreateProductBody::slug)};
    }
};

struct UpdateProductBody {
    std::optional<QString> name;
    std::optional<WidgetConfig> widget;

    static constexpr auto fields()
    {
        return std::tuple{json::optional("name", &UpdateProductBody::name),
                          json::optional("widget", &UpdateProductBody::widget)};
    }
};

struct CreateCannedBody {
    QString shortcut;
    QString body;
    std::optional<QString> productId;

    static constexpr auto fields()
    {
        return std::tuple{json::required("shortcut", &CreateCannedBody::shortcut),
                          json::required("body", &CreateCannedBody::body),
                          json::optional("productId", &CreateCannedBody::productId)};
    }
};

} // namespace

QCoro::Task<std::vector<Agent>> APIClient::adminAgents() const
{
    auto response = co_await perform<AgentsResponse>("GET", u"/v1/admin/agents"_s);
    co_return std::move(response.agents.wrappedValue);
}

QCoro::Task<void> APIClient::adminCreateAgent(QString name, QString email, QString password, AgentRole role,
                                              QStringList productIds) const
{
    CreateAgentBody body{std::move(name), std::move(email), std::move(password), role, std::move(productIds)};
    co_await send<JSONValueIgnored>("POST", u"/v1/admin/agents"_s, std::move(body));
}

QCoro::Task<void> APIClient::adminUpdateAgent(QString id, std::optional<QStringList> productIds,
                                              std::optional<AgentRole> role,
                                              std::optional<QString> password) const
{
    UpdateAgentBody body{std::move(productIds), role, std::move(password)};
    co_await send<JSONValueIgnored>("PATCH", "/v1/admin/agents/"_L1 + id, std::move(body));
}

QCoro::Task<std::vector<Product>> APIClient::adminProducts() const
{
    auto response = co_await perform<ProductsResponse>("GET", u"/v1/admin/products"_s);
    co_return std::move(response.products.wrappedValue);
}

QCoro::Task<void> APIClient::adminCreateProduct(QString name, QString slug) const
{
    CreateProductBody body{std::move(name), std::move(slug)};
    co_await send<JSONValueIgnored>("POST", u"/v1/admin/products"_s, std::move(body));
}

QCoro::Task<void> APIClient::adminUpdateProduct(QString id, std::optional<QString> name,
                                                std::optional<WidgetConfig> widget) const
{
    UpdateProductBody body{std::move(name), std::move(widget)};
    co_await send<JSONValueIgnored>("PATCH", "/v1/admin/products/"_L1 + id, std::move(body));
}

QCoro::Task<std::vector<CannedResponse>> APIClient::adminCanned() const
{
    auto response = co_await perform<CannedResponsesResponse>("GET", u"/v1/admin/canned"_s);
    co_return std::move(response.canned.wrappedValue);
}

QCoro::Task<void> APIClient::adminCreateCanned(QString shortcut, QString body,
                                               std::optional<QString> productId) const
{
    CreateCannedBody request{std::move(shortcut), std::move(body), std::move(productId)};
    co_await send<JSONValueIgnored>("POST", u"/v1/admin/canned"_s, std::move(request));
}

QCoro::Task<void> APIClient::adminDeleteCanned(QString id) const
{
    co_await perform<JSONValueIgnored>("DELETE", "/v1/admin/canned/"_L1 + id);
}

} // namespace orvia
