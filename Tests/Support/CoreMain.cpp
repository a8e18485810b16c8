#include "Support/TestMain.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    return orvia::test::runTests<QCoreApplication>(argc, argv);
}
