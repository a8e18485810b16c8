#pragma once

#include "Models/Product.h"
#include "Views/AdminViews/FormSheet.h"

namespace orvia {

class Picker;
class Switch;

/// Edits a product's name and the settings of its chat widget.
class EditProductSheet : public FormSheet {
    Q_OBJECT

public:
    EditProductSheet(Product product, Session& session, QWidget* host, Done onDone);

    const Product& product() const { return m_product; }
    /// Where the widget stands: "right", "left", or whatever else the service said until it is changed.
    const QString& position() const { return m_position; }

    /// Needs a name.
    bool isValid() const override;
    void save();

private:
    void build();
    void populate();
    WidgetConfig widget() const;

    Product m_product;
    TextField* m_name = nullptr;
    TextField* m_widgetTitle = nullptr;
    TextField* m_accentHex = nullptr;
    Picker* m_positionPicker = nullptr;
    Switch* m_greetingEnabled = nullptr;
    TextField* m_greetingDelay = nullptr;
    TextField* m_greetingText = nullptr;
    QString m_position;
};

} // namespace orvia
