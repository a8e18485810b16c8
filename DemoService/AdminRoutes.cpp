#include "DemoService/RequestBody.h"
#include "DemoService/Routes.h"
#include "DemoService/WireEncoding.h"
#include "Models/Responses.h"

#include <QCryptographicHash>
#include <QRegularExpression>

#include <algorithm>

namespace orvia::demo {

using namespace Qt::StringLiterals;
using Access = Router::Access;

namespace {

constexpr qint64 longestGreetingDelay = 3600;

QStringList knownProductIds(Store& store, const RequestBody& body)
{
    QStringList ids = body.texts("productIds"_L1);
    for (const QString& id : ids) {
        if (!store.product(id))
            throw Refusal(400, u"\"productIds\" names an unknown product: %1."_s.arg(id));
    }
    ids.removeDuplicates();
    return ids;
}

Answer agents(Store& store)
{
    AgentsResponse response;
    for (const auto& account : store.accounts())
        response.agents.wrappedValue.push_back(account->agent);
    return {200, wire::encoded(response)};
}

Answer createAgent(Store& store, const Request& request)
{
    const RequestBody body(request);
    body.allowOnly({"name"_L1, "email"_L1, "password"_L1, "role"_L1, "productIds"_L1});
    Agent agent;
    agent.name = body.filledText("name"_L1).trimmed();
    agent.email = body.filledText("email"_L1).trimmed();
    const QString password = body.filledText("password"_L1);
    agent.role = body.oneOf<AgentRole>("role"_L1);
    agent.productIds = knownProductIds(store, body);
    static const QRegularExpression address(u"\\A[^@\\s]+@[^@\\s]+\\z"_s);
    if (!address.match(agent.email).hasMatch())
        throw Refusal(400, u"\"email\" is not an e-mail address."_s);
    if (store.accountByEmail(agent.email))
        throw Refusal(409, u"An agent with this e-mail address already exists."_s);
    agent.id = store.newId("a"_L1);
    return {201, wire::encoded(AgentResponse{store.addAccount(std::move(agent), password).agent})};
}

bool isLastAdministrator(const Store& store, const Account& account)
{
    const auto& all = store.accounts();
    return account.isAdmin()
           && std::count_if(all.begin(), all.end(), [](const auto& other) { return other->isAdmin(); }) == 1;
}

Answer updateAgent(Store& store, const Request& request)
{
    Account* const account = store.account(request.arguments.first());
    if (!account)
        throw Refusal(404, u"There is no such agent."_s);
    const RequestBody body(request);
    body.allowOnly({"productIds"_L1, "role"_L1, "password"_L1});

    // Everything is read before anything changes, so that a refusal leaves the agent as it was.
    Agent changed = account->agent;
    QString password = account->password;
    if (body.has("productIds"_L1))
        changed.productIds = knownProductIds(store, body);
    if (body.has("role"_L1))
        changed.role = body.oneOf<AgentRole>("role"_L1);
    if (body.has("password"_L1))
        password = body.filledText("password"_L1);
    if (changed.role != AgentRole::admin && isLastAdministrator(store, *account))
        throw Refusal(422, u"The last administrator cannot become an agent."_s);
    account->agent = std::move(changed);
    account->password = std::move(password);
    return {200, wire::encoded(AgentResponse{account->agent})};
}

Answer products(Store& store)
{
    ProductsResponse response;
    response.products.wrappedValue = store.products();
    return {200, wire::encoded(response)};
}

Answer createProduct(Store& store, const Request& request)
{
    const RequestBody body(request);
    body.allowOnly({"name"_L1, "slug"_L1});
    Product product;
    product.name = body.filledText("name"_L1).trimmed();
    product.slug = body.filledText("slug"_L1).trimmed();
    static const QRegularExpression slug(u"\\A[a-z0-9]+(?:-[a-z0-9]+)*\\z"_s);
    if (!slug.match(product.slug).hasMatch())
        throw Refusal(400, u"\"slug\" may hold lower-case letters, digits and single hyphens."_s);
    const auto& all = store.products();
    if (std::any_of(all.begin(), all.end(), [&](const Product& other) { return other.slug == product.slug; }))
        throw Refusal(409, u"A product with this slug already exists."_s);
    product.id = store.newId("p"_L1);
    product.publicKey =
        "pk_"_L1
        + QString::fromLatin1(
            QCryptographicHash::hash(product.slug.toUtf8(), QCryptographicHash::Sha256).toHex().left(10));
    product.createdAt = store.now();
    store.products().push_back(product);
    return {201, R"({"product":)" + wire::encoded(product) + '}'};
}

WidgetGreeting greetingFrom(const RequestBody& body)
{
    body.allowOnly({"enabled"_L1, "delaySeconds"_L1, "text"_L1});
    WidgetGreeting greeting;
    if (body.has("enabled"_L1))
        greeting.enabled = body.flag("enabled"_L1);
    if (body.has("delaySeconds"_L1)) {
        greeting.delaySeconds = body.integer("delaySeconds"_L1);
        if (*greeting.delaySeconds < 0 || *greeting.delaySeconds > longestGreetingDelay)
            throw Refusal(422, u"The greeting's delay must be 0 to %1 seconds."_s.arg(longestGreetingDelay));
    }
    if (body.has("text"_L1))
        greeting.text = body.text("text"_L1);
    return greeting;
}

WidgetConfig widgetFrom(const RequestBody& body)
{
    body.allowOnly({"title"_L1, "accentColor"_L1, "position"_L1, "greeting"_L1});
    WidgetConfig widget;
    if (body.has("title"_L1))
        widget.title = body.text("title"_L1);
    if (body.has("accentColor"_L1)) {
        widget.accentColor = body.text("accentColor"_L1);
        static const QRegularExpression colour(u"\\A#[0-9a-fA-F]{6}\\z"_s);
        if (!colour.match(*widget.accentColor).hasMatch())
            throw Refusal(422, u"The accent color must look like #c2410c."_s);
    }
    if (body.has("position"_L1)) {
        widget.position = body.text("position"_L1);
        if (*widget.position != "right"_L1 && *widget.position != "left"_L1)
            throw Refusal(400, u"\"widget.position\" must be one of: right, left."_s);
    }
    if (body.has("greeting"_L1))
        widget.greeting = greetingFrom(body.object("greeting"_L1));
    return widget;
}

Answer updateProduct(Store& store, const Request& request)
{
    Product* const product = store.product(request.arguments.first());
    if (!product)
        throw Refusal(404, u"There is no such product."_s);
    const RequestBody body(request);
    body.allowOnly({"name"_L1, "widget"_L1});
    Product changed = *product;
    if (body.has("name"_L1))
        changed.name = body.filledText("name"_L1).trimmed();
    if (body.has("widget"_L1))
        changed.widget = widgetFrom(body.object("widget"_L1));
    *product = std::move(changed);
    return {200, R"({"product":)" + wire::encoded(*product) + '}'};
}

Answer canned(Store& store)
{
    CannedResponsesResponse response;
    response.canned.wrappedValue = store.canned();
    return {200, wire::encoded(response)};
}

Answer createCanned(Store& store, const Request& request)
{
    const RequestBody body(request);
    body.allowOnly({"shortcut"_L1, "body"_L1, "productId"_L1});
    CannedResponse canned;
    canned.shortcut = body.filledText("shortcut"_L1).trimmed();
    canned.body = body.filledText("body"_L1);
    static const QRegularExpression shortcut(u"\\A[^/\\s]+\\z"_s);
    if (!shortcut.match(canned.shortcut).hasMatch())
        throw Refusal(400, u"\"shortcut\" may hold neither white space nor a slash."_s);
    if (body.has("productId"_L1)) {
        canned.productId = body.text("productId"_L1);
        if (!store.product(*canned.productId))
            throw Refusal(400, u"\"productId\" names an unknown product."_s);
    }
    const auto& all = store.canned();
    const bool taken = std::any_of(all.begin(), all.end(), [&](const CannedResponse& other) {
        return other.productId == canned.productId
               && other.shortcut.compare(canned.shortcut, Qt::CaseInsensitive) == 0;
    });
    if (taken)
        throw Refusal(409, u"This shortcut is already taken."_s);
    canned.id = store.newId("r"_L1);
    canned.createdAt = store.now();
    store.canned().push_back(canned);
    return {201, R"({"canned":)" + wire::encoded(canned) + '}'};
}

Answer deleteCanned(Store& store, const Request& request)
{
    const auto removed = std::erase_if(
        store.canned(), [&](const CannedResponse& canned) { return canned.id == request.arguments.first(); });
    if (removed == 0)
        throw Refusal(404, u"There is no such canned response."_s);
    return {};
}

} // namespace

void addAdminRoutes(Router& router, Workplace workplace)
{
    const auto add = [&router, store = &workplace.store](const char* method, const QString& path,
                                                         auto answer) {
        router.add(method, path, Access::administrator, [store, answer](const Request& request, Account*) {
            if constexpr (std::is_invocable_v<decltype(answer), Store&>)
                return answer(*store);
            else
                return answer(*store, request);
        });
    };
    add("GET", u"/v1/admin/agents"_s, agents);
    add("POST", u"/v1/admin/agents"_s, createAgent);
    add("PATCH", u"/v1/admin/agents/*"_s, updateAgent);
    add("GET", u"/v1/admin/products"_s, products);
    add("POST", u"/v1/admin/products"_s, createProduct);
    add("PATCH", u"/v1/admin/products/*"_s, updateProduct);
    add("GET", u"/v1/admin/canned"_s, canned);
    add("POST", u"/v1/admin/canned"_s, createCanned);
    add("DELETE", u"/v1/admin/canned/*"_s, deleteCanned);
}

} // namespace orvia::demo
