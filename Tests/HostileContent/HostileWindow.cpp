#include "HostileWindow.h"

#include <QCoreApplication>
#include <QTest>

namespace orvia::test {

using namespace std::chrono_literals;

namespace {

/// Words for it do not change while a test runs.
Instant longAgo(int hours)
{
    return minutesAgo(3 * 24 * 60 + hours * 60 + 90);
}

} // namespace

HostileWindow::HostileWindow()
{
    timings.typingClear = timings.previewClear = timings.bannerDismiss = 60s;
    service.always("GET", "/v1/agent/canned",
                   [this](const ReceivedRequest&) { return answerOf(CannedResponsesResponse{{canned}}); });
    service.always("GET", "/v1/agent/conversations/c2", [this](const ReceivedRequest&) {
        return answerOf(ConversationDetailResponse{hostile, {thread}});
    });
    service.always("GET", "/v1/agent/visitors/conversations",
                   [this](const ReceivedRequest&) { return answerOf(ConversationsResponse{{{hostile}}}); });
}

HostileWindow::~HostileWindow()
{
    root.reset();
}

void HostileWindow::write(const QString& text, const QString& body)
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
    VisitorMeta& meta = hostile.visitor.meta.emplace();
    meta.url = meta.referrer = meta.userAgent = meta.ip = meta.language = meta.screen = text;
    meta.geo = VisitorGeo{text, text, text, text, text, text};
    meta.pages = {{text, text, longAgo(3)}, {text, std::nullopt, longAgo(3)}};
    meta.data = OrderedStringMap{{{text, text}, {u"link"_s, u"https://shop.example/"_s + text}}};

    const auto message = [](const QString& id, MessageSender sender, const QString& words) {
        Message made = makeMessage(id, u"c2"_s, sender, words);
        made.createdAt.reset();
        made.agentId = u"a2"_s;
        return made;
    };
    Message file = message(u"file"_s, MessageSender::visitor, body);
    file.attachment = Attachment{{}, text, text, 12, AttachmentKind::file, text};
    Message image = message(u"image"_s, MessageSender::note, body);
    image.attachment =
        Attachment{{}, text, text, 12, AttachmentKind::image, u"ftp://nowhere.example/"_s + text};
    image.mentions = QStringList{u"a1"_s};
    thread = {file,
              image,
              message(u"system"_s, MessageSender::system, body),
              message(u"above"_s, MessageSender::visitor, u"A harmless question"_s),
              message(u"between"_s, MessageSender::agent, body),
              message(u"below"_s, MessageSender::visitor, u"A harmless thank you"_s)};
}

RootView& HostileWindow::open()
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
    root->resize(size);
    root->show();
    EXPECT_TRUE(waitUntil([this] { return transcript().rowCount() > qsizetype(thread.size()); }));
    settle();
    return *root;
}

void HostileWindow::settle() const
{
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
    // Rows are gathered for a frame before they are applied.
    spinFor(40ms);
}

void HostileWindow::typeAndLook(const QString& text)
{
    SocketEvent event;
    event.conversationId = u"c2"_s;
    event.type = u"typing"_s;
    event.from = u"visitor"_s;
    event.preview = text;
    session->handle(event);
    event.from = u"agent"_s;
    event.agentId = u"a2"_s;
    event.agentName = text;
    session->handle(event);
    event.type = u"viewers"_s;
    event.agents = {{u"a2"_s, text}};
    session->handle(event);
    settle();
}

QImage HostileWindow::grab(QWidget* popup) const
{
    const QImage picture = (popup ? popup : root.get())->grab().toImage();
    if (const QString pictures = qEnvironmentVariable("ORVIA_PICTURES"); !pictures.isEmpty()) {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        QString name = QString::fromLatin1(test->name()).replace(u'/', u'-');
        EXPECT_TRUE(picture.save(pictures + u'/' + name + ".png"_L1));
    }
    return picture;
}

QImage HostileWindow::part(const QImage& picture, const QWidget& widget, const QRect& area) const
{
    return picture.copy(QRect(widget.mapTo(root.get(), area.topLeft()), area.size()));
}

} // namespace orvia::test
