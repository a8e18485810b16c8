#pragma once

#include "Views/AdminViews/FormSheet.h"

namespace orvia {

class Picker;

/// Creates a canned response for one product or for all of them.
class CreateCannedSheet : public FormSheet {
    Q_OBJECT

public:
    CreateCannedSheet(Session& session, QWidget* host, Done onDone);

    /// Absent means every product.
    std::optional<QString> productId() const;

    /// Needs both texts.
    bool isValid() const override;
    void create();

private:
    TextField* m_shortcut;
    TextField* m_bodyText;
    Picker* m_product;
};

} // namespace orvia
