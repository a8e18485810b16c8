#include "ScriptedSecretService.h"

#include "Platform/SecretService.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

TEST(MisbehavingSecretService, EndsACallInBoundedTimeWithTheRightOutcome)
{
    using Behaviour = test::ScriptedSecretService::Behaviour;
    const struct {
        Behaviour behaviour;
        SecretStatus outcome;
        int questions;
    } cases[] = {
        {Behaviour::silent, SecretStatus::unavailable, 0},
        {Behaviour::silentInSearch, SecretStatus::failed, 0},
        {Behaviour::goneInSearch, SecretStatus::failed, 0},
        {Behaviour::questionDeclined, SecretStatus::failed, 1},
        {Behaviour::questionWithoutEnd, SecretStatus::failed, 1},
    };
    const test::PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    SecretService storage(u"Test"_s, {.answer = 1s, .question = 1s});
    for (const auto& one : cases) {
        for (const bool reads : {true, false}) {
            const test::ScriptedSecretService scripted(bus, one.behaviour);
            EXPECT_EQ(reads ? storage.read(u"app"_s, u"key"_s).status : storage.remove(u"app"_s, u"key"_s),
                      one.outcome);
            EXPECT_EQ(scripted.questions(), one.questions);
        }
    }
}

} // namespace

} // namespace orvia
