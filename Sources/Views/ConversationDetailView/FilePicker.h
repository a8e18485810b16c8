#pragma once

#include <QUrl>

#include <functional>

class QWidget;

namespace orvia {

/// Lets the user pick one file of any kind and hands its location over; a cancelled or failed pick hands over
/// nothing. Answers at once, the pick comes later, and not after @p parent is gone.
using FilePicker = std::function<void(QWidget* parent, std::function<void(const QUrl& file)> picked)>;

/// The desktop's own file dialog.
FilePicker desktopFilePicker();

} // namespace orvia
