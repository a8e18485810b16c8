#pragma once

#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "Support/ScriptedService.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

/// A client of a scripted service, signed in with the token "t0k3n".
class ClientFixture : public testing::Test {
protected:
    APIClient client() { return APIClient(service.url(), u"t0k3n"_s, &session); }

    ScriptedService service;
    NetworkSession session;
};

inline constexpr const char* agentJSON =
    R"({"_id":"a1","name":"Ada","email":"ada@x.example","role":"agent"})";
inline constexpr const char* conversationJSON =
    R"({"_id":"c1","productId":"p1","visitor":{"name":"Vi","email":"vi@x.example"},"status":"open"})";
inline constexpr const char* messageJSON =
    R"({"_id":"m1","conversationId":"c1","sender":"agent","body":"Hello"})";

/// An object whose one member @p key has the value @p json.
inline QByteArray wrapped(const char* key, const QByteArray& json)
{
    return QByteArray("{\"") + key + "\":" + json + '}';
}

} // namespace orvia::test
