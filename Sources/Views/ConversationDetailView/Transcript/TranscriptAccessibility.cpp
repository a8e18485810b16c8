#include "Views/ConversationDetailView/Transcript/TranscriptAccessibility.h"

#include "Views/ConversationDetailView/Transcript/TranscriptView.h"

#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>

#include <map>
#include <utility>

namespace orvia {

namespace {

using Part = TranscriptView::Part;

/// The rectangle of a part of the viewport, in screen coordinates.
QRect onScreen(const TranscriptView& view, const QRect& rect)
{
    return {view.viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

/// Removes what was registered under @p id, which is gone for whoever looks at it meanwhile.
template <class Interface>
void forget(QAccessible::Id id)
{
    if (auto* known = static_cast<Interface*>(QAccessible::accessibleInterface(id)))
        known->leave();
    QAccessible::deleteAccessibleInterface(id);
}

/// A file, a picture or "Show More".
class PartInterface : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    PartInterface(TranscriptView* view, TranscriptView::Stop stop)
        : m_view(view)
        , m_stop(stop)
    {
    }

    /// The part is gone from here on, whoever still looks at it. The view may be half destroyed by now.
    void leave() { m_view.clear(); }
    bool isValid() const override { return m_view && m_stop.row < m_view->rowCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override
    {
        QAccessibleInterface* list = m_view ? QAccessible::queryAccessibleInterface(m_view) : nullptr;
        return list ? list->child(static_cast<int>(m_stop.row)) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}
    QAccessible::Role role() const override { return QAccessible::Button; }
    QRect rect() const override { return isValid() ? onScreen(*m_view, m_view->partRect(m_stop)) : QRect(); }

    QString text(QAccessible::Text kind) const override
    {
        if (kind != QAccessible::Name || !isValid())
            return {};
        return RowLayout::partName(m_stop.part, m_view->row(m_stop.row));
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invalid = !isValid();
        if (!isValid())
            return state;
        state.focusable = true;
        state.focused = m_view->hasFocus() && m_view->current() == m_stop;
        state.offscreen = !m_view->isRowInSight(m_stop.row);
        state.invisible = state.offscreen || !m_view->isVisible();
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override
    {
        if (!isValid())
            return;
        if (name == pressAction()) {
            m_view->activate(m_stop);
        } else if (name == setFocusAction()) {
            m_view->setFocus(Qt::OtherFocusReason);
            m_view->setCurrent(m_stop);
        }
    }

private:
    QPointer<TranscriptView> m_view;
    TranscriptView::Stop m_stop;
};

class RowInterface : public QAccessibleInterface,
                     public QAccessibleTextInterface,
                     public QAccessibleActionInterface {
public:
    RowInterface(TranscriptView* view, qsizetype row)
        : m_view(view)
        , m_row(row)
    {
    }

    ~RowInterface() override { leave(); }

    /// As that of a part; takes the parts with it.
    void leave()
    {
        m_view.clear();
        for (const auto& [part, id] : std::exchange(m_parts, {}))
            forget<PartInterface>(id);
    }

    qsizetype row() const { return m_row; }
    bool isValid() const override { return m_view && m_row < m_view->rowCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_view ? m_view->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override
    {
        return m_view ? QAccessible::queryAccessibleInterface(m_view) : nullptr;
    }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QRect rect() const override { return isValid() ? onScreen(*m_view, m_view->rowRect(m_row)) : QRect(); }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        if (kind == QAccessible::Name)
            return m_view->row(m_row).spokenName();
        if (kind == QAccessible::Description)
            return QCoreApplication::translate("ConversationDetailView", "%1 of %2")
                .arg(QString::number(m_row + 1), QString::number(m_view->rowCount()));
        return {};
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invalid = !isValid();
        if (!isValid())
            return state;
        state.focusable = true;
        state.readOnly = true;
        state.multiLine = true;
        state.selectableText = true;
        state.focused = m_view->hasFocus() && m_view->current().row == m_row;
        state.offscreen = !m_view->isRowInSight(m_row);
        state.invisible = state.offscreen || !m_view->isVisible();
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface && isValid() && !body().isEmpty())
            return static_cast<QAccessibleTextInterface*>(this);
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

    QStringList actionNames() const override { return {setFocusAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override
    {
        if (!isValid() || name != setFocusAction())
            return;
        m_view->setFocus(Qt::OtherFocusReason);
        m_view->setCurrent({m_row, Part::body});
    }

    // The buttons below the row
    int childCount() const override { return static_cast<int>(parts().size()); }
    QAccessibleInterface* child(int index) const override
    {
        const std::vector<Part> all = parts();
        if (index < 0 || index >= static_cast<int>(all.size()))
            return nullptr;
        const Part part = all[static_cast<std::size_t>(index)];
        const auto known = m_parts.find(part);
        if (known != m_parts.end())
            return QAccessible::accessibleInterface(known->second);
        auto* made = new PartInterface(m_view, {m_row, part});
        m_parts[part] = QAccessible::registerAccessibleInterface(made);
        return made;
    }
    int indexOfChild(const QAccessibleInterface* wanted) const override
    {
        for (int i = 0; i < childCount(); ++i) {
            if (child(i) == wanted)
                return i;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        for (int i = 0; i < childCount(); ++i) {
            if (child(i)->rect().contains(x, y))
                return child(i);
        }
        return nullptr;
    }

    // The text of the bubble
    void selection(int index, int* start, int* end) const override
    {
        const bool mine = index == 0 && selectionCount() == 1;
        *start = mine ? static_cast<int>(m_view->selection().start()) : 0;
        *end = mine ? static_cast<int>(m_view->selection().end()) : 0;
    }
    int selectionCount() const override
    {
        return m_view->selectedRow() == m_row && !m_view->selection().isEmpty() ? 1 : 0;
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int) override { m_view->select(-1, {}); }
    void setSelection(int, int start, int end) override
    {
        m_view->select(m_row, {clamped(start), clamped(end)});
    }
    int cursorPosition() const override
    {
        return m_view->selectedRow() == m_row ? static_cast<int>(m_view->selection().cursor) : 0;
    }
    void setCursorPosition(int position) override { setSelection(0, position, position); }
    QString text(int start, int end) const override
    {
        return body().mid(clamped(start), std::max<qsizetype>(0, clamped(end) - clamped(start)));
    }
    int characterCount() const override { return static_cast<int>(body().size()); }
    QRect characterRect(int offset) const override
    {
        const RowLayout* layout = m_view->rowLayout(m_row);
        if (!layout || !layout->body())
            return {};
        const BubbleText& text = *layout->body();
        const QRectF from = text.caretRect(std::min<qsizetype>(offset, text.shownLength()));
        const QRectF to =
            text.caretRect(text.nextPosition(std::min<qsizetype>(offset, text.shownLength()), false));
        const qreal right = from.top() == to.top() ? to.left() : from.right();
        const QRectF cell = QRectF(QPointF(std::min(from.left(), right), from.top()),
                                   QPointF(std::max(from.left(), right), from.bottom()));
        const QPointF origin = layout->bodyOrigin() + m_view->rowRect(m_row).topLeft();
        return onScreen(*m_view, cell.translated(origin).toAlignedRect());
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        const RowLayout* layout = m_view->rowLayout(m_row);
        if (!layout || !layout->body())
            return -1;
        const QPoint inside = m_view->viewport()->mapFromGlobal(point) - m_view->rowRect(m_row).topLeft();
        return static_cast<int>(layout->body()->positionAt(inside - layout->bodyOrigin()));
    }
    void scrollToSubstring(int, int) override { m_view->setCurrent({m_row, Part::body}); }
    QString attributes(int, int* start, int* end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    QString body() const { return BubbleText(m_view->row(m_row).body, {}).text(); }
    qsizetype clamped(int offset) const { return std::clamp<qsizetype>(offset, 0, body().size()); }

    std::vector<Part> parts() const
    {
        std::vector<Part> buttons;
        if (!isValid())
            return buttons;
        if (m_view->row(m_row).attachment)
            buttons.push_back(Part::attachment);
        const RowLayout* layout = m_view->rowLayout(m_row);
        if (layout && layout->body() && layout->body()->isCut())
            buttons.push_back(Part::showMore);
        return buttons;
    }

    QPointer<TranscriptView> m_view;
    const qsizetype m_row;
    mutable std::map<Part, QAccessible::Id> m_parts;
};

class ListInterface : public QAccessibleWidget {
public:
    explicit ListInterface(TranscriptView* view)
        : QAccessibleWidget(view, QAccessible::List)
    {
    }

    ~ListInterface() override { forgetRows(); }

    void forgetRows()
    {
        for (const auto& [row, id] : std::exchange(m_rows, {}))
            forget<RowInterface>(id);
    }

    int childCount() const override { return static_cast<int>(view().rowCount()); }
    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        const auto known = m_rows.find(index);
        if (known != m_rows.end())
            return QAccessible::accessibleInterface(known->second);
        auto* made = new RowInterface(&view(), index);
        m_rows[index] = QAccessible::registerAccessibleInterface(made);
        return made;
    }
    int indexOfChild(const QAccessibleInterface* wanted) const override
    {
        const auto* row = dynamic_cast<const RowInterface*>(wanted);
        return row ? static_cast<int>(row->row()) : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        return child(static_cast<int>(view().rowAt(view().viewport()->mapFromGlobal(QPoint(x, y)))));
    }
    QAccessibleInterface* focusChild() const override
    {
        return view().hasFocus() ? child(static_cast<int>(view().current().row)) : nullptr;
    }

private:
    TranscriptView& view() const { return *static_cast<TranscriptView*>(widget()); }

    mutable std::map<int, QAccessible::Id> m_rows;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    auto* view = qobject_cast<TranscriptView*>(object);
    return view ? new ListInterface(view) : nullptr;
}

void tell(TranscriptView& view, QAccessible::Event kind, qsizetype row)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(&view, kind);
    event.setChild(static_cast<int>(row));
    QAccessible::updateAccessibility(&event);
}

} // namespace

void installTranscriptAccessibility()
{
    static const bool installed = (QAccessible::installFactory(makeInterface), true);
    Q_UNUSED(installed)
}

void tellTranscriptReplaced(TranscriptView& view)
{
    if (auto* list = dynamic_cast<ListInterface*>(QAccessible::queryAccessibleInterface(&view)))
        list->forgetRows();
    tell(view, QAccessible::ObjectReorder, -1);
}

void tellRowAdded(TranscriptView& view, qsizetype row)
{
    tell(view, QAccessible::ObjectCreated, row);
}

void tellCurrentRow(TranscriptView& view, qsizetype row)
{
    tell(view, QAccessible::Focus, row);
}

void tellSelectionChanged(TranscriptView& view, qsizetype row)
{
    if (row < 0)
        return;
    const BubbleText::Selection& selection = view.selection();
    const auto cursor = static_cast<int>(selection.cursor);
    QAccessibleTextSelectionEvent selected(&view, static_cast<int>(selection.start()),
                                           static_cast<int>(selection.end()));
    selected.setCursorPosition(cursor);
    selected.setChild(static_cast<int>(row));
    QAccessible::updateAccessibility(&selected);
    // A caret that moves without selecting is heard of only by an event of its own.
    QAccessibleTextCursorEvent moved(&view, cursor);
    moved.setChild(static_cast<int>(row));
    QAccessible::updateAccessibility(&moved);
}

} // namespace orvia
