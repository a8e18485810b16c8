#include "DemoService/Router.h"

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

/// Whether the path matches, and what stands for the placeholders.
std::optional<QStringList> argumentsOf(const QStringList& pattern, const QStringList& path)
{
    if (pattern.size() != path.size())
        return std::nullopt;
    QStringList arguments;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == "*"_L1 && !path[i].isEmpty())
            arguments.push_back(path[i]);
        else if (pattern[i] != path[i])
            return std::nullopt;
    }
    return arguments;
}

} // namespace

Router::Router(Store& store)
    : m_store(store)
{
}

void Router::add(QByteArray method, const QString& pattern, Access access, Handler handler)
{
    m_routes.push_back({std::move(method), pattern.split(u'/'), access, std::move(handler)});
}

Answer Router::answer(Request request) const
{
    try {
        const Route& route = routeFor(request);
        return route.handler(request, callerOf(request, route.access));
    } catch (const Refusal& refusal) {
        return answerOf(refusal);
    }
}

const Router::Route& Router::routeFor(Request& request) const
{
    const QStringList path = request.path.split(u'/');
    bool knownPath = false;
    for (const Route& route : m_routes) {
        auto arguments = argumentsOf(route.segments, path);
        if (!arguments)
            continue;
        knownPath = true;
        if (route.method == request.method) {
            request.arguments = std::move(*arguments);
            return route;
        }
    }
    if (knownPath)
        throw Refusal(405, u"%1 is not possible here."_s.arg(QString::fromLatin1(request.method)));
    throw Refusal(404, u"There is nothing at this address."_s);
}

Account* Router::callerOf(const Request& request, Access access) const
{
    if (access == Access::anybody)
        return nullptr;
    constexpr QByteArrayView scheme("Bearer ");
    if (!request.authorization.startsWith(scheme))
        throw Refusal(401, u"Sign in first: the request has no bearer token."_s);
    Account* const caller =
        m_store.accountByToken(QString::fromUtf8(request.authorization.mid(scheme.size())));
    if (!caller)
        throw Refusal(401, u"The token is not valid or has expired."_s);
    if (access == Access::administrator && !caller->isAdmin())
        throw Refusal(403, u"Only administrators may do this."_s);
    return caller;
}

} // namespace orvia::demo
