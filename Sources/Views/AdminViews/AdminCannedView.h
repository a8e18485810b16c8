#pragma once

#include "Models/Product.h"
#include "Views/AdminViews/AdminPage.h"

namespace orvia {

class RowControls;

/// The canned responses: create one, or delete one or several.
class AdminCannedView : public AdminRecordsPage<CannedResponse> {
    Q_OBJECT

public:
    AdminCannedView(Session& session, QWidget* parent);

    const std::vector<CannedResponse>& canned() const { return records(); }
    /// Takes the rows at @p positions, which ascend, out of the list at once and deletes them on the service
    /// one after the other, also when this screen is left meanwhile. Each failure shows in the banner; the
    /// list is loaded anew at the end, so that rows whose deletion failed come back.
    void deleteAt(const std::vector<int>& positions);

protected:
    QCoro::Task<std::vector<CannedResponse>> fetch() const override;
    FormSheet* makeCreateSheet() override;
    void apply(std::vector<CannedResponse> loaded) override;

private:
    static QCoro::Task<void> deleteInTurn(QPointer<AdminCannedView> view, QPointer<Session> session,
                                          QStringList ids);
    AdminRow rowOf(const CannedResponse& response) const;
    void addDeleteButtons();
    bool showsDeleteButton(const QModelIndex& index) const;
    QWidget* makeDeleteButton(QWidget* parent);
    void showMenu(const QPoint& position);

    RowControls* m_deleteButtons = nullptr;
    QSet<QString> m_deleting; ///< asked to be deleted, not answered yet
};

} // namespace orvia
