#pragma once

#include "Session/Answers.h"
#include "Views/AdminViews/AdminListView.h"
#include "Views/AdminViews/AdminRecordsModel.h"
#include "Views/AdminViews/FormSheet.h"

#include <QWidget>

namespace orvia {

class EmptyState;
class IconButton;

/// What the administration screens share: a list on a page of the settings sheet that loads itself whenever
/// it is shown, a button in the sheet's header that creates an item, and form sheets over the list.
class AdminPage : public QWidget {
    Q_OBJECT

public:
    const QString& title() const { return m_title; }
    /// The button that opens the sheet for a new item. It stands in the header of the sheet that shows this
    /// page.
    IconButton* trailingButton() const { return m_create; }
    /// Whether the sheet for a new item is open.
    bool showCreate() const;
    AdminListView* list() const { return m_list; }

    /// Loads the list anew. A failure keeps the list and shows in the session's banner.
    virtual QCoro::Task<void> reload() = 0;

protected:
    AdminPage(const QString& title, const QString& createHelpText, Session& session, QWidget* parent);

    void setList(AdminListView* list);
    /// Shows @p empty in place of the list when that was loaded and has no rows.
    void setEmptyState(EmptyState* empty);
    /// To be called when the rows changed or the first load ended.
    void refreshEmptyState();

    virtual FormSheet* makeCreateSheet() = 0;
    /// The form that edits a row's record; null when there is none.
    virtual FormSheet* makeEditSheet(int row);
    /// The form for an existing item that is open; null for none.
    FormSheet* editSheet() const;
    /// What a sheet does when its request succeeded: reloads this list while it exists.
    FormSheet::Done reloading();

    const QPointer<Session>& session() const { return m_session; }
    void showEvent(QShowEvent* event) override;

    quint64 m_startedLoads = 0;
    quint64 m_appliedLoad = 0; ///< answers to loads up to this one say nothing new
    bool m_wasLoaded = false;

private:
    void create();
    void edit(const QModelIndex& index);

    QString m_title;
    QPointer<Session> m_session;
    IconButton* m_create;
    AdminListView* m_list = nullptr;
    EmptyState* m_empty = nullptr;
    QPointer<FormSheet> m_createSheet;
    QPointer<FormSheet> m_editSheet;
};

/// A screen over the records of one kind.
template <class Record>
class AdminRecordsPage : public AdminPage {
public:
    const std::vector<Record>& records() const { return m_model->records(); }

    QCoro::Task<void> reload() override
    {
        if (!session())
            co_return;
        const QPointer<AdminRecordsPage> self = this;
        const quint64 load = ++m_startedLoads;
        auto answer = co_await session()->answerTo(fetch());
        if (!self)
            co_return;
        m_wasLoaded = true;
        // Two loads may overtake each other; the newer answer stays.
        if (answer && load > m_appliedLoad) {
            m_appliedLoad = load;
            apply(std::move(*answer));
        }
        refreshEmptyState();
    }

protected:
    AdminRecordsPage(const QString& title, const QString& createHelpText, Session& owner, QWidget* parent,
                     typename AdminRecordsModel<Record>::Present present)
        : AdminPage(title, createHelpText, owner, parent)
        , m_model(new AdminRecordsModel<Record>(std::move(present), this))
    {
    }

    /// Starts the request for the list.
    virtual QCoro::Task<std::vector<Record>> fetch() const = 0;
    /// Shows @p loaded; the current and the selected rows stay so where they are still listed.
    virtual void apply(std::vector<Record> loaded)
    {
        if (loaded == records())
            return;
        const AdminListView::Place place = list()->place();
        m_model->replace(std::move(loaded));
        list()->restore(place);
    }

    AdminRecordsModel<Record>& model() const { return *m_model; }

private:
    AdminRecordsModel<Record>* m_model;
};

} // namespace orvia
