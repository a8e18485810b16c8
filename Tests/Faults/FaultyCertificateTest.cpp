#include "FaultFixture.h"

/// A service that cannot prove who it is: nothing may be said to it, the token least of all.
namespace orvia::test {

namespace {

using Transport = ScriptedService::Transport;

class FaultyCertificateTest : public FaultTest {
protected:
    FaultyCertificateTest()
        : FaultTest(Transport::valid)
    {
    }
};

TEST_F(FaultyCertificateTest, KeepsTheTokenBackUntilAValidOneIsShown)
{
    const std::pair<Transport, QString> certificates[] = {
        {Transport::selfSigned, u"The certificate is self-signed, and untrusted"_s},
        {Transport::expired, u"The certificate has expired"_s},
        {Transport::otherHost, u"The host name did not match any of the valid hosts for this certificate"_s},
    };
    repair();
    signIn();
    const Agent known = *session->agent();
    for (const auto& [certificate, reason] : certificates) {
        SCOPED_TRACE(reason.toStdString());
        session.reset();
        network = std::make_unique<NetworkSession>();
        spinFor(std::chrono::milliseconds(50)); // for what was still on its way
        service.present(certificate);
        const auto requests = service.requests().size();
        const auto upgrades = service.upgradeRequests().size();

        watched(makeSession());
        runTask(session->bootstrap());
        // The restored agent carries on, so that the channel is tried too.
        ASSERT_TRUE(waitUntil([this] { return session->socket().pendingReconnect().has_value(); }));
        EXPECT_THAT(banners, testing::Each(u"Network error: SSL handshake failed: "_s + reason));
        EXPECT_EQ(session->agent(), known);
        EXPECT_TRUE(session->token());
        EXPECT_TRUE(session->conversations().isEmpty());
        EXPECT_EQ(service.requests().size(), requests);
        EXPECT_EQ(service.upgradeRequests().size(), upgrades);

        service.present(Transport::valid);
        EXPECT_TRUE(
            waitUntil([this] { return session->socketConnected() && session->conversations().size() == 2; }));
        takeBanners();
    }
}

} // namespace

} // namespace orvia::test
