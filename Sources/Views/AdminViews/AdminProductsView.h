#pragma once

#include "Models/Product.h"
#include "Views/AdminViews/AdminPage.h"

namespace orvia {

/// The products with their public keys: create one, or edit the one that is clicked.
class AdminProductsView : public AdminRecordsPage<Product> {
    Q_OBJECT

public:
    AdminProductsView(Session& session, QWidget* parent);

    const std::vector<Product>& products() const { return records(); }
    /// The product whose form is open.
    std::optional<Product> editingProduct() const;

protected:
    QCoro::Task<std::vector<Product>> fetch() const override;
    FormSheet* makeCreateSheet() override;
    FormSheet* makeEditSheet(int row) override;
};

} // namespace orvia
