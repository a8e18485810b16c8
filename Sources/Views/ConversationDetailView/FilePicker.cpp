#include "Views/ConversationDetailView/FilePicker.h"

#include <QFileDialog>

namespace orvia {

FilePicker desktopFilePicker()
{
    return [](QWidget* parent, std::function<void(const QUrl&)> picked) {
        auto* dialog = new QFileDialog(parent);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setFileMode(QFileDialog::ExistingFile);
        QObject::connect(dialog, &QFileDialog::urlSelected, parent, std::move(picked));
        dialog->open();
    };
}

} // namespace orvia
