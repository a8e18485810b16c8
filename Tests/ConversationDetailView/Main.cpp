#include "Support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv)
{
    // Pictures of the library are found by name only, which the linker cannot know.
    Q_INIT_RESOURCE(orvia);
    return orvia::test::runTests<QApplication>(argc, argv);
}
