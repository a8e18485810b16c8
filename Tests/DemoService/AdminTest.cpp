#include "DemoFixture.h"

namespace orvia::test {

using testing::Contains;

class AdminTest : public DemoTest {
protected:
    std::optional<int> loginStatus(const QString& email, const QString& password)
    {
        const APIClient anonymous(service.origin(), std::nullopt, &session);
        const auto outcome = runTask(anonymous.login(email, password));
        return outcome.error ? outcome.error->status : 200;
    }
};

TEST_F(AdminTest, NewAgentsCanSignIn)
{
    ASSERT_TRUE(runTask(client().adminCreateAgent(u"Lena Hartog"_s, u"lena@tessaly.example"_s, u"secret"_s,
                                                  AgentRole::agent, {u"halden"_s}))
                    .value);
    EXPECT_EQ(loginStatus(u"lena@tessaly.example"_s, u"secret"_s), 200);
    const auto duplicate =
        runTask(client().adminCreateAgent(u"L"_s, u"LENA@tessaly.example"_s, u"x"_s, AgentRole::agent, {}));
    EXPECT_EQ(duplicate.error, APIError(u"An agent with this e-mail address already exists."_s, 409));
    const Agent lena = runTask(client().adminAgents()).value->back();
    EXPECT_EQ(lena.name, u"Lena Hartog"_s);
    EXPECT_EQ(lena.productIds, QStringList{u"halden"_s});
}

TEST_F(AdminTest, UpdatesOnlyWhatIsSent)
{
    const auto update = [this](std::optional<QStringList> productIds, std::optional<AgentRole> role,
                               std::optional<QString> password) {
        return runTask(client().adminUpdateAgent(u"dana"_s, productIds, role, password)).value.has_value();
    };
    const auto dana = [this]() -> const Agent& { return service.store().account(u"dana"_s)->agent; };
    EXPECT_TRUE(update(std::nullopt, std::nullopt, u"new"_s));
    EXPECT_EQ(dana().productIds, (QStringList{u"larkspur"_s, u"halden"_s}));
    EXPECT_EQ(loginStatus(u"dana@tessaly.example"_s, u"demo"_s), 401);
    EXPECT_EQ(loginStatus(u"dana@tessaly.example"_s, u"new"_s), 200);
    EXPECT_TRUE(update(QStringList(), std::nullopt, std::nullopt));
    EXPECT_EQ(dana().productIds, QStringList());
    EXPECT_TRUE(runTask(client(u"dana"_s).conversations({}, {}, {}, true)).value->empty());
    EXPECT_TRUE(update(std::nullopt, AgentRole::admin, std::nullopt));
    EXPECT_EQ(runTask(client(u"dana"_s).adminProducts()).value->size(), 3U);
    EXPECT_TRUE(update(std::nullopt, std::nullopt, std::nullopt));
}

TEST_F(AdminTest, TheLastAdministratorStays)
{
    const auto refused = runTask(client().adminUpdateAgent(u"mara"_s, {}, AgentRole::agent, {}));
    EXPECT_EQ(refused.error->status, 422);
    EXPECT_EQ(service.store().account(u"mara"_s)->agent.role, AgentRole::admin);
}

TEST_F(AdminTest, ProductsAndTheirWidgets)
{
    ASSERT_TRUE(runTask(client().adminCreateProduct(u"Tidewater Books"_s, u"tidewater-books"_s)).value);
    const Product created = runTask(client().adminProducts()).value->back();
    EXPECT_EQ(created.slug, u"tidewater-books"_s);
    EXPECT_TRUE(created.publicKey && created.publicKey->startsWith(u"pk_"_s));
    EXPECT_EQ(created.createdAt, now);
    EXPECT_FALSE(created.widget);

    WidgetConfig widget;
    widget.position = u"left"_s;
    widget.greeting = WidgetGreeting{true, 5, std::nullopt};
    ASSERT_TRUE(runTask(client().adminUpdateProduct(created.id, std::nullopt, widget)).value);
    ASSERT_TRUE(runTask(client().adminUpdateProduct(created.id, u"Tidewater"_s, std::nullopt)).value);
    const Product changed = runTask(client().adminProducts()).value->back();
    EXPECT_EQ(changed.name, u"Tidewater"_s);
    EXPECT_EQ(changed.widget, widget);
    EXPECT_EQ(runTask(client().me()).value->products.wrappedValue.size(), 4U);
    EXPECT_EQ(runTask(client(u"priya"_s).me()).value->products.wrappedValue.size(), 3U);
}

TEST_F(AdminTest, CannedResponsesPerProduct)
{
    const auto create = [this](const QString& shortcut, std::optional<QString> productId) {
        const auto outcome = runTask(client().adminCreateCanned(shortcut, u"text"_s, productId));
        return outcome.error ? outcome.error->status : 200;
    };
    EXPECT_EQ(create(u"shipping"_s, u"halden"_s), 200) << "another product may use the same shortcut";
    EXPECT_EQ(create(u"shipping"_s, u"larkspur"_s), 409);
    EXPECT_EQ(create(u"sorry"_s, std::nullopt), 409);
    const CannedResponse created = runTask(client().adminCanned()).value->back();
    EXPECT_EQ(created.productId, u"halden"_s);
    EXPECT_TRUE(runTask(client().adminDeleteCanned(created.id)).value);
    EXPECT_EQ(runTask(client().adminDeleteCanned(created.id)).error->status, 404);
    EXPECT_EQ(runTask(client().adminCanned()).value->size(), 6U);
}

} // namespace orvia::test
