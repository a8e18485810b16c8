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

} // namespace orvia::test
