#include "platform/widgets/FileChooser.h"

#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QFileDialog>
#include <QPointer>

#include <utility>

namespace inkory
{

namespace
{

std::function<QList<QUrl>(const OpenPanel &)> &openResponder()
{
    static std::function<QList<QUrl>(const OpenPanel &)> function;
    return function;
}

std::function<std::optional<QUrl>(const SavePanel &)> &saveResponder()
{
    static std::function<std::optional<QUrl>(const SavePanel &)> function;
    return function;
}

QWidget *parentOrFront(QWidget *parentWindow)
{
    if (parentWindow)
        return parentWindow;
    QWidget *front = QApplication::activeWindow();
    return front ? front : modalWindow();
}

/// Shows the dialog, which is destroyed afterwards; its parent window may destroy it earlier.
QList<QUrl> run(const QPointer<QFileDialog> &dialog)
{
    dialog->setSupportedSchemes({QStringLiteral("file")});
    QList<QUrl> chosen;
    if (dialog->exec() == QDialog::Accepted && dialog)
        chosen = dialog->selectedUrls();
    delete dialog.data();
    return chosen;
}

} // namespace

QList<QUrl> OpenPanel::runModal(QWidget *parentWindow) const
{
    if (openResponder())
        return openResponder()(*this);
    const QPointer<QFileDialog> panel = new QFileDialog(parentOrFront(parentWindow), title);
    panel->setFileMode(selection == Selection::Several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    panel->setOption(QFileDialog::DontUseNativeDialog, dialog == PanelDialog::Toolkit);
    panel->setOption(QFileDialog::HideNameFilterDetails, dialog == PanelDialog::Toolkit); // a list of thirty endings
    if (!nameFilters.isEmpty())
        panel->setNameFilters(nameFilters);
    if (!folder.isEmpty())
        panel->setDirectoryUrl(folder);
    return run(panel);
}

void OpenPanel::setResponder(std::function<QList<QUrl>(const OpenPanel &)> responder)
{
    openResponder() = std::move(responder);
}

std::optional<QUrl> SavePanel::runModal(QWidget *parentWindow) const
{
    if (saveResponder())
        return saveResponder()(*this);
    const QPointer<QFileDialog> panel = new QFileDialog(parentOrFront(parentWindow), title);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setDefaultSuffix(defaultSuffix);
    if (!nameFilters.isEmpty())
        panel->setNameFilters(nameFilters);
    if (!suggestedFile.isEmpty()) {
        panel->setDirectoryUrl(suggestedFile.adjusted(QUrl::RemoveFilename));
        panel->selectFile(suggestedFile.fileName());
    }
    const QList<QUrl> chosen = run(panel);
    return chosen.isEmpty() ? std::nullopt : std::optional(chosen.first());
}

void SavePanel::setResponder(std::function<std::optional<QUrl>(const SavePanel &)> responder)
{
    saveResponder() = std::move(responder);
}

} // namespace inkory
