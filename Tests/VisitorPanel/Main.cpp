#include "Support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv)
{
    return orvia::test::runTests<QApplication>(argc, argv);
}
