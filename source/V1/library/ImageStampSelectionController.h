#pragma once

#include "V1/library/ImageStampReceiver.h"
#include "V1/library/SignatureListModel.h"
#include "platform/widgets/WindowController.h"

#include <functional>

class QFrame;
class QLabel;
class QMimeData;
class QPushButton;

namespace inkory
{
class SignatureListView;
}

/// Runs the dialog in which the person picks the signature that the signature tool places, adds image files to the
/// library and removes them. One for the whole process; a document window shows it each time its signature tool is
/// chosen.
///
/// Main thread only. The interface description "ImageStampSelection" must have been registered.
class ImageStampSelectionController : public inkory::WindowController
{
    Q_OBJECT

public:
    /// Shows the signature window for a document window; answers whether a signature was made there.
    using SignatureWindowRunner = std::function<bool(inkory::ImageStampReceiver &)>;

    static ImageStampSelectionController &sharedImageStampSelection();

    /// Who runs the signature window; without one, drawing is not offered.
    static void setSignatureWindowRunner(SignatureWindowRunner runner);
    /// Ends the shared controller; the next call of sharedImageStampSelection() makes a new one. Not during a run.
    static void releaseShared();

    /// Runs the dialog over the receiver's window. Answers whether an image was chosen (the receiver then has it) or a
    /// new signature was made.
    bool showModal(inkory::ImageStampReceiver &pdfWindowController);

    /// Gives the selected image, if any, to the receiver and ends the dialog.
    void setImageStamp();
    void imageTableViewDoubleClick();
    void addImage();
    void removeImage();
    void createSignature();
    void closeDialog();

    void validateTableViewMessage();
    void setButtonsEnable();

    /// Copy when the data names at least one acceptable image file, otherwise nothing.
    Qt::DropAction validateDrop(const QMimeData &data) const;
    /// Adds the dropped files; whether any was added.
    bool acceptDrop(const QMimeData &data);

protected:
    void awakeFromNib() override;

private:
    ImageStampSelectionController();

    void connectOutlets();
    void endSession(int code);
    void reloadData();
    void showProblems();

    inkory::SignatureListModel m_model;
    inkory::SignatureListView *m_imageTableView = nullptr; // these belong to the window
    QLabel *m_emptyListMessageTextField = nullptr;
    QPushButton *m_addButton = nullptr;
    QPushButton *m_selectButton = nullptr;
    QPushButton *m_removeButton = nullptr;
    QPushButton *m_createSignatureButton = nullptr;
    QFrame *m_messageFrame = nullptr;
    inkory::ImageStampReceiver *m_pdfWindowController = nullptr; // of the current run; not owned
    bool m_running = false;
};
