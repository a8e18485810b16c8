#include "Support/TestMain.h"

#include <QApplication>

int main(int argc, char** argv) {
    // The library of the views is static; nothing else would register its icons.
    Q_INIT_RESOURCE(orvia);
    return orvia::test::runTests<QApplication>(argc, argv);
}
