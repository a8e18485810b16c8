#include <QCoreApplication>

/// Timers of the code under test need an application object, which lives until the process ends. The fuzzing
/// engine calls this before its first input.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static const QCoreApplication* const application = new QCoreApplication(*argc, *argv);
    return application ? 0 : 1;
}
