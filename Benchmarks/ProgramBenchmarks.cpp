#include "Benchmarks/Benchmarks.h"
#include "Benchmarks/KernelFigures.h"
#include "Benchmarks/Programs.h"
#include "SocketClient/SocketClient.h"

#include <QThread>

#include <cstdlib>

/// The real program on a real display: start, memory, idling, and what events cost it.
namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int inboxSize = 10'000;
constexpr double bytesPerMegabyte = 1e6;
const QString console = u"orvia"_s;
const QString bareWindow = u"orvia-bench-bare-window"_s;
/// Where the console lists its conversations: below the search field, right of the sidebar.
constexpr QRect inboxList(240, 160, 240, 480);
/// Where the sign-in screen has its form.
constexpr QRect signInForm(340, 150, 400, 450);
/// Fewer edges than a few rows of text have, more than a line of text or a spinning mark.
constexpr int listEdges = 3'000;
constexpr int formEdges = 300;

bool isBarePainted(const QImage& picture)
{
    return qGray(picture.pixel(540, 350)) > 0;
}

bool isSignInPainted(const QImage& picture)
{
    return edges(picture, signInForm) > formEdges;
}

bool isInboxPainted(const QImage& picture)
{
    return edges(picture, inboxList) > listEdges;
}

/// What the measurements of this file share.
struct Scene {
    Stage stage;
    ServiceProcess service{{u"--quiet"_s, u"--conversations"_s, QString::number(inboxSize)}};
    QString token = service.signIn();

    const VirtualDisplay& display() const { return stage.display(); }
    double barePainted() const
    {
        const WindowProcess window(display(), bareWindow);
        return display().millisecondsUntil(isBarePainted);
    }
    double signInPainted()
    {
        const WindowProcess window(display(), console, stage.signedOut(service));
        return display().millisecondsUntil(isSignInPainted);
    }
    double inboxPainted()
    {
        const WindowProcess window(display(), console, stage.signedIn(service, token));
        return display().millisecondsUntil(isInboxPainted);
    }
    /// What the service takes for the requests that the inbox waits for.
    double serviceAlone() const
    {
        return service.millisecondsFor({u"/v1/agent/me"_s, u"/v1/agent/conversations?status=open"_s,
                                        u"/v1/agent/conversations?status=closed&includeSnoozed=true"_s},
                                       token);
    }
};

double settledMegabytes(const WindowProcess& window)
{
    QThread::sleep(2);
    return static_cast<double>(proportionalMemory(window.processId())) / bytesPerMegabyte;
}

double bareMegabytes(const Scene& scene)
{
    const WindowProcess window(scene.display(), bareWindow);
    scene.display().millisecondsUntil(isBarePainted);
    return settledMegabytes(window);
}

double inboxMegabytes(Scene& scene)
{
    const WindowProcess window(scene.display(), console, scene.stage.signedIn(scene.service, scene.token));
    scene.display().millisecondsUntil(isInboxPainted);
    return settledMegabytes(window);
}

/// A minute with the inbox on show, the channel open and nobody doing anything.
double idleWakeUpsPerSecond(Scene& scene)
{
    constexpr int seconds = 60;
    const WindowProcess window(scene.display(), console, scene.stage.signedIn(scene.service, scene.token));
    scene.display().millisecondsUntil(isInboxPainted);
    QThread::sleep(3);
    const auto before = wakeUps(window.processId());
    QThread::sleep(seconds);
    return static_cast<double>(wakeUpsBetween(before, wakeUps(window.processId()))) / seconds;
}

/// What a second of so many events costs the console, and at the same time a client that drops them.
struct Load {
    double console = 0;
    double floor = 0;
};

Load millisecondsPerSecond(Stage& stage, int eventsPerSecond)
{
    constexpr int seconds = 3;
    const ServiceProcess service({u"--quiet"_s, u"--conversations"_s, QString::number(inboxSize),
                                  u"--events-per-second"_s, QString::number(eventsPerSecond)});
    const QString token = service.signIn();
    const WindowProcess window(stage.display(), console, stage.signedIn(service, token));
    test::ChildProcess floor;
    floor.process().start(programPath(u"orvia-bench-dropped-frames"_s),
                          {SocketClient::socketURL(service.origin(), token)->toString()});
    stage.display().millisecondsUntil(isInboxPainted);
    QThread::sleep(2);
    const qint64 consoleBefore = processorTime(window.processId());
    const qint64 floorBefore = processorTime(floor.process().processId());
    QThread::sleep(seconds);
    const auto perSecond = [](qint64 nanoseconds) {
        return static_cast<double>(nanoseconds) / 1e6 / seconds;
    };
    return {perSecond(processorTime(window.processId()) - consoleBefore),
            perSecond(processorTime(floor.process().processId()) - floorBefore)};
}

Measurement load(const std::shared_ptr<Scene>& scene, int eventsPerSecond)
{
    const auto last = std::make_shared<Load>();
    return {u"processor time at %L1 events/s, inbox of 10,000"_s.arg(eventsPerSecond),
            u"ms/s"_s,
            [scene, last, eventsPerSecond] {
                *last = millisecondsPerSecond(scene->stage, eventsPerSecond);
                return last->console;
            },
            u"frames read and dropped"_s,
            [last] { return last->floor; },
            {},
            1};
}

} // namespace

std::vector<Measurement> programMeasurements()
{
    constexpr int anyRounds = std::numeric_limits<int>::max();
    // Starts differ by a tenth from one to the next.
    constexpr int startsFactor = 3;
    const auto scene = std::make_shared<Scene>();
    // The first start writes the cached identity and fills the system's file cache.
    scene->inboxPainted();
    const auto bare = [scene] { return scene->barePainted(); };
    return {
        {u"start to painted sign-in"_s,
         u"ms"_s,
         [scene] { return scene->signInPainted(); },
         u"bare window"_s,
         bare,
         {Budget::Kind::ratio, 1.5},
         anyRounds,
         startsFactor},
        {u"start to painted inbox of 10,000, without the service's time"_s,
         u"ms"_s,
         [scene] { return scene->inboxPainted() - scene->serviceAlone(); },
         u"bare window"_s,
         bare,
         {Budget::Kind::ratio, 3},
         anyRounds,
         startsFactor},
        {u"memory (PSS), inbox of 10,000"_s,
         u"MB"_s,
         [scene] { return inboxMegabytes(*scene); },
         u"bare window"_s,
         [scene] { return bareMegabytes(*scene); },
         {Budget::Kind::above, 40},
         3},
        load(scene, 10),
        load(scene, 1'000),
        load(scene, 10'000),
        {u"idle wake-ups over 60 s, connected"_s,
         u"per second"_s,
         [scene] { return idleWakeUpsPerSecond(*scene); },
         {},
         {},
         {Budget::Kind::atMost, 1},
         1},
    };
}

} // namespace orvia::bench
