#pragma once

#include "Session/SessionFixture.h"
#include "Views/AdminViews/AdminViews.h"
#include "Views/AdminViews/FormSheet.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Picker.h"
#include "Views/Widgets/Switch.h"
#include "Views/Widgets/TextField.h"

#include <QApplication>
#include <QTest>

namespace orvia::test {

/// The administration screens on a settings sheet in an active window, over a service whose lists the tests
/// write.
class AdminFixture : public SessionFixture {
protected:
    static constexpr const char* agentsPath = "/v1/admin/agents";
    static constexpr const char* productsPath = "/v1/admin/products";
    static constexpr const char* cannedPath = "/v1/admin/canned";

    AdminFixture()
    {
        timings.bannerDismiss = std::chrono::seconds(10);
        scriptInbox({});
        Product second;
        second.id = u"p2"_s;
        second.name = u"Halden & Cycles"_s;
        second.slug = u"halden"_s;
        products.push_back(second);
        for (const QString& id : {u"k1"_s, u"k2"_s, u"k3"_s, u"k4"_s, u"k5"_s})
            canned.push_back(makeCanned(id));
        service.always("GET", agentsPath,
                       [this](const ReceivedRequest&) { return answerOf(AgentsResponse{{teammates}}); });
        service.always("GET", productsPath,
                       [this](const ReceivedRequest&) { return answerOf(ProductsResponse{{products}}); });
        service.always("GET", cannedPath, [this](const ReceivedRequest&) {
            return answerOf(CannedResponsesResponse{{canned}});
        });
    }
    ~AdminFixture() override { window.reset(); }

    /// The screen as the settings show it, once its list is loaded.
    template <class View>
    View& show()
    {
        if (!session)
            signIn();
        window = std::make_unique<QWidget>();
        window->resize(1080, 700);
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        settings = new Sheet(u"Settings"_s, window.get(), Sheet::Kind::settings);
        settings->setBody(new QWidget);
        settings->setConfirmButton(u"Done"_s);
        settings->open();
        auto* view = new View(*session, settings);
        settings->pushPage(view->title(), view, view->trailingButton());
        EXPECT_TRUE(waitUntil([&] { return !view->records().empty(); }));
        settle();
        return *view;
    }
    /// Lets what waits for the event loop, and the slide of a page, come to an end.
    static void settle() { spinFor(std::chrono::milliseconds(20)); }

    FormSheet* form() const { return qobject_cast<FormSheet*>(Sheet::topmost(window.get())); }
    FormSheet& openCreate(AdminPage& page)
    {
        page.trailingButton()->click();
        return *form();
    }
    FormSheet& openEdit(AdminPage& page, int row = 0)
    {
        clickRow(page, row);
        return *form();
    }
    static void clickRow(AdminPage& page, int row, Qt::KeyboardModifiers modifiers = {})
    {
        AdminListView* list = page.list();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers,
                          list->visualRect(list->model()->index(row, 0)).center());
    }
    /// The control of the open form with that label.
    template <class Widget>
    Widget& control(const QString& label) const
    {
        for (Widget* widget : form()->findChildren<Widget*>()) {
            if (widget->accessibleName() == label || widget->accessibleDescription() == label)
                return *widget;
        }
        ADD_FAILURE() << "no " << label.toStdString();
        std::abort();
    }
    TextField& field(const QString& label) const { return control<TextField>(label); }
    void fill(const QString& label, const QString& text) const { field(label).setText(text); }
    void choose(const QString& label, int row) const
    {
        auto& picker = control<Picker>(label);
        picker.setCurrentIndex(row);
        Q_EMIT picker.activated(row);
    }
    std::size_t count(const QByteArray& method, const QByteArray& path) const
    {
        return service.requests(method, path).size();
    }
    template <class Record>
    static QStringList ids(const std::vector<Record>& records)
    {
        QStringList found;
        for (const Record& record : records)
            found.append(record.id);
        return found;
    }

    static CannedResponse makeCanned(const QString& id)
    {
        CannedResponse response;
        response.id = id;
        response.shortcut = id + u"-short"_s;
        response.body = u"Body of "_s + id;
        return response;
    }
    static ScriptedAnswer accepted() { return ScriptedAnswer::json("{}"); }

    std::vector<CannedResponse> canned;
    std::unique_ptr<QWidget> window;
    Sheet* settings = nullptr; ///< belongs to the window
};

} // namespace orvia::test
