// A second start of a program: claims the name given first or hands the links that follow over, and says
// which.
#include "Platform/ApplicationService.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    using orvia::ApplicationService;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    ApplicationService service(arguments.value(1));
    switch (service.start(arguments.mid(2))) {
    case ApplicationService::Start::first:
        std::puts("first");
        break;
    case ApplicationService::Start::handedOver:
        std::puts("handed over");
        break;
    case ApplicationService::Start::alone:
        std::puts("alone");
        break;
    }
    return 0;
}
