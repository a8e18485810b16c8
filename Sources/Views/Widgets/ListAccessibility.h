#pragma once

class QItemSelection;

namespace orvia {

class VirtualListView;

/// Makes every virtual list known to assistive tools as a list with one list item per row. A row keeps its
/// identity while others come, go or move, is focused only while its list is, and its action "Press" does
/// what a click and Return do. To be called in the list's constructor.
///
/// Qt's own interface asks the layout of @c QListView, which a virtual list does not have: it reports the
/// focus of the list in place of the row's, and a focused row in lists that are not.
void installListAccessibility();

/// Forgets the rows that are gone from the model. What an assistive tool still asks of one of them is refused
/// at once then; Qt would leave the question without an answer.
void forgetGoneRows(VirtualListView& list);
/// Tells that the current row has the keyboard's focus, if the list has.
void tellFocusedRow(VirtualListView& list);
/// Tells which rows are chosen now and which are not any more.
void tellChosenRows(VirtualListView& list, const QItemSelection& selected, const QItemSelection& deselected);

} // namespace orvia
