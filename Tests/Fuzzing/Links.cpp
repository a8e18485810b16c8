#include "Input.h"

#include "AppConfig.h"
#include "LaunchOptions.h"
#include "SocketClient/SocketClient.h"
#include "Views/DeepLink.h"

#include <QUrlQuery>

/// Addresses that come from outside: links, the configured origin, the command line. Fields: a link or an
/// origin; a token or an id; the arguments of the program.
namespace orvia::fuzzing {
namespace {

using namespace Qt::StringLiterals;

/// Every conversation has a link that leads to it.
void checkLinks(const QString& text, const QString& id)
{
    if (const auto named = DeepLink::conversationId(QUrl(text)))
        require(!named->isEmpty() && QUrl(text).scheme() == "orvia"_L1, "a link names a conversation");
    const QString link = "orvia://conversation/"_L1 + QString::fromLatin1(QUrl::toPercentEncoding(id));
    const auto found = DeepLink::conversationId(QUrl(link));
    require(found == (id.isEmpty() ? std::nullopt : std::optional(id)), "a link leads to its conversation");
    // A link travels to a running console as text.
    require(DeepLink::conversationId(QUrl(QUrl(link).toString(QUrl::FullyEncoded))) == found,
            "a link survives being handed over");
}

void checkOrigin(const QString& text, const QString& token)
{
    const QUrl fallback(u"https://fallback.example"_s);
    const QUrl origin = AppConfig::acceptedBaseURL(text, fallback);
    require(origin.isValid() && (origin.scheme() == "https"_L1 || origin.scheme() == "http"_L1),
            "an origin is a web address");
    require(origin == fallback || text.startsWith(origin.scheme() + u':'), "the scheme is judged as written");

    const auto address = SocketClient::socketURL(origin, token);
    if (!address)
        return;
    require(address->scheme() == (origin.scheme() == "https"_L1 ? u"wss"_s : u"ws"_s),
            "the channel is as safe as the origin");
    require(address->host() == origin.host() && address->port() == origin.port(),
            "the token goes to the origin only");
    require(address->path() == "/ws"_L1 && !address->hasFragment(), "the channel has one path");
    require(QUrlQuery(*address).queryItemValue(u"token"_s, QUrl::FullyDecoded) == token,
            "the token arrives as it is");
}

void checkArguments(const QStringList& arguments)
{
    const LaunchOptions options = LaunchOptions::parse(arguments);
    const bool isRefused = options.action == LaunchOptions::Action::refuse;
    require(isRefused == options.refusal.startsWith("orvia: "_L1), "a refusal says why");
    require(!options.refusal.contains(u'\n'), "a refusal is one line");
    require(options.links.size() <= 1, "at most one link is opened");
    for (const QUrl& link : options.links)
        require(!link.scheme().isEmpty() && arguments.size() > 1, "what is opened is a link");
}

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace orvia::fuzzing;
    Input input(data, size);
    const QString address = input.text();
    const QString text = input.text();
    checkLinks(address, text);
    checkOrigin(address, text);
    QStringList arguments{QStringLiteral("orvia")};
    while (!input.atEnd())
        arguments.append(input.text());
    checkArguments(arguments);
    return 0;
}
