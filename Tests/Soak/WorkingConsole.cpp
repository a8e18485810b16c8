#include "WorkingConsole.h"

#include "Inventory.h"
#include "Theme/Theme.h"
#include "Views/ConversationDetailView/Composer/ComposerField.h"
#include "Views/ConversationDetailView/Composer/MessageComposer.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/MainSplitView.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Sheet.h"
#include "Views/Widgets/TextField.h"

#include <QAbstractEventDispatcher>
#include <QScrollBar>
#include <QTest>

namespace orvia::test {

using namespace std::chrono_literals;

namespace {

constexpr SessionTimings shortTimings{.typingClear = 40ms,
                                      .previewClear = 120ms,
                                      .bannerDismiss = 50ms,
                                      .searchDebounce = 2ms,
                                      .sessionRetry = 50ms,
                                      .typingThrottle = 0.01};
constexpr SocketTimings quickReconnect{.firstReconnectDelay = 5ms, .longestReconnectDelay = 50ms};

template <class Widget>
Widget* shown(const QWidget& root, const QString& name)
{
    for (auto* widget : root.findChildren<Widget*>()) {
        bool isNamed = widget->accessibleName() == name;
        if constexpr (std::derived_from<Widget, QAbstractButton>)
            isNamed = isNamed || widget->text() == name;
        if (isNamed && widget->isVisible() && widget->isEnabled())
            return widget;
    }
    return nullptr;
}

/// One turn of an event loop. Not processEvents(): what deletes itself later while no loop runs, such as a
/// sheet at the end of its movement, would stay until the test returned to none.
void takeTurn()
{
    spinFor(0ms);
}

} // namespace

WorkingConsole::WorkingConsole(const QUrl& origin, std::function<void(const QByteArray&)> tell, Tally& tally)
    : m_tell(std::move(tell))
    , m_tally(tally)
    , m_defaults(m_directory.filePath(u"defaults.ini"_s))
    , m_session({.defaults = m_defaults,
                 .tokenStore = m_tokens,
                 .urlSession = m_network,
                 .baseURL = origin,
                 .timings = shortTimings,
                 .socketTimings = quickReconnect})
    , m_window(m_session)
{
    for (const auto& [name, size] :
         {std::pair(u"note.txt"_s, 900), {u"table.csv"_s, 40'000}, {u"log.bin"_s, 300'000}}) {
        QFile file(m_directory.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray(size, 'x'));
    }
    QImage picture(640, 480, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    picture.save(m_directory.filePath(u"picture.png"_s));

    QObject::connect(&m_session, &Session::bannerChanged, &m_session, [this] {
        if (m_session.banner())
            m_banners.append(*m_session.banner());
    });
    QObject::connect(&m_session, &Session::socketConnectedChanged, &m_session,
                     [this] { m_connections += m_session.socketConnected() ? 1 : 0; });
    m_window.resize(1280, 760);
    m_window.show();
    const auto handle = m_session.socket().onEvent;
    m_session.socket().onEvent = [this, handle](const SocketEvent& event) {
        if (event.type == "mark"_L1)
            m_markSeen = event.conversationId->toLongLong();
        else
            ++m_tally.events;
        handle(event);
    };
    signIn();
}

void WorkingConsole::work(int turns, int eventsPerTurn)
{
    struct Activity {
        int period; ///< in turns
        void (WorkingConsole::*perform)();
    };
    static constexpr Activity activities[] = {{1, &WorkingConsole::openAnother},
                                              {2, &WorkingConsole::draft},
                                              {4, &WorkingConsole::send},
                                              {10, &WorkingConsole::upload},
                                              {10, &WorkingConsole::workOnConversation},
                                              {20, &WorkingConsole::search},
                                              {20, &WorkingConsole::openSheets},
                                              {40, &WorkingConsole::switchAppearance},
                                              {50, &WorkingConsole::changeFilters},
                                              {50, &WorkingConsole::reconnect},
                                              {200, &WorkingConsole::signOut}};
    for (int last = m_turn + turns; m_turn < last && !testing::Test::HasFailure(); ++m_turn) {
        receiveLive(eventsPerTurn);
        for (const Activity& activity : activities) {
            if (m_turn % activity.period == 0)
                (this->*activity.perform)();
        }
        await("the live events", [this] { return m_markSeen == m_markSent; });
    }
}

void WorkingConsole::rest()
{
    closeSheets();
    m_session.clearSearch();
    m_session.setShowVisitorPanel(false);
    m_session.setSelectedConversationId(std::nullopt);
    Theme::shared().setDesktopAppearance(false);
    refresh();
    fillThreads();
    receiveLive(0);
    const auto isStill = [this] {
        const auto bars = m_window.findChildren<QScrollBar*>();
        return std::all_of(bars.begin(), bars.end(), [](QScrollBar* bar) {
            return QAbstractEventDispatcher::instance()->registeredTimers(bar).isEmpty();
        });
    };
    await("the last event", [&] { return m_markSeen == m_markSent; });
    await("the end of every mark",
          [&] { return Inventory::pendingKeyedTimers() == 0 && !m_session.banner(); });
    await("the end of every sheet", [&] { return m_window.findChildren<Sheet*>().isEmpty(); });
    await("the end of every movement", isStill);
    // What nobody waits for, such as the answer to a page that was closed while it loaded.
    spinFor(200ms);
}

void WorkingConsole::signIn()
{
    // Not those of a form that is still fading.
    const QWidget& screen = *m_window.screen();
    auto* const email = shown<QLineEdit>(screen, u"Email"_s);
    auto* const password = shown<QLineEdit>(screen, u"Password"_s);
    ASSERT_TRUE(email && password);
    email->setText(u"mara@tessaly.example"_s);
    password->setText(u"demo"_s);
    auto* const button = shown<QAbstractButton>(screen, u"Sign In"_s);
    ASSERT_TRUE(button);
    button->click();
    await("the live channel", [this] { return m_session.socketConnected(); });
    ++m_tally.signIns;
}

void WorkingConsole::signOut()
{
    await("the live events before signing out", [this] { return m_markSeen == m_markSent; });
    m_session.logout();
    EXPECT_EQ(m_session.messages().messageCount(), 0);
    signIn();
}

void WorkingConsole::receiveLive(int events)
{
    m_tell("live " + QByteArray::number(events) + ' ' + QByteArray::number(++m_markSent) + '\n');
}

void WorkingConsole::openAnother()
{
    auto listed = m_session.filteredConversations();
    // What a search led to may have been among closed ones that visitors have reopened meanwhile.
    if (listed.empty()) {
        m_session.setStatusFilter(ConversationStatus::open);
        listed = m_session.filteredConversations();
    }
    ASSERT_FALSE(listed.empty());
    // A step that has no divisor in common with most lengths goes through all of the list.
    const QString id = listed[static_cast<std::size_t>(m_turn) * 37 % listed.size()]->id;
    if (m_turn % 7 == 0)
        m_session.openFromDeepLink(id);
    else
        m_session.setSelectedConversationId(id);
    await("the thread", [&] { return !m_session.messages().thread(id).empty(); });
    ++m_tally.switches;
}

void WorkingConsole::draft()
{
    ConversationComposer* const open = composer();
    ASSERT_TRUE(open);
    open->messageComposer()->setNote(m_turn % 8 == 0);
    QTest::keyClicks(&open->messageComposer()->field(),
                     m_turn % 8 == 0 ? u"@da"_s : u"I will look into it"_s);
    ++m_tally.drafts;
}

void WorkingConsole::send()
{
    ConversationComposer* const open = composer();
    ASSERT_TRUE(open);
    // Return takes a suggestion first, the second one sends.
    for (int key = 0; key < 2; ++key)
        QTest::keyClick(&open->messageComposer()->field(), Qt::Key_Return);
    ++m_tally.messages;
}

void WorkingConsole::upload()
{
    static const std::array names{u"note.txt"_s, u"picture.png"_s, u"table.csv"_s, u"log.bin"_s};
    const QPointer<ConversationComposer> open = composer();
    ASSERT_TRUE(open);
    const auto number = static_cast<std::size_t>(m_tally.uploads++);
    open->upload(QUrl::fromLocalFile(m_directory.filePath(names[number % names.size()])));
    // The next conversation is opened during every third upload.
    if (number % 3 != 0)
        await("the upload", [&] { return !open || !open->isUploading(); });
}

void WorkingConsole::search()
{
    m_session.setSearchText(m_tally.searches % 2 == 0 ? u"warehouse"_s : u"no such words"_s);
    await("the search", [this] { return !m_session.isSearching(); });
    takeTurn();
    if (m_session.searchResults().empty())
        m_session.clearSearch();
    else
        m_session.openSearchResult(m_session.searchResults().front());
    ++m_tally.searches;
}

void WorkingConsole::openSheets()
{
    static const std::array<std::pair<QString, QString>, 3> pages{
        {{u"Agents"_s, u"New agent"_s},
         {u"Products"_s, u"New product"_s},
         {u"Canned Responses"_s, u"New canned response"_s}}};
    const auto& [page, button] = pages[static_cast<std::size_t>(m_tally.sheets) % pages.size()];
    qobject_cast<MainSplitView*>(m_window.screen())->setShowSettings(true);
    for (const QString& name : {QString(page), QString(button)}) {
        auto* const control = shown<QAbstractButton>(m_window, name);
        ASSERT_TRUE(control) << name.toStdString();
        control->click();
        takeTurn();
    }
    closeSheets();
    ++m_tally.sheets;
}

void WorkingConsole::switchAppearance()
{
    Theme::shared().setDesktopAppearance(!Theme::shared().isDark());
    ++m_tally.appearances;
}

void WorkingConsole::reconnect()
{
    await("the live events before the break", [this] { return m_markSeen == m_markSent; });
    // The channel may be up again before anybody looks.
    const int before = m_connections;
    m_tell("break\n");
    await("the new connection", [&] { return m_connections > before; });
    ++m_tally.reconnects;
}

void WorkingConsole::workOnConversation()
{
    const QString id = m_session.selectedConversationId().value_or(QString());
    const bool isFirst = m_turn % 20 == 0;
    m_session.setShowVisitorPanel(isFirst);
    m_session.setMuted(id, isFirst);
    m_session.setNotifyMode(isFirst ? NotifyMode::mine : NotifyMode::all);
    m_session.assign(id, isFirst ? std::optional(m_session.agent()->id) : std::nullopt);
    m_session.snooze(id, currentInstant() + 20ms);
    m_session.setStatus(isFirst ? ConversationStatus::closed : ConversationStatus::open, id);
}

void WorkingConsole::changeFilters()
{
    m_session.setQueue(InboxQueue::mine);
    m_session.setStatusFilter(ConversationStatus::closed);
    refresh();
    takeTurn();
    refresh();
}

void WorkingConsole::refresh()
{
    m_session.setQueue(InboxQueue::all);
    m_session.setStatusFilter(ConversationStatus::open);
    m_session.refreshConversations();
    await("the inbox", [this] { return !m_session.isLoadingList(); });
}

void WorkingConsole::closeSheets()
{
    while (Sheet* sheet = Sheet::topmost(&m_window))
        sheet->dismiss();
}

/// As at the end of a busy hour: the same conversations again and again, and now and then a new one.
void WorkingConsole::fillThreads()
{
    const auto listed = m_session.filteredConversations();
    ASSERT_FALSE(listed.empty());
    SocketEvent event;
    event.type = u"message"_s;
    for (qsizetype number = 0; number < Session::keptMessages; ++number) {
        Message message = makeMessage(u"fill-%1-%2"_s.arg(m_turn).arg(number), u"stranger"_s);
        const auto position = static_cast<std::size_t>(number);
        message.conversationId =
            number % 20 == 0 ? u"stranger-%1"_s.arg(number) : listed[position % listed.size()]->id;
        event.message = std::move(message);
        m_session.handle(event);
    }
}

ConversationComposer* WorkingConsole::composer() const
{
    for (auto* view : m_window.findChildren<ConversationDetailView*>()) {
        if (view->conversationId() == m_session.selectedConversationId())
            return &view->composer();
    }
    return nullptr;
}

bool WorkingConsole::await(const char* what, const std::function<bool()>& condition)
{
    const bool held = waitUntil(condition);
    EXPECT_TRUE(held) << "waited in vain for " << what << " in turn " << m_turn;
    return held;
}

} // namespace orvia::test
