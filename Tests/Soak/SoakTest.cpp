#include "../Session/SessionFixture.h"
#include "Inventory.h"
#include "Support/PrivateBus.h"
#include "Theme/Theme.h"
#include "Views/ConversationDetailView/Composer/ComposerField.h"
#include "Views/ConversationDetailView/Composer/MessageComposer.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/MainSplitView.h"
#include "Views/RootView.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Sheet.h"
#include "Views/Widgets/TextField.h"

#include <QTest>
#include <QWebSocket>

/// A working day at many times its pace, and what of it is left in the end.
namespace orvia::test {

using namespace std::chrono_literals;

namespace {

constexpr int messagesPerTurn = 20; ///< each amid four other live events

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

/// The console's session and window over a service in another process, and an agent who does everything that
/// the console is for, in a fixed order.
class WorkingConsole {
public:
    explicit WorkingConsole(const QUrl& origin)
        : m_defaults(m_directory.filePath(u"defaults.ini"_s))
        , m_session({.defaults = m_defaults,
                     .tokenStore = m_tokens,
                     .urlSession = m_network,
                     .baseURL = origin,
                     .timings = shortTimings,
                     .socketTimings = quickReconnect})
        , m_window(m_session)
    {
        QFile file(m_directory.filePath(u"log.bin"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(300'000, 'x'));
        QImage picture(640, 480, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        picture.save(m_directory.filePath(u"picture.png"_s));

        QObject::connect(&m_session, &Session::bannerChanged, &m_session, [this] {
            EXPECT_FALSE(m_session.banner()) << m_session.banner()->toStdString() << " in turn " << m_turn;
        });
        m_window.resize(1280, 760);
        m_window.show();
        signIn();
    }

    /// Works through @p turns conversations while live events arrive at each of them.
    void work(int turns)
    {
        static constexpr std::pair<int, void (WorkingConsole::*)()> activities[] = {
            {1, &WorkingConsole::openAnother},
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
            receiveLive(messagesPerTurn);
            for (const auto& [period, perform] : activities) {
                if (m_turn % period == 0)
                    (this->*perform)();
            }
            takeTurn();
        }
    }

    /// Leaves everything closed that can be closed, nothing under way, and as many messages kept as may be.
    void rest()
    {
        closeSheets();
        m_session.clearSearch();
        m_session.setShowVisitorPanel(false);
        m_session.setSelectedConversationId(std::nullopt);
        Theme::shared().setDesktopAppearance(false);
        refresh();
        receiveLive(Session::keptMessages);
        // The one focus frame goes with the view whose control had it last, and is made anew with the next.
        auto* const search = shown<QLineEdit>(m_window, u"Search conversations"_s);
        ASSERT_TRUE(search);
        search->clearFocus();
        search->setFocus(Qt::TabFocusReason);
        // Marks, sheets and movements end by themselves, and so do answers that nobody waits for.
        spinFor(1s);
        EXPECT_LE(m_session.messages().messageCount(), Session::keptMessages);
        EXPECT_TRUE(m_session.typingConversations().isEmpty());
        EXPECT_TRUE(m_session.viewers().isEmpty());
    }

private:
    void signIn()
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
    }

    void signOut()
    {
        m_session.logout();
        EXPECT_EQ(m_session.messages().messageCount(), 0);
        signIn();
    }

    /// A busy service: a teammate looks in and leaves, a visitor and a teammate type, the visitor writes; now
    /// and then in a conversation of which nothing else is known.
    void receiveLive(int messages)
    {
        const auto listed = listedConversations();
        ASSERT_FALSE(listed.empty());
        for (int count = 0; count < messages; ++count) {
            const auto number = static_cast<std::size_t>(++m_messages);
            const QString id =
                number % 20 == 0 ? u"stranger-%1"_s.arg(number) : listed[number % listed.size()]->id;
            SocketEvent event;
            event.conversationId = id;
            event.type = u"viewers"_s;
            event.agents = std::vector<ViewerAgent>{{u"dana"_s, u"Dana Whitfield"_s}};
            m_session.handle(event);
            event.agents->clear();
            m_session.handle(event);
            event.type = u"typing"_s;
            event.from = u"visitor"_s;
            event.preview = u"Hello, is any"_s;
            m_session.handle(event);
            event.from = u"agent"_s;
            event.agentId = u"dana"_s;
            m_session.handle(event);
            event.type = u"message"_s;
            event.message = makeMessage(u"live-%1"_s.arg(number), id);
            m_session.handle(event);
        }
    }

    std::vector<const Conversation*> listedConversations()
    {
        // What a search led to may have been among closed ones that have been opened meanwhile.
        if (m_session.filteredConversations().empty())
            m_session.setStatusFilter(ConversationStatus::open);
        return m_session.filteredConversations();
    }

    void openAnother()
    {
        const auto listed = listedConversations();
        ASSERT_FALSE(listed.empty());
        // A step that has no divisor in common with most lengths goes through all of the list.
        const QString id = listed[static_cast<std::size_t>(m_turn) * 37 % listed.size()]->id;
        if (m_turn % 7 == 0)
            m_session.openFromDeepLink(id);
        else
            m_session.setSelectedConversationId(id);
        await("the thread", [&] { return !m_session.messages().thread(id).empty(); });
    }

    void draft()
    {
        const bool isNote = m_turn % 8 == 0;
        MessageComposer* const open = composer()->messageComposer();
        open->setNote(isNote);
        QTest::keyClicks(&open->field(), isNote ? u"@da"_s : u"I will look into it"_s);
    }

    void send()
    {
        // Return takes a suggestion first, the second one sends.
        for (int key = 0; key < 2; ++key)
            QTest::keyClick(&composer()->messageComposer()->field(), Qt::Key_Return);
    }

    void upload()
    {
        const QPointer<ConversationComposer> open = composer();
        const QString name = m_turn % 20 == 0 ? u"picture.png"_s : u"log.bin"_s;
        open->upload(QUrl::fromLocalFile(m_directory.filePath(name)));
        // The next conversation is opened during every third upload.
        if (m_turn % 30 != 0)
            await("the upload", [&] { return !open || !open->isUploading(); });
    }

    void workOnConversation()
    {
        const QString id = m_session.selectedConversationId().value_or(QString());
        const bool isFirst = m_turn % 20 == 0;
        m_session.setShowVisitorPanel(isFirst);
        m_session.setMuted(id, isFirst);
        m_session.setNotifyMode(isFirst ? NotifyMode::mine : NotifyMode::all);
        m_session.assign(id, isFirst ? std::optional(m_session.agent()->id) : std::nullopt);
        m_session.snooze(id, currentInstant() + 20ms);
        if (isFirst)
            m_closed = id;
        m_session.setStatus(isFirst ? ConversationStatus::closed : ConversationStatus::open, m_closed);
    }

    void search()
    {
        m_session.setSearchText(m_turn % 40 == 0 ? u"warehouse"_s : u"no such words"_s);
        await("the search", [this] { return !m_session.isSearching(); });
        takeTurn();
        if (m_session.searchResults().empty())
            m_session.clearSearch();
        else
            m_session.openSearchResult(m_session.searchResults().front());
    }

    void openSheets()
    {
        static const std::pair<QString, QString> pages[] = {
            {u"Agents"_s, u"New agent"_s},
            {u"Products"_s, u"New product"_s},
            {u"Canned Responses"_s, u"New canned response"_s}};
        const auto& [page, button] = pages[m_turn / 20 % 3];
        qobject_cast<MainSplitView*>(m_window.screen())->setShowSettings(true);
        for (const QString& name : {page, button}) {
            auto* const control = shown<QAbstractButton>(m_window, name);
            ASSERT_TRUE(control) << name.toStdString();
            control->click();
            takeTurn();
        }
        closeSheets();
    }

    void closeSheets()
    {
        while (Sheet* sheet = Sheet::topmost(&m_window))
            sheet->dismiss();
    }

    void switchAppearance() { Theme::shared().setDesktopAppearance(!Theme::shared().isDark()); }

    void changeFilters()
    {
        m_session.setQueue(InboxQueue::mine);
        m_session.setStatusFilter(ConversationStatus::closed);
        refresh();
        takeTurn();
        refresh();
    }

    void refresh()
    {
        m_session.setQueue(InboxQueue::all);
        m_session.setStatusFilter(ConversationStatus::open);
        m_session.refreshConversations();
        await("the inbox", [this] { return !m_session.isLoadingList(); });
    }

    void reconnect()
    {
        for (QWebSocket* socket : Inventory::living<QWebSocket>())
            socket->abort();
        EXPECT_FALSE(m_session.socketConnected());
        await("the new channel", [this] { return m_session.socketConnected(); });
    }

    ConversationComposer* composer() const
    {
        for (auto* view : m_window.findChildren<ConversationDetailView*>()) {
            if (view->conversationId() == m_session.selectedConversationId())
                return &view->composer();
        }
        return nullptr;
    }

    /// One turn of an event loop. Not processEvents(): what deletes itself later while no loop runs, such as
    /// a sheet at the end of its movement, would stay until the test returned to none.
    static void takeTurn() { spinFor(0ms); }

    void await(const char* what, const std::function<bool()>& condition) const
    {
        EXPECT_TRUE(waitUntil(condition)) << "waited in vain for " << what << " in turn " << m_turn;
    }

    QTemporaryDir m_directory;
    DefaultsStore m_defaults;
    MemoryTokenStore m_tokens;
    NetworkSession m_network;
    Session m_session;
    RootView m_window;
    int m_messages = 0; ///< of visitors
    int m_turn = 0;
    QString m_closed; ///< the conversation that is opened again next
};

Inventory inventoryAt(const char* when)
{
    Inventory inventory = Inventory::take();
    std::printf("%s: heap %zu KiB\n", when, inventory.heapBytes / 1024);
    return inventory;
}

TEST(SoakTest, ADayLeavesNothingBehind)
{
    ChildProcess child;
    QProcess& service = child.process();
    service.start(QStringLiteral(ORVIA_DEMO_PROGRAM), {u"--quiet"_s, u"--conversations=400"_s});
    ASSERT_TRUE(service.waitForReadyRead());
    const QUrl origin(QString::fromUtf8(service.readLine()).section(u' ', -1).trimmed());

    const bool isWholeDay = qgetenv("ORVIA_SOAK") == "day";
    const int tenth = isWholeDay ? 1000 : 10;
    Inventory::watchObjects();
    // What is made once for the whole process is made by a first, short shift.
    {
        WorkingConsole console(origin);
        console.work(110);
        console.rest();
    }
    const Inventory before = inventoryAt("before the day");
    {
        WorkingConsole console(origin);
        console.work(tenth);
        console.rest();
        const Inventory morning = inventoryAt("after a tenth");
        console.work(9 * tenth);
        console.rest();
        const Inventory evening = inventoryAt("in the evening");

        EXPECT_EQ(morning.difference(evening), "");
        // The tenth of a short day is a few seconds, in which not everything that is kept has been met yet.
        const double mostGrowth = isWholeDay ? 1.05 : 1.25;
        EXPECT_LE(double(evening.heapBytes), double(morning.heapBytes) * mostGrowth);
    }
    EXPECT_EQ(before.difference(Inventory::take()), "");
}

} // namespace

} // namespace orvia::test
