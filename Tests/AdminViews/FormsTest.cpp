#include "AdminFixture.h"

#include "Views/AdminViews/AgentFormSheet.h"
#include "Views/AdminViews/CreateCannedSheet.h"
#include "Views/AdminViews/EditProductSheet.h"

#include <QLabel>

namespace orvia::test {

namespace {

class AdminForms : public AdminFixture {
protected:
    /// The product that the screen lists first, with this widget.
    void setWidget(std::optional<WidgetConfig> widget) { products.front().widget = std::move(widget); }
    template <class View>
    void create()
    {
        openCreate(show<View>());
    }
    template <class View>
    void edit()
    {
        openEdit(show<View>());
    }
    void fillNewAgent() const
    {
        fill(u"Name"_s, u" Lena "_s);
        fill(u"Email"_s, u"lena@x"_s);
        fill(u"Password"_s, u"s3cret \"x\""_s);
    }
};

WidgetConfig wholeWidget()
{
    return {u"Ask us"_s, u"#102030"_s, u"left"_s, WidgetGreeting{true, 8, u"Hello"_s}};
}

} // namespace

TEST_F(AdminForms, SendExactlyWhatTheyHold)
{
    struct Case {
        const char* name;
        std::function<void()> fillForm;
        QByteArray method;
        QByteArray path;
        QByteArray body;
    };
    const auto editProduct = [this](std::optional<WidgetConfig> widget) {
        setWidget(std::move(widget));
        edit<AdminProductsView>();
    };
    const std::vector<Case> cases = {
        {"a new agent without products",
         [&] {
             create<AdminAgentsView>();
             fillNewAgent();
         },
         "POST", "/v1/admin/agents",
         R"({"name":" Lena ","email":"lena@x","password":"s3cret \"x\"","role":"agent","productIds":[]})"},
        {"a new administrator with products",
         [&] {
             create<AdminAgentsView>();
             fillNewAgent();
             choose(u"Role"_s, 1);
             for (const QString& name : {u"Larkspur Coffee"_s, u"Halden & Cycles"_s, u"Larkspur Coffee"_s})
                 control<Switch>(name).click();
         },
         "POST", "/v1/admin/agents",
         R"({"name":" Lena ","email":"lena@x","password":"s3cret \"x\"","role":"admin","productIds":["p2"]})"},
        {"every product off, no password",
         [&] {
             edit<AdminAgentsView>();
             control<Switch>(u"Larkspur Coffee"_s).click();
         },
         "PATCH", "/v1/admin/agents/a1", R"({"productIds":[],"role":"agent"})"},
        {"a new password, and products unknown to the console",
         [&] {
             teammates.front().productIds = QStringList{u"p9"_s, u"p1"_s, u"p9"_s};
             edit<AdminAgentsView>();
             fill(u"New password (optional)"_s, u" "_s);
             choose(u"Role"_s, 1);
         },
         "PATCH", "/v1/admin/agents/a1", R"({"productIds":["p9","p1"],"role":"admin","password":" "})"},
        {"an agent without a list of products",
         [&] {
             teammates.front().productIds.reset();
             edit<AdminAgentsView>();
         },
         "PATCH", "/v1/admin/agents/a1", R"({"productIds":[],"role":"agent"})"},
        {"a new product",
         [&] {
             create<AdminProductsView>();
             fill(u"Name"_s, u"Fern & Co"_s);
             fill(u"Slug"_s, u" fern "_s);
         },
         "POST", "/v1/admin/products", R"({"name":"Fern & Co","slug":" fern "})"},
        {"a product without a widget, and no number as delay",
         [&] {
             editProduct({});
             fill(u"Delay (seconds)"_s, u"x"_s);
         },
         "PATCH", "/v1/admin/products/p1",
         R"({"name":"Larkspur Coffee","widget":{"position":"right","greeting":{"enabled":false,"delaySeconds":0}}})"},
        {"emptied texts are left out",
         [&] {
             editProduct(wholeWidget());
             for (const QString& label : {u"Header title"_s, u"Accent color"_s, u"Text"_s})
                 fill(label, {});
             fill(u"Delay (seconds)"_s, u"-3"_s);
         },
         "PATCH", "/v1/admin/products/p1",
         R"({"name":"Larkspur Coffee","widget":{"position":"left","greeting":{"enabled":true,"delaySeconds":-3}}})"},
        {"everything changed",
         [&] {
             editProduct(wholeWidget());
             fill(u"Name"_s, u"L"_s);
             fill(u"Header title"_s, u"T"_s);
             fill(u"Accent color"_s, u"red"_s);
             choose(u"Position"_s, 0);
             control<Switch>(u"Enabled"_s).click();
             fill(u"Delay (seconds)"_s, u"+12"_s);
             fill(u"Text"_s, u"G"_s);
         },
         "PATCH", "/v1/admin/products/p1",
         R"({"name":"L","widget":{"title":"T","accentColor":"red","position":"right","greeting":{"enabled":false,"delaySeconds":12,"text":"G"}}})"},
        {"what the console does not know stays as it is",
         [&] {
             editProduct(WidgetConfig{{}, {}, u"bottom"_s, WidgetGreeting{{}, {}, u"a\nb"_s}});
         },
         "PATCH", "/v1/admin/products/p1",
         R"({"name":"Larkspur Coffee","widget":{"position":"bottom","greeting":{"enabled":false,"delaySeconds":0,"text":"a\nb"}}})"},
        {"a response for every product",
         [&] {
             create<AdminCannedView>();
             fill(u"Shortcut"_s, u" hi"_s);
             fill(u"Body"_s, u"Hello "_s);
         },
         "POST", "/v1/admin/canned", R"({"shortcut":" hi","body":"Hello "})"},
        {"a response for one product",
         [&] {
             create<AdminCannedView>();
             fill(u"Shortcut"_s, u"hi"_s);
             fill(u"Body"_s, u"Hello"_s);
             choose(u"Product"_s, 2);
         },
         "POST", "/v1/admin/canned", R"({"shortcut":"hi","body":"Hello","productId":"p2"})"},
    };
    canned = {makeCanned(u"k1"_s)};
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        testCase.fillForm();
        ASSERT_TRUE(form());
        const QPointer<FormSheet> sheet = form();
        const std::size_t before = count(testCase.method, testCase.path);
        service.answer(testCase.method, testCase.path, accepted());
        sheet->confirmButton()->click();
        EXPECT_TRUE(waitUntil([&] { return !sheet || !sheet->isOpen(); }));
        const auto sent = service.requests(testCase.method, testCase.path);
        ASSERT_EQ(sent.size(), before + 1);
        EXPECT_EQ(sent.back().body, testCase.body);
        EXPECT_EQ(session->banner(), std::nullopt);
    }
}

TEST_F(AdminForms, AreNotSentWhileSomethingIsMissing)
{
    canned = {makeCanned(u"k1"_s)};
    const auto expectEachNeeded = [this](const QStringList& labels) {
        FormSheet& sheet = *form();
        for (const QString& label : labels) {
            EXPECT_FALSE(sheet.isValid()) << label.toStdString();
            EXPECT_FALSE(sheet.confirmButton()->isEnabled()) << label.toStdString();
            QTest::keyClick(&field(label), Qt::Key_Return);
            // White space is a text like any other.
            fill(label, u" "_s);
        }
        EXPECT_TRUE(sheet.confirmButton()->isEnabled());
        for (const QString& label : labels) {
            fill(label, {});
            EXPECT_FALSE(sheet.confirmButton()->isEnabled()) << label.toStdString();
            fill(label, u"x"_s);
        }
        EXPECT_TRUE(sheet.isValid());
        EXPECT_FALSE(sheet.isWorking());
    };
    create<AdminAgentsView>();
    expectEachNeeded({u"Name"_s, u"Email"_s, u"Password"_s});
    create<AdminProductsView>();
    expectEachNeeded({u"Name"_s, u"Slug"_s});
    create<AdminCannedView>();
    expectEachNeeded({u"Shortcut"_s, u"Body"_s});
    edit<AdminAgentsView>();
    EXPECT_TRUE(form()->confirmButton()->isEnabled());
    edit<AdminProductsView>();
    EXPECT_TRUE(form()->confirmButton()->isEnabled());
    fill(u"Name"_s, {});
    EXPECT_FALSE(form()->confirmButton()->isEnabled());
}

TEST_F(AdminForms, AProductIsFilledInWithWhatItHas)
{
    const QString longText = QString(40000, u'x') + u"\nend"_s;
    struct Case {
        std::optional<WidgetConfig> widget;
        QStringList texts; ///< title, accent colour, position, delay, greeting
        bool enabled;
    };
    const std::vector<Case> cases = {
        {{}, {u""_s, u""_s, u"Right"_s, u"0"_s, u""_s}, false},
        {WidgetConfig{}, {u""_s, u""_s, u"Right"_s, u"0"_s, u""_s}, false},
        {WidgetConfig{u"T"_s, {}, {}, WidgetGreeting{}}, {u"T"_s, u""_s, u"Right"_s, u"0"_s, u""_s}, false},
        {wholeWidget(), {u"Ask us"_s, u"#102030"_s, u"Left"_s, u"8"_s, u"Hello"_s}, true},
        {WidgetConfig{{}, {}, u"bottom"_s, WidgetGreeting{false, -9223372036854775807LL - 1, longText}},
         {u""_s, u""_s, u""_s, u"-9223372036854775808"_s, longText},
         false},
    };
    for (const auto& [widget, texts, enabled] : cases) {
        SCOPED_TRACE(texts.join(u'|').left(80).toStdString());
        setWidget(widget);
        edit<AdminProductsView>();
        EXPECT_EQ(field(u"Name"_s).text(), u"Larkspur Coffee"_s);
        EXPECT_EQ((QStringList{field(u"Header title"_s).text(), field(u"Accent color"_s).text(),
                               control<Picker>(u"Position"_s).currentText(),
                               field(u"Delay (seconds)"_s).text(), field(u"Text"_s).text()}),
                  texts);
        EXPECT_EQ(control<Switch>(u"Enabled"_s).isChecked(), enabled);
        EXPECT_EQ(field(u"Text"_s).cursorPosition(), 0);
    }
    EXPECT_EQ(field(u"Header title"_s).placeholderText(), u"Chat"_s);
    EXPECT_EQ(field(u"Accent color"_s).placeholderText(), u"#c2410c"_s);
}

TEST_F(AdminForms, AnAgentIsFilledInAndItsIdentityCannotBeChanged)
{
    teammates.front().role = AgentRole::admin;
    edit<AdminAgentsView>();
    EXPECT_EQ(form()->title(), u"Edit Agent"_s);
    EXPECT_EQ(control<Picker>(u"Role"_s).currentText(), u"Admin"_s);
    EXPECT_TRUE(control<Switch>(u"Larkspur Coffee"_s).isChecked());
    EXPECT_FALSE(control<Switch>(u"Halden & Cycles"_s).isChecked());
    EXPECT_EQ(form()->findChildren<TextField*>().size(), 1);
    TextField& password = field(u"New password (optional)"_s);
    EXPECT_TRUE(password.text().isEmpty());
    EXPECT_EQ(password.echoMode(), QLineEdit::Password);
    EXPECT_EQ(control<QLabel>(u"Name"_s).text(), u"Mara Ellison"_s);
    EXPECT_EQ(control<QLabel>(u"Email"_s).text(), u"a1@orvia.example"_s);
}

TEST_F(AdminForms, AFailureLeavesTheFormWithItsInput)
{
    auto& page = show<AdminAgentsView>();
    const QPointer<FormSheet> sheet = &openCreate(page);
    fillNewAgent();
    Button* confirm = sheet->confirmButton();
    confirm->setFocus(Qt::TabFocusReason);
    const std::size_t loads = count("GET", agentsPath);
    const auto held = service.hold("POST", agentsPath);
    QTest::keyClick(confirm, Qt::Key_Return);
    EXPECT_TRUE(sheet->isWorking());
    EXPECT_FALSE(confirm->isEnabled());
    // Neither a second click, nor Return elsewhere, nor a change of the input sends it again.
    confirm->click();
    QTest::keyClick(&field(u"Name"_s), Qt::Key_Return);
    field(u"Email"_s).setText(u"other@x"_s);
    EXPECT_FALSE(confirm->isEnabled());
    static_cast<AgentFormSheet&>(*sheet).save();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    held->answer(refusal(409, "email already in use"));
    ASSERT_TRUE(waitUntil([&] { return !sheet->isWorking(); }));
    EXPECT_EQ(session->banner(), u"email already in use"_s);
    EXPECT_TRUE(sheet->isOpen());
    EXPECT_TRUE(page.showCreate());
    EXPECT_TRUE(confirm->isEnabled());
    EXPECT_FALSE(confirm->isBusy());
    EXPECT_TRUE(confirm->hasFocus()) << "it had the focus before it was disabled";
    EXPECT_EQ(field(u"Password"_s).text(), u"s3cret \"x\""_s);
    EXPECT_EQ(count("POST", agentsPath), 1u);
    EXPECT_EQ(count("GET", agentsPath), loads);

    // The focus that the agent moved meanwhile stays where it is.
    const auto again = service.hold("POST", agentsPath);
    QTest::keyClick(confirm, Qt::Key_Return);
    field(u"Email"_s).setFocus(Qt::TabFocusReason);
    again->answer(refusal(500, "no"));
    ASSERT_TRUE(waitUntil([&] { return !sheet->isWorking(); }));
    EXPECT_TRUE(field(u"Email"_s).hasFocus());
}

TEST_F(AdminForms, CloseOnceTheListHasBeenLoadedAnew)
{
    auto& page = show<AdminProductsView>();
    const QPointer<FormSheet> sheet = &openEdit(page, 1);
    EXPECT_EQ(page.editingProduct(), products[1]);
    service.answer("PATCH", "/v1/admin/products/p2", accepted());
    const auto held = service.hold("GET", productsPath);
    sheet->confirmButton()->click();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    settle();
    EXPECT_TRUE(sheet && sheet->isOpen());
    EXPECT_TRUE(sheet->isWorking());
    products[1].name = u"Renamed"_s;
    held->answer(answerOf(ProductsResponse{{products}}));
    ASSERT_TRUE(waitUntil([&] { return !sheet; }));
    EXPECT_EQ(page.records()[1].name, u"Renamed"_s);
    EXPECT_EQ(page.editingProduct(), std::nullopt);
    EXPECT_TRUE(page.list()->hasFocus());

    // Cancelling sends nothing.
    const QPointer<FormSheet> other = &openEdit(page);
    other->dismissButton()->click();
    EXPECT_EQ(page.editingProduct(), std::nullopt);
    EXPECT_EQ(count("PATCH", "/v1/admin/products/p1"), 0u);
}

TEST_F(AdminForms, SurviveWhatGoesAwayWhileTheySend)
{
    enum class Gone { theSheet, thePage, theWindow, theSession };
    for (const Gone gone : {Gone::theSheet, Gone::thePage, Gone::theWindow, Gone::theSession}) {
        for (const bool succeeds : {true, false}) {
            SCOPED_TRACE(static_cast<int>(gone) * 2 + succeeds);
            auto& page = show<AdminAgentsView>();
            session->showBanner({});
            const QPointer<FormSheet> sheet = &openEdit(page);
            const auto held = service.hold("PATCH", "/v1/admin/agents/a1");
            sheet->confirmButton()->click();
            ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
            const std::size_t loads = count("GET", agentsPath);
            if (gone == Gone::theSheet) {
                sheet->dismiss();
                ASSERT_TRUE(waitUntil([&] { return !sheet; }));
            } else if (gone == Gone::thePage) {
                settings->popPage();
            } else if (gone == Gone::theWindow) {
                window.reset();
            } else {
                session.reset();
            }
            held->answer(succeeds ? accepted() : refusal(400, "refused"));
            // Whoever is left hears of the end.
            EXPECT_TRUE(waitUntil([&] {
                if (!succeeds)
                    return !session || session->banner() == u"refused"_s;
                const bool reloads = gone == Gone::theSheet;
                return count("GET", agentsPath) == loads + (reloads ? 1 : 0)
                       && (!sheet || !sheet->isWorking());
            }));
            settle();
            window.reset();
        }
    }
}

} // namespace orvia::test
