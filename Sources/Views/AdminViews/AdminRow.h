#pragma once

#include <QRect>
#include <QString>

namespace orvia {

/// What one row of an administration list shows: a title line over a detail line. Empty texts take no room.
struct AdminRow {
    QString title;
    bool titleIsCode = false; ///< in the fixed-pitch font: a shortcut
    QString tag;              ///< on a capsule after the title
    QString detail;
    QString code;  ///< in the fixed-pitch font after the detail: a public key
    QString badge; ///< in an outlined capsule at the trailing edge

    friend bool operator==(const AdminRow&, const AdminRow&) = default;

    /// Every text of the row, complete, in reading order.
    QString accessibleText() const;
};

/// Where the parts of a row lie. Parts without a text are empty.
struct AdminRowGeometry {
    QRect title;
    QRect tag;
    QRect detail;
    QRect code;
    QRect badge;

    /// Lays @p row out in @p area, of which @p trailing pixels at the trailing edge stay free.
    static AdminRowGeometry of(const AdminRow& row, const QRect& area, int trailing,
                               Qt::LayoutDirection direction);
    /// Height of a row with these parts and the paddings round them, at least @p least.
    static int rowHeight(int least, bool hasTag);
};

} // namespace orvia
