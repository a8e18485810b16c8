#pragma once

#include "Models/Agent.h"
#include "Models/Product.h"
#include "Theme/Theme.h"

#include <QAbstractButton>

#include <functional>
#include <vector>

class QVBoxLayout;

namespace orvia {

/// One row of a suggestion list: a leading text and a quieter one behind it, which elides first.
class SuggestionRow : public QAbstractButton {
    Q_OBJECT

public:
    SuggestionRow(const QString& lead, TextRole leadRole, const QString& detail, QWidget* parent);

    /// The leading text on one line.
    const QString& lead() const { return m_lead; }
    /// The row that Return inserts is filled.
    void setPreferred(bool preferred);

    QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void paintFill(QPainter& painter) const;
    void paintText(QPainter& painter, const QRect& place, const QString& text) const;

    QString m_lead;
    TextRole m_leadRole;
    QString m_detail;
    bool m_preferred = false;
};

/// The framed list between transcript and composer: at most six rows, chosen by click, Return or Space. The
/// arrow keys move among the rows; Escape, and Down behind the last row, ask to leave the list. It never
/// takes the focus by itself.
class SuggestionList : public QWidget {
    Q_OBJECT

public:
    explicit SuggestionList(const QString& accessibleName, QWidget* parent = nullptr);

    int rowCount() const { return static_cast<int>(m_rows.size()); }
    SuggestionRow* row(int index) const { return m_rows[static_cast<std::size_t>(index)]; }
    /// Whether the focus is on a row, or will be when the window is active again.
    bool holdsFocus() const;
    /// The control after which the rows stand in the tab order.
    void setTabPredecessor(QWidget* widget) { m_tabPredecessor = widget; }
    /// Puts the focus on the last row, the nearest one to the field.
    void enterFromBelow();

Q_SIGNALS:
    void leaveRequested();
    /// A key was pressed on a row that means the text: a letter, or one that deletes.
    void keyForTextPressed(QKeyEvent* event);

protected:
    void clearRows();
    void addRow(SuggestionRow* row, std::function<void()> choose);
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QVBoxLayout* m_layout;
    std::vector<SuggestionRow*> m_rows;
    QWidget* m_tabPredecessor = nullptr;
};

/// Teammates who can be mentioned.
class MentionSuggestionList : public SuggestionList {
    Q_OBJECT

public:
    explicit MentionSuggestionList(QWidget* parent = nullptr);

    const std::vector<Agent>& matches() const { return m_matches; }
    void setMatches(std::vector<Agent> matches);

Q_SIGNALS:
    void selected(const orvia::Agent& agent);

private:
    std::vector<Agent> m_matches;
};

/// Canned responses whose shortcut or text fits what is typed.
class CannedSuggestionList : public SuggestionList {
    Q_OBJECT

public:
    explicit CannedSuggestionList(QWidget* parent = nullptr);

    const std::vector<CannedResponse>& matches() const { return m_matches; }
    void setMatches(std::vector<CannedResponse> matches);

Q_SIGNALS:
    void selected(const orvia::CannedResponse& response);

private:
    std::vector<CannedResponse> m_matches;
};

} // namespace orvia
