#pragma once

#include "DemoService/Exchange.h"
#include "DemoService/Store.h"

#include <functional>
#include <vector>

namespace orvia::demo {

/// Finds the route of a request, checks who asks, and turns refusals into answers.
class Router {
public:
    enum class Access { anybody, agent, administrator };
    /// @p caller is the signed-in agent; null only on routes for anybody.
    using Handler = std::function<Answer(const Request& request, Account* caller)>;

    explicit Router(Store& store);

    /// A segment of @p pattern that is "*" stands for any one segment and becomes an argument.
    void add(QByteArray method, const QString& pattern, Access access, Handler handler);

    Answer answer(Request request) const;

private:
    struct Route {
        QByteArray method;
        QStringList segments;
        Access access;
        Handler handler;
    };

    const Route& routeFor(Request& request) const;
    Account* callerOf(const Request& request, Access access) const;

    Store& m_store;
    std::vector<Route> m_routes;
};

} // namespace orvia::demo
