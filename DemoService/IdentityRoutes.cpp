#include "DemoService/RequestBody.h"
#include "DemoService/Routes.h"
#include "DemoService/WireEncoding.h"
#include "Models/Responses.h"

#include <QRegularExpression>

#include <algorithm>

namespace orvia::demo {

using namespace Qt::StringLiterals;
using Access = Router::Access;

namespace {

/// The one answer of the interface that has no record of its own.
struct TeammatesAnswer {
    std::vector<Agent> teammates;

    static constexpr auto fields()
    {
        return std::tuple{json::required("teammates", &TeammatesAnswer::teammates)};
    }
};

Answer login(Store& store, const Request& request)
{
    const RequestBody body(request);
    body.allowOnly({"email"_L1, "password"_L1});
    const QString email = body.filledText("email"_L1).trimmed();
    const QString password = body.text("password"_L1);
    const Account* const account = store.accountByEmail(email);
    if (!account || account->password != password)
        throw Refusal(401, u"Invalid email or password"_s);
    return {200, wire::encoded(LoginResponse{store.newToken(*account), account->agent})};
}

Answer me(Store& store, const Account& caller)
{
    MeResponse response;
    response.agent = caller.agent;
    for (const Product& product : store.products()) {
        if (caller.serves(product.id))
            response.products.wrappedValue.push_back(product);
    }
    return {200, wire::encoded(response)};
}

Answer updatePreferences(Account& caller, const Request& request)
{
    const RequestBody body(request);
    body.allowOnly({"notifyMode"_L1});
    caller.agent.notifyMode = body.oneOf<NotifyMode>("notifyMode"_L1);
    return {200, wire::encoded(AgentResponse{caller.agent})};
}

Answer registerDevice(Account& caller, const Request& request)
{
    const RequestBody body(request);
    body.allowOnly({"platform"_L1, "apnsToken"_L1});
    const Device device{body.filledText("platform"_L1), body.filledText("apnsToken"_L1)};
    static const QRegularExpression hexadecimal(u"\\A(?:[0-9a-f]{2})+\\z"_s);
    if (!hexadecimal.match(device.pushToken).hasMatch())
        throw Refusal(400, u"\"apnsToken\" must be lower-case hexadecimal."_s);
    if (std::find(caller.devices.begin(), caller.devices.end(), device) == caller.devices.end())
        caller.devices.push_back(device);
    return {};
}

Answer teammates(Store& store, const Account& caller)
{
    TeammatesAnswer answer;
    for (const auto& account : store.accounts()) {
        const QStringList products = account->agent.productIds.value_or(QStringList());
        const bool shares = caller.isAdmin() || account->isAdmin()
                            || std::any_of(products.begin(), products.end(),
                                           [&](const QString& id) { return caller.serves(id); });
        if (!shares)
            continue;
        Agent teammate = account->agent;
        // What a teammate mutes and is notified of is nobody else's business.
        teammate.notifyMode.reset();
        teammate.mutedConversationIds.reset();
        answer.teammates.push_back(std::move(teammate));
    }
    return {200, wire::encoded(answer)};
}

/// With a product: its own responses and those of every product. Without: all that the agent can use.
Answer canned(Store& store, const Account& caller, const Request& request)
{
    const QString productId = request.queryValue(u"productId"_s);
    if (!productId.isEmpty() && (!store.product(productId) || !caller.serves(productId)))
        throw Refusal(404, u"There is no such product."_s);
    CannedResponsesResponse response;
    for (const CannedResponse& item : store.canned()) {
        const bool fits =
            !item.productId
            || (productId.isEmpty() ? caller.serves(*item.productId) : *item.productId == productId);
        if (fits)
            response.canned.wrappedValue.push_back(item);
    }
    return {200, wire::encoded(response)};
}

} // namespace

void addIdentityRoutes(Router& router, Workplace workplace)
{
    Store* const store = &workplace.store;
    router.add("POST", u"/v1/agent/login"_s, Access::anybody,
               [store](const Request& request, Account*) { return login(*store, request); });
    router.add("GET", u"/v1/agent/me"_s, Access::agent,
               [store](const Request&, Account* caller) { return me(*store, *caller); });
    router.add("PATCH", u"/v1/agent/me/preferences"_s, Access::agent,
               [](const Request& request, Account* caller) { return updatePreferences(*caller, request); });
    router.add("POST", u"/v1/agent/devices"_s, Access::agent,
               [](const Request& request, Account* caller) { return registerDevice(*caller, request); });
    router.add("GET", u"/v1/agent/teammates"_s, Access::agent,
               [store](const Request&, Account* caller) { return teammates(*store, *caller); });
    router.add("GET", u"/v1/agent/canned"_s, Access::agent,
               [store](const Request& request, Account* caller) { return canned(*store, *caller, request); });
}

} // namespace orvia::demo
