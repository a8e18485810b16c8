#pragma once

#include "Views/AdminViews/FormSheet.h"

namespace orvia {

/// Creates a product from its name and its slug.
class CreateProductSheet : public FormSheet {
    Q_OBJECT

public:
    CreateProductSheet(Session& session, QWidget* host, Done onDone);

    /// Needs both texts.
    bool isValid() const override;
    void create();

private:
    TextField* m_name;
    TextField* m_slug;
};

} // namespace orvia
