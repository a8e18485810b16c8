#include "AdminFixture.h"

#include <limits>

namespace orvia::test {

namespace {

class AdminForms : public AdminFixture {
protected:
    void editProduct(std::optional<WidgetConfig> widget)
    {
        products.front().widget = std::move(widget);
        openEdit(show<AdminProductsView>());
    }
    /// Confirms the form, which sends this and closes.
    void expectSent(const QByteArray& method, const QByteArray& path, const QByteArray& body)
    {
        const QPointer<FormSheet> sheet = form();
        const std::size_t before = count(method, path);
        service.answer(method, path, accepted());
        sheet->confirmButton()->click();
        EXPECT_TRUE(waitUntil([&] { return !sheet || !sheet->isOpen(); }));
        const auto sent = service.requests(method, path);
        ASSERT_EQ(sent.size(), before + 1);
        EXPECT_EQ(sent.back().body, body);
    }
    void fillNewAgent() const
    {
        fill(u"Name"_s, u" Lena "_s);
        fill(u"Email"_s, u"lena@x"_s);
        fill(u"Password"_s, u"s3cret \"x\""_s);
    }
};

} // namespace

TEST_F(AdminForms, SendExactlyWhatTheyHold)
{
    openCreate(show<AdminAgentsView>());
    fillNewAgent();
    choose(u"Role"_s, 1);
    for (const QString& name : {u"Larkspur Coffee"_s, u"Halden & Cycles"_s, u"Larkspur Coffee"_s})
        control<Switch>(name).click();
    expectSent(
        "POST", agentsPath,
        R"({"name":" Lena ","email":"lena@x","password":"s3cret \"x\"","role":"admin","productIds":["p2"]})");

    teammates.front().role = AgentRole::admin;
    openEdit(show<AdminAgentsView>());
    control<Switch>(u"Larkspur Coffee"_s).click();
    expectSent("PATCH", "/v1/admin/agents/a1", R"({"productIds":[],"role":"admin"})");

    // Products that the console does not know stay.
    teammates.front().productIds = QStringList{u"p9"_s, u"p1"_s, u"p9"_s};
    openEdit(show<AdminAgentsView>());
    fill(u"New password (optional)"_s, u" "_s);
    choose(u"Role"_s, 0);
    expectSent("PATCH", "/v1/admin/agents/a1", R"({"productIds":["p9","p1"],"role":"agent","password":" "})");

    openCreate(show<AdminProductsView>());
    fill(u"Name"_s, u"Fern & Co"_s);
    fill(u"Slug"_s, u" fern "_s);
    expectSent("POST", productsPath, R"({"name":"Fern & Co","slug":" fern "})");

    editProduct({});
    expectSent(
        "PATCH", "/v1/admin/products/p1",
        R"({"name":"Larkspur Coffee","widget":{"position":"right","greeting":{"enabled":false,"delaySeconds":0}}})");

    // Emptied texts are left out; a position that cannot be chosen and a long text stay as they are.
    const QString longText = QString(40'000, u'x') + u"\nend"_s;
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    editProduct(WidgetConfig{u"Ask us"_s, u"#102030"_s, u"bottom"_s, WidgetGreeting{true, least, longText}});
    fill(u"Header title"_s, {});
    fill(u"Accent color"_s, {});
    expectSent(
        "PATCH", "/v1/admin/products/p1",
        R"({"name":"Larkspur Coffee","widget":{"position":"bottom","greeting":{"enabled":true,"delaySeconds":-9223372036854775808,"text":")"
            + QByteArray(40'000, 'x') + R"(\nend"}}})");

    editProduct(WidgetConfig{u"Ask us"_s, u"#102030"_s, u"left"_s, WidgetGreeting{true, 8, u"Hello"_s}});
    fill(u"Name"_s, u"L"_s);
    fill(u"Header title"_s, u"T"_s);
    fill(u"Accent color"_s, u"red"_s);
    choose(u"Position"_s, 0);
    control<Switch>(u"Enabled"_s).click();
    fill(u"Delay (seconds)"_s, u"+12"_s);
    fill(u"Text"_s, u"G"_s);
    expectSent(
        "PATCH", "/v1/admin/products/p1",
        R"({"name":"L","widget":{"title":"T","accentColor":"red","position":"right","greeting":{"enabled":false,"delaySeconds":12,"text":"G"}}})");

    // A response for every product, and one for the second product.
    for (const auto& [row, member] : {std::pair(0, ""), std::pair(2, R"(,"productId":"p2")")}) {
        openCreate(show<AdminCannedView>());
        fill(u"Shortcut"_s, u" hi"_s);
        fill(u"Body"_s, u"Hello "_s);
        choose(u"Product"_s, row);
        expectSent("POST", cannedPath, R"({"shortcut":" hi","body":"Hello ")"_ba + member + '}');
    }
}

TEST_F(AdminForms, AreNotSentWhileSomethingIsMissing)
{
    const auto expectEachNeeded = [this](const QStringList& labels) {
        for (const QString& missing : labels) {
            // White space is a text like any other.
            for (const QString& label : labels)
                fill(label, label == missing ? QString() : u" "_s);
            EXPECT_FALSE(form()->confirmButton()->isEnabled()) << missing.toStdString();
            QTest::keyClick(&field(missing), Qt::Key_Return);
            EXPECT_FALSE(form()->isWorking());
        }
        fill(labels.back(), u" "_s);
        EXPECT_TRUE(form()->confirmButton()->isEnabled());
    };
    openCreate(show<AdminAgentsView>());
    expectEachNeeded({u"Name"_s, u"Email"_s, u"Password"_s});
    openCreate(show<AdminProductsView>());
    expectEachNeeded({u"Name"_s, u"Slug"_s});
    openCreate(show<AdminCannedView>());
    expectEachNeeded({u"Shortcut"_s, u"Body"_s});
    openEdit(show<AdminProductsView>());
    expectEachNeeded({u"Name"_s});
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
    // Neither a second click, nor Return elsewhere, nor a change of the input sends it again.
    confirm->click();
    QTest::keyClick(&field(u"Name"_s), Qt::Key_Return);
    fill(u"Email"_s, u"other@x"_s);
    EXPECT_FALSE(confirm->isEnabled());
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    held->answer(refusal(409, "email already in use"));
    ASSERT_TRUE(waitUntil([&] { return !sheet->isWorking(); }));
    EXPECT_EQ(session->banner(), u"email already in use"_s);
    EXPECT_TRUE(page.showCreate());
    EXPECT_TRUE(confirm->isEnabled());
    EXPECT_TRUE(confirm->hasFocus()) << "it had the focus before it was disabled";
    EXPECT_EQ(field(u"Password"_s).text(), u"s3cret \"x\""_s);
    EXPECT_EQ(count("POST", agentsPath), 1u);
    EXPECT_EQ(count("GET", agentsPath), loads);
}

TEST_F(AdminForms, CloseOnceTheListHasBeenLoadedAnew)
{
    auto& page = show<AdminProductsView>();
    const QPointer<FormSheet> sheet = &openEdit(page, 1);
    service.answer("PATCH", "/v1/admin/products/p2", accepted());
    const auto held = service.hold("GET", productsPath);
    sheet->confirmButton()->click();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    settle();
    EXPECT_TRUE(sheet && sheet->isOpen() && sheet->isWorking());
    products[1].name = u"Renamed"_s;
    held->answer(answerOf(ProductsResponse{{products}}));
    ASSERT_TRUE(waitUntil([&] { return !sheet; }));
    EXPECT_EQ(page.records()[1].name, u"Renamed"_s);
    EXPECT_TRUE(page.list()->hasFocus());

    openEdit(page).dismissButton()->click();
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
            const std::size_t expected = loads + (succeeds && gone == Gone::theSheet ? 1 : 0);
            EXPECT_TRUE(waitUntil([&] {
                return (succeeds || !session || session->banner() == u"refused"_s)
                       && (!sheet || !sheet->isWorking()) && count("GET", agentsPath) >= expected;
            }));
            settle();
            EXPECT_EQ(count("GET", agentsPath), expected);
            window.reset();
        }
    }
}

} // namespace orvia::test
