#include "Views/ConversationDetailView/FilePicker.h"

#include <QFileDialog>

namespace orvia {

FilePicker desktopFilePicker()
{
    return [](QWidget* parent, std::function<void(const QUrl&)> picked) {
        auto* dialog = new QFileDialog(parent);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setFileMode(QFileDialog::ExistingFile);
        // Qt's own dialogue, which stands where the desktop offers none, does not tell of the chosen URL.
        QObject::connect(dialog, &QDialog::accepted, parent, [dialog, picked = std::move(picked)] {
            for (const QUrl& file : dialog->selectedUrls())
                picked(file);
        });
        dialog->open();
    };
}

} // namespace orvia
