#include "Support/TestMain.h"

#include "Theme/Theme.h"

#include <QApplication>
#include <QThreadPool>

int main(int argc, char** argv)
{
    // The library of the views is static; nothing else would register its icons.
    Q_INIT_RESOURCE(orvia);
    const QTemporaryDir home;
    orvia::test::pinEnvironment(home);
    testing::InitGoogleMock(&argc, argv);
    QApplication application(argc, argv);
    orvia::Theme::shared().apply(application);
    // What it reads in other threads reads the environment, which tests change.
    QThreadPool::globalInstance()->waitForDone();
    return RUN_ALL_TESTS();
}
