#include "APIClient/NetworkSession.h"
#include "Benchmarks/Benchmarks.h"
#include "Benchmarks/Sample.h"
#include "Keychain/TokenStore.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/ConversationDetailView/Transcript/TranscriptView.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdlib>

/// What the agent feels: keys, scrolling and opening in a long thread, in a real window.
namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int longThread = 10'000;
constexpr int shortThread = 100;
constexpr int keyCount = 300;
constexpr int scrollSteps = 200;
constexpr double frame = 16; // milliseconds

class NoTokens : public TokenStore {
public:
    std::optional<QString> string(const QString&) override { return std::nullopt; }
    bool set(const std::optional<QString>&, const QString&) override { return true; }
};

/// Counts the paint events of a widget.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

Message sampleMessage(int number, const QString& conversationId)
{
    Message message;
    message.id = u"m%1"_s.arg(number);
    message.conversationId = conversationId;
    message.sender = number % 3 == 0 ? MessageSender::agent : MessageSender::visitor;
    message.body =
        u"Message %1. "_s.arg(number)
        + u"The hopper lid of the grinder is cracked, and the box was fine. "_s.repeated(number % 7);
    message.createdAt = currentInstant() - std::chrono::seconds(longThread - number);
    return message;
}

/// A session with one conversation of so many messages.
class Thread {
public:
    explicit Thread(int length)
        : m_defaults(m_directory.filePath(u"defaults.ini"_s))
        , m_session({m_defaults, m_tokens, m_network, QUrl(u"http://127.0.0.1:9"_s)})
    {
        SocketEvent event;
        event.type = u"conversation"_s;
        event.conversation = sampleConversation(0);
        m_id = event.conversation->id;
        m_session.handle(event);
        for (int number = 0; number < length; ++number)
            m_session.append(sampleMessage(number, m_id), m_id);
    }

    Session& session() { return m_session; }
    const QString& id() const { return m_id; }

private:
    QTemporaryDir m_directory;
    DefaultsStore m_defaults;
    NoTokens m_tokens;
    NetworkSession m_network;
    Session m_session;
    QString m_id;
};

double percentile99(std::vector<double> milliseconds)
{
    const auto place = milliseconds.begin() + static_cast<std::ptrdiff_t>(milliseconds.size() * 99 / 100);
    std::nth_element(milliseconds.begin(), place, milliseconds.end());
    return *place;
}

double millisecondsUntilPainted(PaintCounter& paints, const std::function<void()>& cause)
{
    const int before = paints.count;
    QElapsedTimer timer;
    timer.start();
    cause();
    while (paints.count == before)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void pressKey(QWidget* target)
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QCoreApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QCoreApplication::sendEvent(target, &release);
}

double keysUntilPainted(QPlainTextEdit* field)
{
    PaintCounter paints(field->viewport());
    std::vector<double> waits;
    for (int key = 0; key < keyCount; ++key) {
        // A line that wraps makes the field higher, which is another thing than a key.
        if (key % 40 == 0)
            field->clear();
        QCoreApplication::processEvents();
        waits.push_back(millisecondsUntilPainted(paints, [field] { pressKey(field); }));
    }
    return percentile99(std::move(waits));
}

/// Keys in the composer below the long thread, while messages and previews arrive a thousand times a second.
double keysUnderLoad()
{
    Thread thread(longThread);
    ConversationDetailView view(thread.session(), thread.id());
    view.resize(600, 700);
    view.show();
    auto* const field = view.findChild<QPlainTextEdit*>(u"composerField"_s);
    if (!field)
        std::abort();
    int number = longThread;
    QTimer load;
    QObject::connect(&load, &QTimer::timeout, [&] {
        ++number;
        SocketEvent event;
        event.conversationId = thread.id();
        if (number % 4 == 0) {
            event.type = u"message"_s;
            event.message = sampleMessage(number, thread.id());
        } else {
            event.type = u"typing"_s;
            event.from = u"visitor"_s;
            event.preview = u"typed %1"_s.arg(number);
        }
        thread.session().handle(event);
    });
    load.start(1);
    return keysUntilPainted(field);
}

double keysInBareField()
{
    QPlainTextEdit field;
    field.resize(600, 40);
    field.show();
    return keysUntilPainted(&field);
}

double scrolling(int length)
{
    Thread thread(length);
    ConversationDetailView view(thread.session(), thread.id());
    view.resize(600, 700);
    auto* const transcript = view.findChild<TranscriptView*>();
    PaintCounter paints(transcript->viewport());
    millisecondsUntilPainted(paints, [&view] { view.show(); });
    std::vector<double> waits;
    for (int step = 0; step < scrollSteps; ++step) {
        QScrollBar* const bar = transcript->verticalScrollBar();
        // Up to the beginning, and from there once more.
        if (bar->value() <= bar->minimum())
            bar->setValue(bar->maximum());
        QCoreApplication::processEvents();
        waits.push_back(
            millisecondsUntilPainted(paints, [bar] { bar->setValue(bar->value() - bar->pageStep() / 2); }));
    }
    return percentile99(std::move(waits));
}

double opening(int length)
{
    Thread thread(length);
    QElapsedTimer timer;
    timer.start();
    ConversationDetailView view(thread.session(), thread.id());
    view.resize(600, 700);
    PaintCounter paints(view.findChild<TranscriptView*>()->viewport());
    millisecondsUntilPainted(paints, [&view] { view.show(); });
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

Measurement scrollStep(int length)
{
    return {u"scroll step to painted, 99 %, thread of %L1"_s.arg(length),
            u"ms"_s,
            [length] { return scrolling(length); },
            {},
            {},
            {Budget::Kind::atMost, frame}};
}

Measurement openedThread(int length)
{
    return {u"thread of %L1 opened and painted"_s.arg(length),
            u"ms"_s,
            [length] { return opening(length); },
            {},
            {},
            {Budget::Kind::atMost, 50}};
}

} // namespace

std::vector<Measurement> viewMeasurements()
{
    return {
        {u"key to painted, 99 %, thread of 10,000, 1,000 events/s"_s,
         u"ms"_s,
         keysUnderLoad,
         u"key in a bare text field"_s,
         keysInBareField,
         {Budget::Kind::atMost, frame}},
        scrollStep(shortThread),
        scrollStep(longThread),
        openedThread(shortThread),
        openedThread(longThread),
    };
}

} // namespace orvia::bench
