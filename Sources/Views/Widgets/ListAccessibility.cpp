#include "Views/Widgets/ListAccessibility.h"

#include "Views/Widgets/VirtualListView.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

namespace orvia {

namespace {

class RowInterface : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    RowInterface(VirtualListView* list, const QModelIndex& index)
        : m_list(list)
        , m_index(index)
    {
    }

    /// The row is gone from here on, whoever still looks at it. The list may be half destroyed by now.
    void leave() { m_list.clear(); }
    const QPersistentModelIndex& index() const { return m_index; }
    bool isValid() const override { return m_list && m_index.isValid(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_list ? m_list->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override
    {
        return m_list ? QAccessible::queryAccessibleInterface(m_list) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        if (kind == QAccessible::Description)
            return m_index.data(Qt::AccessibleDescriptionRole).toString();
        if (kind != QAccessible::Name)
            return {};
        const QString name = m_index.data(Qt::AccessibleTextRole).toString();
        return name.isEmpty() ? m_index.data(Qt::DisplayRole).toString() : name;
    }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        const QRect row = m_list->visualRect(m_index);
        return {m_list->viewport()->mapToGlobal(row.topLeft()), row.size()};
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invalid = !isValid();
        if (!isValid())
            return state;
        const Qt::ItemFlags flags = m_index.flags();
        state.disabled = !m_list->isEnabled() || !flags.testFlag(Qt::ItemIsEnabled);
        state.focusable = !state.disabled;
        state.focused = m_list->hasFocus() && m_list->currentIndex() == m_index;
        state.selectable =
            m_list->selectionMode() != QAbstractItemView::NoSelection && flags.testFlag(Qt::ItemIsSelectable);
        state.selected = m_list->selectionModel()->isSelected(m_index);
        state.offscreen = !m_list->viewport()->rect().intersects(m_list->visualRect(m_index));
        state.invisible = state.offscreen || !m_list->isVisible();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override
    {
        return isValid() && !state().disabled ? QStringList{pressAction(), setFocusAction()} : QStringList();
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override
    {
        if (!actionNames().contains(name))
            return;
        const QModelIndex index = m_index;
        if (name == setFocusAction()) {
            m_list->setFocus(Qt::OtherFocusReason);
            m_list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
        } else {
            m_list->setCurrentIndex(index);
            Q_EMIT m_list->activated(index);
        }
    }

private:
    QPointer<VirtualListView> m_list;
    const QPersistentModelIndex m_index;
};

class ListInterface : public QAccessibleWidget {
public:
    explicit ListInterface(VirtualListView* list)
        : QAccessibleWidget(list, QAccessible::List)
    {
    }

    ~ListInterface() override
    {
        for (const QAccessible::Id id : m_rows)
            forget(id);
    }

    void forgetGoneRows()
    {
        m_rows.removeIf([](const auto& row) {
            if (!row.key().isValid())
                forget(row.value());
            return !row.key().isValid();
        });
    }

    int childCount() const override
    {
        return list().model() ? list().model()->rowCount(list().rootIndex()) : 0;
    }

    QAccessibleInterface* child(int row) const override
    {
        if (row < 0 || row >= childCount())
            return nullptr;
        const QPersistentModelIndex index =
            list().model()->index(row, list().modelColumn(), list().rootIndex());
        if (const auto known = m_rows.constFind(index); known != m_rows.cend())
            return QAccessible::accessibleInterface(*known);
        auto* made = new RowInterface(&list(), index);
        m_rows.insert(index, QAccessible::registerAccessibleInterface(made));
        return made;
    }

    int indexOfChild(const QAccessibleInterface* wanted) const override
    {
        const auto* row = dynamic_cast<const RowInterface*>(wanted);
        return row && row->parent() == this && row->isValid() ? row->index().row() : -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override
    {
        const QModelIndex index = list().indexAt(list().viewport()->mapFromGlobal(QPoint(x, y)));
        return index.isValid() ? child(index.row()) : nullptr;
    }

    QAccessibleInterface* focusChild() const override
    {
        return list().hasFocus() && list().currentIndex().isValid() ? child(list().currentIndex().row())
                                                                    : nullptr;
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        const auto mode = list().selectionMode();
        state.multiSelectable =
            mode == QAbstractItemView::MultiSelection || mode == QAbstractItemView::ExtendedSelection;
        return state;
    }

private:
    static void forget(QAccessible::Id id)
    {
        if (auto* row = static_cast<RowInterface*>(QAccessible::accessibleInterface(id)))
            row->leave();
        QAccessible::deleteAccessibleInterface(id);
    }

    VirtualListView& list() const { return *static_cast<VirtualListView*>(widget()); }

    mutable QHash<QPersistentModelIndex, QAccessible::Id> m_rows;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    auto* list = qobject_cast<VirtualListView*>(object);
    return list ? new ListInterface(list) : nullptr;
}

void tell(VirtualListView& list, QAccessible::Event kind, int row)
{
    QAccessibleEvent event(&list, kind);
    event.setChild(row);
    QAccessible::updateAccessibility(&event);
}

} // namespace

void installListAccessibility()
{
    static const bool installed = (QAccessible::installFactory(makeInterface), true);
    Q_UNUSED(installed)
}

void forgetGoneRows(VirtualListView& list)
{
    if (!QAccessible::isActive())
        return;
    if (auto* known = dynamic_cast<ListInterface*>(QAccessible::queryAccessibleInterface(&list)))
        known->forgetGoneRows();
}

void tellFocusedRow(VirtualListView& list)
{
    if (QAccessible::isActive() && list.hasFocus() && list.currentIndex().isValid())
        tell(list, QAccessible::Focus, list.currentIndex().row());
}

void tellChosenRows(VirtualListView& list, const QItemSelection& selected, const QItemSelection& deselected)
{
    if (!QAccessible::isActive())
        return;
    for (const QModelIndex& index : deselected.indexes())
        tell(list, QAccessible::SelectionRemove, index.row());
    for (const QModelIndex& index : selected.indexes())
        tell(list, QAccessible::SelectionAdd, index.row());
}

} // namespace orvia
