#include "platform/qt/qt_file_chooser.h"

#include "platform/qt/qt_modal_loop.h"

#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QStringList>

namespace tessaro {
namespace {

/// A file that is not there is refused without a loop of Qt's own, in which our messages would wait.
class ExistingFileDialog : public QFileDialog {
public:
    using QFileDialog::QFileDialog;

    void accept() override {
        const QStringList files = selectedFiles();
        if (!files.isEmpty() && QFile::exists(files.front())) {
            QFileDialog::accept();
            return;
        }
        auto* box = new QMessageBox(QMessageBox::Warning, windowTitle(), QStringLiteral("File not found."),
                                    QMessageBox::Ok, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    }
};

} // namespace

std::optional<std::filesystem::path> QtFileChooser::ChooseFileToOpen() {
    ExistingFileDialog dialog(nullptr, QStringLiteral("Import Image"));
    // The desktop's own dialog would run a loop of its own, beside ours.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters(
        {QStringLiteral("Pictures (*.jpg *.jpeg *.png *.tif *.tiff *.bmp *.ppm *.pgm *.pbm)"),
         QStringLiteral("All files (*)")});
    if (!m_folder.empty())
        dialog.setDirectory(QFile::decodeName(m_folder.c_str()));
    RunQtModal(dialog, m_messages);
    const QStringList files = dialog.selectedFiles();
    if (dialog.result() != QDialog::Accepted || files.isEmpty())
        return std::nullopt;
    std::filesystem::path chosen(QFile::encodeName(files.front()).toStdString());
    m_folder = chosen.parent_path();
    return chosen;
}

} // namespace tessaro
