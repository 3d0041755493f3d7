#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <optional>

class QWidget;

namespace inkory
{

/// Which dialog a panel shows: the desktop's own, or the one that comes with the toolkit. Some desktops write each file
/// that is chosen in theirs to the list of recent documents.
enum class PanelDialog { Desktop, Toolkit };

/// Asks for existing files, modally. A value, so that tests can look at what is asked.
struct OpenPanel
{
    enum class Selection { One, Several };

    QString title;
    /// As in QFileDialog: "PDF documents (*.pdf)". Empty: all files.
    QStringList nameFilters;
    /// Where it starts; empty: where the dialog likes.
    QUrl folder;
    Selection selection = Selection::One;
    PanelDialog dialog = PanelDialog::Desktop;

    /// The chosen files, in the dialog's order; none when it is cancelled.
    QList<QUrl> runModal(QWidget *parentWindow) const;

    /// For tests: answers in the person's place, without showing anything, while it is set.
    static void setResponder(std::function<QList<QUrl>(const OpenPanel &)> responder);
};

/// Asks for a place and a name to save to, modally. The dialog itself asks before an existing file is overwritten; some
/// desktops' dialogs do not add the default extension.
struct SavePanel
{
    QString title;
    QStringList nameFilters;
    /// Without the dot; added to a name that has no extension, before the dialog asks about overwriting.
    QString defaultSuffix;
    /// Folder and name that are proposed.
    QUrl suggestedFile;

    /// Nothing when it is cancelled.
    std::optional<QUrl> runModal(QWidget *parentWindow) const;

    static void setResponder(std::function<std::optional<QUrl>(const SavePanel &)> responder);
};

} // namespace inkory
