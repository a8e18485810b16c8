#include "Session/SessionFixture.h"
#include "Views/BannerView.h"
#include "Views/ConversationDetailView/ConversationActions.h"
#include "Views/ConversationDetailView/ConversationComposer.h"
#include "Views/ConversationDetailView/ConversationDetailView.h"
#include "Views/RootView.h"
#include "Views/Widgets/VirtualListView.h"

#include <QCoreApplication>
#include <QLabel>
#include <QScreen>
#include <QScrollBar>

#include <map>

namespace orvia::test {
namespace {

using namespace std::chrono_literals;

/// Words for it do not change while a test runs.
Instant longAgo(int hours)
{
    return minutesAgo(3 * 24 * 60 + hours * 60 + 90);
}

/// The whole console in a window, over a service in which somebody wrote the same text into every field that
/// anybody can write. The conversation that it belongs to, "c2", is open; in the inbox and in its thread it
/// stands between harmless neighbours.
class HostileWindow : public SessionFixture {
protected:
    HostileWindow()
    {
        timings.typingClear = timings.previewClear = timings.bannerDismiss = 60s;
        service.always("GET", "/v1/agent/canned", [this](const ReceivedRequest&) {
            return answerOf(CannedResponsesResponse{{canned}});
        });
        service.always("GET", "/v1/agent/conversations/c2", [this](const ReceivedRequest&) {
            return answerOf(ConversationDetailResponse{hostile, {thread}});
        });
        service.always("GET", "/v1/agent/visitors/conversations", [this](const ReceivedRequest&) {
            return answerOf(ConversationsResponse{{{hostile}}});
        });
    }
    ~HostileWindow() override { root.reset(); }

    /// Writes @p text into every field; @p body is the text of the messages.
    void write(const QString& text, const QString& body)
    {
        self.name = self.email = text;
        products[0].name = products[0].slug = text;
        teammates = {self, makeAgent(u"a2"_s, text), makeAgent(u"a3"_s, text)};
        canned = {{.id = u"r1"_s, .productId = {}, .shortcut = text, .body = body, .createdAt = {}}};
        hostile.visitor.name = hostile.visitor.email = text;
        hostile.assigneeId = u"a2"_s;
        hostile.lastMessagePreview = text;
        hostile.rating = Rating{5, text};
        hostile.lastMessageAt = longAgo(2);
        VisitorMeta meta;
        meta.url = meta.referrer = meta.userAgent = meta.ip = meta.language = meta.screen = text;
        meta.geo = VisitorGeo{text, text, text, text, text, text};
        meta.pages = {{text, text, longAgo(3)}, {text, std::nullopt, longAgo(3)}};
        meta.data = OrderedStringMap{{{text, text}, {u"link"_s, u"https://shop.example/"_s + text}}};
        hostile.visitor.meta = meta;

        thread.clear();
        const auto add = [this](MessageSender sender, const QString& words) -> Message& {
            Message& made = thread.emplace_back(
                makeMessage(u"m"_s + QString::number(thread.size()), u"c2"_s, sender, words));
            made.createdAt.reset();
            made.agentId = u"a2"_s;
            return made;
        };
        add(MessageSender::visitor, body).attachment =
            Attachment{{}, text, text, 12, AttachmentKind::file, text};
        Message& image = add(MessageSender::note, body);
        image.attachment =
            Attachment{{}, text, text, 12, AttachmentKind::image, u"ftp://nowhere.example/"_s + text};
        image.mentions = QStringList{u"a1"_s};
        add(MessageSender::system, body);
        add(MessageSender::visitor, u"A harmless question"_s);
        add(MessageSender::agent, body);
        add(MessageSender::visitor, u"A harmless thank you"_s);
    }

    /// Signs in anew and opens the conversation with the visitor's panel.
    void open()
    {
        root.reset();
        Conversation first = makeConversation(u"c1"_s);
        Conversation last = makeConversation(u"c3"_s);
        first.productId = last.productId = u"other"_s;
        first.lastMessageAt = longAgo(1);
        last.lastMessageAt = longAgo(3);
        scriptInbox({first, hostile, last});
        signIn();
        session->setShowVisitorPanel(true);
        session->setSelectedConversationId(u"c2"_s);
        root = std::make_unique<RootView>(*session);
        root->resize(1280, 760);
        root->show();
        EXPECT_TRUE(waitUntil([this] { return transcript().rowCount() > qsizetype(thread.size()); }));
        settle();
    }

    /// The visitor and a teammate named @p text type it, and the teammate looks on.
    void typeAndLook(const QString& text)
    {
        deliverTyping(u"c2"_s, text);
        SocketEvent event;
        event.conversationId = u"c2"_s;
        event.type = u"typing"_s;
        event.preview = text;
        event.from = u"agent"_s;
        event.agentId = u"a2"_s;
        event.agentName = text;
        session->handle(event);
        deliverViewers(u"c2"_s, {text});
        settle();
    }

    static void settle()
    {
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
        // Rows are gathered for a frame before they are applied.
        spinFor(40ms);
    }

    template <class Widget>
    Widget& only() const
    {
        return *root->findChild<Widget*>();
    }
    TranscriptView& transcript() const { return only<ConversationDetailView>().transcript(); }
    qsizetype widgetCount() const { return root->findChildren<QWidget*>().size(); }

    Conversation hostile = makeConversation(u"c2"_s);
    std::vector<Message> thread;
    std::vector<CannedResponse> canned;
    std::unique_ptr<RootView> root;
};

struct Attack {
    const char* name;
    QString text;      ///< in names, titles, addresses and all other fields
    QString body = {}; ///< of the messages, where it is another one

    friend void PrintTo(const Attack& attack, std::ostream* stream) { *stream << attack.name; }
};

/// Every control character, each in front of a letter.
QString controlCharacters()
{
    QString text;
    for (char16_t code = 0; code < 0xA0; code = code == 0x1F ? 0x7F : code + 1)
        text += QString(QChar(code)) + u'x';
    return text;
}

std::vector<Attack> attacks()
{
    const QString piled = u"Z"_s + QString(300, u'\u0301') + u"a"_s + QString(300, u'\u0323') + u"lgo"_s;
    return {
        {"Markup", u"<!DOCTYPE html><b>bold</b> <img src='http://127.0.0.1:1/pixel.png'> &amp; &lt;i&gt; "
                   "<a href='javascript:alert(1)'>link</a><script>alert(1)</script><h1>large</h1>"_s},
        {"Placeholders", u"%1 %2 %L3 %n {0} $(HOME) & && _x [*] \t tab"_s},
        {"ControlCharacters", controlCharacters()},
        {"Overrides", u"photo\u202Egnp.exe \u202Bx \u2067y \u2066z שלום"_s},
        {"PiledMarks", piled.repeated(20), piled},
        {"ZeroWidth", QString(100'000, u'\u200B') + u"name"_s},
        {"OneWord", QString(100'000, u'W'), QString(1'000'000, u'W')},
        {"Words", u"Helen Brandt "_s.repeated(8'000), u"Helen Brandt "_s.repeated(80'000)},
        {"Lines", u"x\ny\u2028z\u2029"_s.repeated(20'000), u"x\ny\u2028z\u2029"_s.repeated(200'000)},
        {"Emoji",
         u"👩🏽‍🚀👨‍👩‍👧‍👦🇩🇪🏴\U000E0067\U000E0062\U000E007F"_s.repeated(
             2'000)},
        {"Unpaired", QString(QChar(0xDC00)) + u"half"_s + QString(QChar(0xD83D))},
        {"Nothing", u"\u3164\u200B"_s},
    };
}

class HostileText : public HostileWindow, public testing::WithParamInterface<Attack> {
protected:
    /// What must look the same whatever the text is, by name.
    using Look = std::map<QString, QImage>;

    Look look() const
    {
        const QImage picture = root->grab().toImage();
        Look neighbours;
        const auto keep = [&](const QString& name, const QWidget& widget, const QRect& area) {
            const QRect place(widget.mapTo(root.get(), area.topLeft()), area.size());
            neighbours.emplace(name, picture.copy(place));
        };
        for (const VirtualListView* list : root->findChildren<VirtualListView*>()) {
            if (list->accessibleName() == "Conversations"_L1) {
                for (const int row : {0, 2})
                    keep(u"conversation %1"_s.arg(row), *list->viewport(),
                         list->visualRect(list->model()->index(row, 0)));
            } else if (list->accessibleName() != "Products"_L1) {
                keep(list->accessibleName(), *list, list->rect());
            }
        }
        const auto& composer = only<ConversationComposer>();
        keep(u"composer"_s, composer, composer.rect());
        // The message below, and the one above if the one between them leaves it in sight.
        for (const qsizetype row : {5, 3}) {
            // What scrolls shows its scroll bar for a while.
            const QRect area = transcript().rowRect(row).adjusted(0, 0, -16, 0);
            if (transcript().viewport()->rect().contains(area))
                keep(transcript().row(row).id, *transcript().viewport(), area);
        }
        return neighbours;
    }

    /// The names of the neighbours that show in both, but not alike.
    static std::string differences(const Look& one, const Look& other)
    {
        QStringList names;
        for (const auto& [name, picture] : one) {
            const auto there = other.find(name);
            if (there != other.end() && there->second != picture)
                names.append(name);
        }
        return names.join(u", "_s).toStdString();
    }

    /// Nothing is read as markup, nothing that is shown is longer than its place can be.
    void expectPlainBoundedTexts() const
    {
        for (const QLabel* label : root->findChildren<QLabel*>())
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
                << label->text().left(40).toStdString();
        for (const QWidget* widget : root->findChildren<QWidget*>()) {
            EXPECT_LE(widget->toolTip().size(), 700);
            const bool isShown = widget->isVisible() && !widget->isWindow();
            EXPECT_LE(isShown ? widget->width() : 0, root->width()) << widget->metaObject()->className();
        }
        EXPECT_LE(root->windowTitle().size(), 220);
    }

    void expectBoundedMessages() const
    {
        EXPECT_EQ(transcript().rowCount(), qsizetype(thread.size()) + 3);
        for (qsizetype row = 0; row < transcript().rowCount(); ++row) {
            transcript().setCurrent({row, TranscriptView::Part::body});
            QCoreApplication::processEvents();
            const RowLayout* layout = transcript().rowLayout(row);
            ASSERT_TRUE(layout);
            EXPECT_LT(layout->height(), 1'200 * 20 + 200) << row;
            EXPECT_FALSE(transcript().viewport()->grab().isNull());
        }
    }

    void expectOneLineOfBanner(const QString& text)
    {
        session->showBanner(u"harmless"_s);
        settle();
        const int height = root->banner()->panelInParent().height();
        session->showBanner(text);
        settle();
        EXPECT_EQ(root->banner()->panelInParent().height(), height);
        EXPECT_LE(root->banner()->panelInParent().width(), 560);
        EXPECT_EQ(root->banner()->text(), text) << "whole for those who listen";
        root->grab();
    }

    void expectLiteralMenu() const
    {
        auto& menu = only<ConversationActionsMenu>();
        menu.populate();
        EXPECT_LE(menu.sizeHint().width(), 1'000);
        EXPECT_LE(menu.sizeHint().height(), 16 * 28);
        for (const QAction* action : menu.actions()) {
            QString text = action->text();
            EXPECT_FALSE(text.contains(u'\t')) << "would be the name of a key";
            EXPECT_FALSE(text.remove("&&"_L1).contains(u'&')) << "would underline a letter";
        }
    }
};

TEST_P(HostileText, StaysInItsPlace)
{
    write(u"Helen Brandt"_s, u"A question"_s);
    open();
    const QScrollBar& bar = *transcript().verticalScrollBar();
    EXPECT_TRUE(waitUntil([&] { return bar.value() == bar.maximum(); }));
    const Look harmless = look();
    ASSERT_GE(harmless.size(), 6U);
    const qsizetype widgets = widgetCount();
    const QSize least = root->minimumSizeHint();

    const Attack& attack = GetParam();
    write(attack.text, attack.body.isEmpty() ? attack.text : attack.body);
    open();
    EXPECT_LE(widgetCount(), widgets + 8) << "a section more, never a widget per line";
    EXPECT_EQ(root->minimumSizeHint(), least);
    EXPECT_EQ(root->size(), QSize(1280, 760));
    // What still scrolls comes to rest.
    EXPECT_TRUE(waitUntil([&] { return differences(look(), harmless).empty(); }))
        << differences(look(), harmless) << " looks different";

    expectPlainBoundedTexts();
    typeAndLook(attack.text);
    expectBoundedMessages();
    expectLiteralMenu();
    expectOneLineOfBanner(attack.text);
}

INSTANTIATE_TEST_SUITE_P(All, HostileText, testing::ValuesIn(attacks()),
                         [](const auto& attack) { return std::string(attack.param.name); });

TEST_F(HostileWindow, ShowsCrowdsWithoutAWidgetEach)
{
    constexpr int crowd = 10'000;
    write(u"Helen Brandt"_s, u"A question"_s);
    open();
    const qsizetype widgets = widgetCount();
    for (int i = 0; i < crowd; ++i) {
        products.push_back(products[0]);
        products.back().id = u"p%1"_s.arg(i + 2);
        teammates.push_back(makeAgent(u"t%1"_s.arg(i), u"Teammate %1"_s.arg(i)));
        canned.push_back(canned[0]);
        canned.back().shortcut = u"answer%1"_s.arg(i);
    }
    open();
    EXPECT_EQ(session->products().size(), crowd + 1U);
    EXPECT_EQ(widgetCount(), widgets);

    // A hundred thousand viewers are one line, a hundred thousand conversations one list.
    QStringList names;
    for (int i = 0; i < 10 * crowd; ++i) {
        names.append(u"Teammate %1"_s.arg(i));
        deliver(makeConversation(u"n%1"_s.arg(i)));
    }
    deliverViewers(u"c2"_s, names);
    settle();
    EXPECT_FALSE(root->grab().isNull());
    EXPECT_LE(widgetCount(), widgets + 4) << "the line of who is looking";

    // Every teammate can be assigned; the menu scrolls and stays on the screen.
    auto& menu = only<ConversationActionsMenu>();
    menu.populate();
    EXPECT_GT(menu.actions().size(), crowd);
    menu.popup(QPoint(0, 0));
    settle();
    EXPECT_LE(menu.height(), menu.screen()->geometry().height());
    EXPECT_LE(menu.width(), 400);
    menu.close();
}

} // namespace
} // namespace orvia::test
