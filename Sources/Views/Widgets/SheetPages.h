#pragma once

#include <QPointer>
#include <QStackedWidget>

#include <vector>

class QVariantAnimation;

namespace orvia {

/// The pages of a sheet: a stack in which the newest page slides in over the one before it.
class SheetPages : public QStackedWidget {
    Q_OBJECT

public:
    struct Page {
        QString title;
        QWidget* contents;
        QPointer<QWidget> trailing;
        /// What had the focus when the next page came.
        QPointer<QWidget> focus;
    };

    explicit SheetPages(const QString& title, QWidget* parent);

    /// Puts @p body on the first page.
    void setBody(QWidget* body);
    void push(Page page);
    /// Deletes the newest page with its trailing control.
    void pop();
    Page& current() { return m_pages.back(); }
    int pageCount() const { return static_cast<int>(m_pages.size()); }
    /// Height that the first page asks for.
    int bodyHeight() const;

private:
    void slide(QWidget* page, int from);

    std::vector<Page> m_pages;
    QPointer<QVariantAnimation> m_movement;
};

} // namespace orvia
