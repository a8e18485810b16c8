#pragma once

#include <QRectF>
#include <Qt>

class QPainter;
class QWidget;

namespace orvia {

/// The ring round the control that has the keyboard's focus.
namespace FocusRing {

enum class Policy {
    keyboard, ///< only when the focus came by the keyboard
    always,   ///< whenever the widget has the focus: text fields
};

/// Gives @p widget a ring for as long as it lives. The ring's corners follow the widget's own @p radius; @p
/// gap is the distance between the widget's edge and the ring: 2 for controls, 0 for outlined fields.
void attach(QWidget* widget, qreal radius, Policy policy = Policy::keyboard, int gap = 2);
/// Whether a focus that came for this reason is shown.
bool showsFor(Qt::FocusReason reason);
/// Whether the ring is round @p widget at this moment.
bool isShown(const QWidget* widget);
/// Gives the focus back to @p widget, with the ring if @p ring.
void restoreFocus(QWidget* widget, bool ring);
/// Paints the ring of a list row on the edge of its highlight, inside the row.
void paintInside(QPainter& painter, const QRectF& highlight, qreal radius);

} // namespace FocusRing

} // namespace orvia
