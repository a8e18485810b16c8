#include "Views/AdminViews/AdminProductsView.h"

#include "Platform/ShownText.h"
#include "Session/Session.h"
#include "Views/AdminViews/CreateProductSheet.h"
#include "Views/AdminViews/EditProductSheet.h"
#include "Views/AdminViews/RowControls.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/Label.h"

namespace orvia {

namespace {

constexpr int leastRowHeight = 56;

AdminRow rowOf(const Product& product)
{
    AdminRow row;
    row.title = product.name;
    row.detail = product.slug;
    row.code = product.publicKey.value_or(QString());
    return row;
}

/// A text that can be selected and copied, by pointer and by keyboard.
QWidget* makeKeyLabel(QWidget* parent)
{
    auto* label = new Label({}, TextRole::codeRegular, ColorRole::textSecondary, parent);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    FocusRing::attach(label, Radius::hit, FocusRing::Policy::keyboard, 0);
    return label;
}

void fillKeyLabel(QWidget& control, const AdminRow& row, const QRect& content)
{
    auto& label = static_cast<Label&>(control);
    // Setting the same text would drop what is selected in it.
    const QString code = shownLine(row.code);
    if (label.text() != code) {
        label.setText(code);
        label.setAccessibleDescription(row.title);
    }
    const QRect place = AdminRowGeometry::of(row, content, 0, label.layoutDirection()).code;
    const bool isCut = label.fontMetrics().horizontalAdvance(code) > place.width();
    label.setToolTip(isCut ? shownToolTip(row.code) : QString());
    label.setGeometry(place);
}

} // namespace

AdminProductsView::AdminProductsView(Session& session, QWidget* parent)
    : AdminRecordsPage<Product>(tr("Products"), tr("New product"), session, parent, rowOf)
{
    setList(new AdminListView(title(), model(), leastRowHeight, false, 0, this));
    new RowControls(*list(), {makeKeyLabel,
                              [this](const QModelIndex& index) {
                                  const auto& key = model().record(index.row()).publicKey;
                                  return key && !key->isEmpty();
                              },
                              [this](QWidget& control, const QModelIndex& index, const QRect& content) {
                                  fillKeyLabel(control, model().row(index.row()), content);
                              }});
}

std::optional<Product> AdminProductsView::editingProduct() const
{
    const auto* sheet = static_cast<const EditProductSheet*>(editSheet());
    return sheet ? std::optional(sheet->product()) : std::nullopt;
}

QCoro::Task<std::vector<Product>> AdminProductsView::fetch() const
{
    return session()->client().adminProducts();
}

FormSheet* AdminProductsView::makeCreateSheet()
{
    return new CreateProductSheet(*session(), this, reloading());
}

FormSheet* AdminProductsView::makeEditSheet(int row)
{
    return new EditProductSheet(model().record(row), *session(), this, reloading());
}

} // namespace orvia
