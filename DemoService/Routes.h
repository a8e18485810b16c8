#pragma once

#include "DemoService/Desk.h"
#include "DemoService/FileShelf.h"
#include "DemoService/Router.h"
#include "DemoService/Store.h"

namespace orvia::demo {

/// What the routes work on. Outlives the router.
struct Workplace {
    Store& store;
    Desk& desk;
    FileShelf& files;
};

/// Sign-in, identity, preferences, devices, teammates, canned responses.
void addIdentityRoutes(Router& router, Workplace workplace);
/// The inbox, threads and what agents do in them, attachments.
void addConversationRoutes(Router& router, Workplace workplace);
/// Search in names, addresses and messages.
void addSearchRoutes(Router& router, Workplace workplace);
/// Agents, products and canned responses, for administrators.
void addAdminRoutes(Router& router, Workplace workplace);

} // namespace orvia::demo
