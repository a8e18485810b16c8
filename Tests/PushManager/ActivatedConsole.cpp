// What the bus starts for a push to a program that does not run: takes the message, shows it, and ends with
// the click that opens its conversation.
#include "AppIdentity.h"
#include "Platform/ApplicationService.h"
#include "PushManager.h"

#include <QCoreApplication>
#include <QTimer>

int main(int argc, char** argv)
{
    using namespace orvia;
    QCoreApplication application(argc, argv);
    PushManager& manager = PushManager::shared();
    manager.onOpenConversation = [](const QString&) { QCoreApplication::quit(); };
    manager.connectToDesktop({});
    ApplicationService service(AppIdentity::identifier);
    if (service.start({}) != ApplicationService::Start::first || !ApplicationService::isStartedByBus())
        return 1;
    // A test that fails before the click must not leave this process behind.
    QTimer::singleShot(std::chrono::minutes(1), &application, [] { QCoreApplication::exit(1); });
    return QCoreApplication::exec();
}
