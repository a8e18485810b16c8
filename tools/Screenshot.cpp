#include "APIClient/NetworkSession.h"
#include "AppConfig.h"
#include "Keychain/TokenStore.h"
#include "Platform/ParallelWork.h"
#include "Scenes.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "Theme/Theme.h"
#include "Views/RootView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCommandLineParser>
#include <QLineEdit>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <map>

/// Signs in to the service of the configuration, opens a conversation and saves the window as it is painted
/// when nothing moves any more. Keeps its token in memory, so that the user's own is neither used nor
/// changed.
namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int usageError = 2;

class MemoryTokenStore : public TokenStore {
public:
    std::optional<QString> string(const QString& key) override
    {
        const auto found = m_values.find(key);
        return found == m_values.end() ? std::nullopt : std::optional(found->second);
    }

    bool set(const std::optional<QString>& value, const QString& key) override
    {
        if (value)
            m_values[key] = *value;
        else
            m_values.erase(key);
        return true;
    }

private:
    std::map<QString, QString> m_values;
};

struct Request {
    QString email;
    QString password;
    QString conversationId; ///< empty opens the first one listed
    bool showVisitorPanel = false;
    bool dark = false;
    QSize size;
    QString scene;
    QString file;
};

/// Walks the steps; each is tried again and again until it answers that it is done.
class Photographer : public QObject {
public:
    Photographer(QWidget& window, Session& session, Request request)
        : m_window(window)
        , m_session(session)
        , m_request(std::move(request))
        , m_scene(m_request.scene, window, session)
        , m_steps{{"the sign-in screen", &Photographer::fillFields},
                  {"the button Sign In", &Photographer::pressSignIn},
                  {"the inbox", &Photographer::openConversation},
                  {"the thread", &Photographer::threadIsThere},
                  {"the scene", &Photographer::sceneIsSet},
                  {"a picture that stays as it is", &Photographer::save}}
    {
        constexpr std::chrono::milliseconds interval(200);
        constexpr std::chrono::seconds patience(90);
        m_poll.callOnTimeout(this, &Photographer::advance);
        m_poll.start(interval);
        m_deadline.setSingleShot(true);
        m_deadline.callOnTimeout(this, [this] { giveUp(); });
        m_deadline.start(patience);
    }

private:
    struct Step {
        const char* waitsFor;
        bool (Photographer::*perform)();
    };

    void advance()
    {
        if (!(this->*m_steps[m_step].perform)())
            return;
        if (++m_step == m_steps.size()) {
            m_poll.stop();
            QApplication::exit(EXIT_SUCCESS);
        }
    }

    void giveUp() const
    {
        QTextStream(stderr) << "orvia-screenshot: waited in vain for " << m_steps[m_step].waitsFor << ". "
                            << m_session.banner().value_or(QString()) << Qt::endl;
        QApplication::exit(EXIT_FAILURE);
    }

    template <class Widget>
    Widget* visibleWidget(const QString& name) const
    {
        for (auto* widget : m_window.findChildren<Widget*>()) {
            bool isNamed = widget->accessibleName() == name;
            if constexpr (std::derived_from<Widget, QAbstractButton>)
                isNamed = isNamed || widget->text() == name;
            if (isNamed && widget->isVisible() && widget->isEnabled())
                return widget;
        }
        return nullptr;
    }

    bool fillFields()
    {
        auto* const email = visibleWidget<QLineEdit>(u"Email"_s);
        auto* const password = visibleWidget<QLineEdit>(u"Password"_s);
        if (!email || !password)
            return false;
        QTest::keyClicks(email, m_request.email);
        QTest::keyClicks(password, m_request.password);
        return true;
    }

    bool pressSignIn()
    {
        auto* const button = visibleWidget<QAbstractButton>(u"Sign In"_s);
        if (!button)
            return false;
        button->click();
        return true;
    }

    bool openConversation()
    {
        if (m_session.isLoadingList())
            return false;
        const auto listed = m_session.filteredConversations();
        if (listed.empty())
            return false;
        const QString id = m_request.conversationId.isEmpty() ? listed.front()->id : m_request.conversationId;
        m_session.setShowVisitorPanel(m_request.showVisitorPanel);
        m_session.setSelectedConversationId(id);
        return true;
    }

    bool threadIsThere()
    {
        const auto& id = m_session.selectedConversationId();
        return id && !m_session.messages().thread(*id).empty();
    }

    bool sceneIsSet() { return m_scene.advance(); }

    /// The window with the menu that is open over it.
    QImage currentLook() const
    {
        QPixmap look = m_window.grab();
        if (QWidget* const popup = QApplication::activePopupWidget()) {
            QPainter painter(&look);
            painter.drawPixmap(m_window.mapFromGlobal(popup->mapToGlobal(QPoint(0, 0))), popup->grab());
        }
        return look.toImage();
    }

    /// Pictures that load and marks that fade change the window; it is done when several looks are alike.
    bool save()
    {
        constexpr int enoughLooks = 5;
        const QImage look = currentLook();
        m_equalLooks = look == m_lastLook ? m_equalLooks + 1 : 0;
        m_lastLook = look;
        if (m_equalLooks < enoughLooks)
            return false;
        if (!look.save(m_request.file)) {
            QTextStream(stderr) << "orvia-screenshot: cannot write " << m_request.file << Qt::endl;
            QApplication::exit(EXIT_FAILURE);
            m_poll.stop();
            return false;
        }
        return true;
    }

    QWidget& m_window;
    Session& m_session;
    const Request m_request;
    Scene m_scene;
    const std::vector<Step> m_steps;
    std::size_t m_step = 0;
    QImage m_lastLook;
    int m_equalLooks = 0;
    QTimer m_poll;
    QTimer m_deadline;
};

int takeScreenshot(QApplication& application, Request request)
{
    const QTemporaryDir directory;
    MemoryTokenStore tokens;
    DefaultsStore defaults(directory.filePath(u"defaults.ini"_s));
    NetworkSession network;
    Session session({defaults, tokens, network, AppConfig::apiBaseURL()});
    // A blinking text cursor would keep the picture from settling.
    QApplication::setCursorFlashTime(0);
    const ParallelWork typefaces(Typefaces::search);
    Theme::setTypefaces(typefaces.result());
    Theme::shared().apply(application);
    Theme::shared().setDesktopAppearance(request.dark);
    RootView window(session);
    window.resize(request.size);
    window.show();
    const Photographer photographer(window, session, std::move(request));
    return QApplication::exec();
}

} // namespace

} // namespace orvia

int main(int argc, char** argv)
{
    using namespace Qt::StringLiterals;
    QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption config(u"config"_s, u"Where the service is."_s, u"file"_s);
    const QCommandLineOption email(u"email"_s, u"Sign in as this agent."_s, u"address"_s);
    const QCommandLineOption password(u"password"_s, u"A demo account's password."_s, u"text"_s);
    const QCommandLineOption conversation(u"conversation"_s, u"Open this one."_s, u"id"_s);
    const QCommandLineOption panel(u"visitor-panel"_s, u"Show the visitor panel."_s);
    const QCommandLineOption dark(u"dark"_s, u"Paint the dark appearance."_s);
    const QCommandLineOption size(u"size"_s, u"Size of the window."_s, u"WIDTHxHEIGHT"_s, u"1080x700"_s);
    parser.addHelpOption();
    const QCommandLineOption scene(
        u"scene"_s, u"What to show: "_s + orvia::Scene::names().join(u", "_s) + u'.', u"name"_s, u"main"_s);
    parser.addOptions({config, email, password, conversation, panel, dark, size, scene});
    parser.addPositionalArgument(u"file"_s, u"The picture to write."_s);
    parser.process(application);
    const QStringList lengths = parser.value(size).split(u'x');
    const QSize windowSize(lengths.value(0).toInt(), lengths.value(1).toInt());
    if (parser.positionalArguments().size() != 1 || windowSize.isEmpty()
        || !orvia::Scene::names().contains(parser.value(scene)))
        parser.showHelp(orvia::usageError);
    if (parser.isSet(config))
        orvia::AppConfig::setConfigurationFile(parser.value(config));
    return orvia::takeScreenshot(application, {.email = parser.value(email),
                                               .password = parser.value(password),
                                               .conversationId = parser.value(conversation),
                                               .showVisitorPanel = parser.isSet(panel),
                                               .dark = parser.isSet(dark),
                                               .size = windowSize,
                                               .scene = parser.value(scene),
                                               .file = parser.positionalArguments().constFirst()});
}
