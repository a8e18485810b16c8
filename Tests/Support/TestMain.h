#pragma once

#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace orvia::test {

/// Fixes what a test must not inherit from the machine that it runs on: locale, time zone, proxy, and the
/// user's own directories, in whose place @p home stands.
void pinEnvironment(const QTemporaryDir& home);

/// The main function of a test program that needs an application object.
template <class Application>
int runTests(int argc, char** argv)
{
    const QTemporaryDir home;
    pinEnvironment(home);
    testing::InitGoogleMock(&argc, argv);
    const Application application(argc, argv);
    return RUN_ALL_TESTS();
}

} // namespace orvia::test
