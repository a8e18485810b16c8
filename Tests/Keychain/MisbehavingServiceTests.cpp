#include "ScriptedSecretService.h"

#include "Platform/SecretService.h"
#include "Support/PrivateBus.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::PrivateBus;
using test::ScriptedSecretService;

namespace {

const QString service = u"test.app"_s;
const QString key = u"agentToken"_s;

struct Misbehaviour {
    ScriptedSecretService::Behaviour behaviour;
    SecretStatus reading;
    SecretStatus removal;
    int questions;
};

class SecretServiceMisbehaving : public testing::TestWithParam<Misbehaviour> {};

TEST_P(SecretServiceMisbehaving, EndsInBoundedTimeWithTheRightOutcome)
{
    const Misbehaviour& expected = GetParam();
    // Calls given up on may hold their connection a little longer, so every case uses the same bus.
    static PrivateBus bus;
    ASSERT_TRUE(bus.isRunning());
    SecretService storage(u"Test"_s, {.answer = 300ms, .question = 300ms});
    {
        ScriptedSecretService scripted(bus, expected.behaviour);
        EXPECT_EQ(storage.read(service, key).status, expected.reading);
        EXPECT_EQ(scripted.questions(), expected.questions);
    }
    ScriptedSecretService scripted(bus, expected.behaviour);
    EXPECT_EQ(storage.remove(service, key), expected.removal);
    EXPECT_EQ(scripted.questions(), expected.questions);
}

using Behaviour = ScriptedSecretService::Behaviour;

INSTANTIATE_TEST_SUITE_P(
    SecretService, SecretServiceMisbehaving,
    testing::Values(Misbehaviour{Behaviour::silent, SecretStatus::unavailable, SecretStatus::unavailable, 0},
                    Misbehaviour{Behaviour::silentInSearch, SecretStatus::failed, SecretStatus::failed, 0},
                    Misbehaviour{Behaviour::goneInSearch, SecretStatus::failed, SecretStatus::failed, 0},
                    Misbehaviour{Behaviour::questionDeclined, SecretStatus::failed, SecretStatus::failed, 1},
                    Misbehaviour{Behaviour::questionWithoutEnd, SecretStatus::failed, SecretStatus::failed,
                                 1}));

} // namespace

} // namespace orvia
