#include "V1/library/ImageStampSelectionController.h"

#include "V1/library/ImageStampCollection.h"
#include "V1/library/SignatureListDelegate.h"
#include "V1/library/SignatureListView.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/ModalSession.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>

#include <algorithm>

using inkory::UserDefaults;

namespace
{

enum DialogCode { Closed = 0, ImageChosen = 1, SignatureWanted = 2 };

constexpr qsizetype shownProblems = 3;
const QString lastFolderKey = QStringLiteral("LAST_IMAGE_STAMP_DIR_USED");

struct Shared
{
    std::unique_ptr<ImageStampSelectionController> controller;
    ImageStampSelectionController::SignatureWindowRunner runSignatureWindow;
};

Shared &shared()
{
    static Shared state;
    return state;
}

/// The desktops' own panels write each chosen file to the list of recent files, where other programs show it.
inkory::OpenPanel makeOpenPanel(const QUrl &folder)
{
    QStringList patterns;
    for (const QString &extension : ImageStampCollection::stampViewFileTypes())
        patterns.append(QStringLiteral("*.") + extension);
    inkory::OpenPanel panel;
    panel.title = ImageStampSelectionController::tr("Add Image from Disk");
    panel.nameFilters = {
        QStringLiteral("%1 (%2)").arg(ImageStampSelectionController::tr("Images"), patterns.join(QLatin1Char(' ')))};
    panel.folder = folder;
    panel.selection = inkory::OpenPanel::Selection::Several;
    panel.dialog = inkory::PanelDialog::Toolkit;
    return panel;
}

QUrl homeFolder()
{
    return QUrl::fromLocalFile(QDir::homePath() + QLatin1Char('/'));
}

QUrl folderToStartIn()
{
    const QUrl folder = UserDefaults::standard().url(lastFolderKey).value_or(homeFolder());
    return QDir(folder.toLocalFile()).exists() ? folder : homeFolder();
}

QStringList droppedPaths(const QMimeData &data)
{
    QStringList paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

} // namespace

ImageStampSelectionController::ImageStampSelectionController() : WindowController(QStringLiteral("ImageStampSelection"))
{
}

ImageStampSelectionController &ImageStampSelectionController::sharedImageStampSelection()
{
    auto &controller = shared().controller;
    if (!controller) {
        controller.reset(new ImageStampSelectionController);
        qAddPostRoutine(&releaseShared); // a window must not outlive the application object
    }
    return *controller;
}

void ImageStampSelectionController::releaseShared()
{
    shared().controller.reset();
}

void ImageStampSelectionController::setSignatureWindowRunner(SignatureWindowRunner runner)
{
    shared().runSignatureWindow = std::move(runner);
}

void ImageStampSelectionController::awakeFromNib()
{
    if (!UserDefaults::standard().url(lastFolderKey)) {
        UserDefaults::standard().setUrl(lastFolderKey, homeFolder());
        (void)UserDefaults::standard().synchronize(); // logs by itself; the value is set in any case
    }
    const QWidget &root = *window();
    m_imageTableView = inkory::outlet<inkory::SignatureListView>(root, QStringLiteral("imageTableView"));
    m_emptyListMessageTextField = inkory::outlet<QLabel>(root, QStringLiteral("emptyListMessageTextField"));
    m_selectButton = inkory::outlet<QPushButton>(root, QStringLiteral("selectButton"));
    m_addButton = inkory::outlet<QPushButton>(root, QStringLiteral("addButton"));
    m_removeButton = inkory::outlet<QPushButton>(root, QStringLiteral("removeButton"));
    m_createSignatureButton = inkory::outlet<QPushButton>(root, QStringLiteral("createSignatureButton"));
    m_messageFrame = inkory::outlet<QFrame>(root, QStringLiteral("messageFrame"));
    m_messageFrame->hide();
    m_messageFrame->setBackgroundRole(QPalette::ToolTipBase); // a pair of colours that every scheme has
    inkory::outlet<QLabel>(root, QStringLiteral("messageLabel"))->setForegroundRole(QPalette::ToolTipText);
    // The message lies over the list; what is dropped on it is meant for the list.
    m_emptyListMessageTextField->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_imageTableView->setModel(&m_model);
    m_imageTableView->setItemDelegate(new inkory::SignatureListDelegate(m_imageTableView));
    connectOutlets();
    validateTableViewMessage();
    m_selectButton->setEnabled(false);
    m_removeButton->setEnabled(false);
}

void ImageStampSelectionController::connectOutlets()
{
    using Self = ImageStampSelectionController;
    const QWidget &root = *window();
    auto *closeButton = inkory::outlet<QPushButton>(root, QStringLiteral("closeButton"));
    // The order of the two is the desktop's.
    auto *buttonBox = inkory::outlet<QDialogButtonBox>(root, QStringLiteral("buttonBox"));
    buttonBox->addButton(closeButton, QDialogButtonBox::RejectRole);
    buttonBox->addButton(m_selectButton, QDialogButtonBox::AcceptRole);

    connect(m_selectButton, &QPushButton::clicked, this, &Self::setImageStamp);
    connect(m_removeButton, &QPushButton::clicked, this, &Self::removeImage);
    connect(m_addButton, &QPushButton::clicked, this, &Self::addImage);
    connect(m_createSignatureButton, &QPushButton::clicked, this, &Self::createSignature);
    connect(closeButton, &QPushButton::clicked, this, &Self::closeDialog);
    connect(qobject_cast<QDialog *>(window()), &QDialog::rejected, this, &Self::closeDialog); // Escape, closing
    connect(m_imageTableView, &QAbstractItemView::doubleClicked, this, &Self::imageTableViewDoubleClick);
    connect(m_imageTableView->selectionModel(), &QItemSelectionModel::selectionChanged, this, &Self::setButtonsEnable);
    // Backspace does not remove: it is pressed too easily for what cannot be undone.
    connect(new QShortcut(Qt::Key_Delete, m_imageTableView, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &Self::removeImage);
    m_imageTableView->setDropHandlers([this](const QMimeData &data) { return validateDrop(data); },
                                      [this](const QMimeData &data) { return acceptDrop(data); });
}

bool ImageStampSelectionController::showModal(inkory::ImageStampReceiver &pdfWindowController)
{
    QWidget *dialog = m_running ? nullptr : window();
    if (!dialog)
        return false;
    m_pdfWindowController = &pdfWindowController;
    const auto &runSignatureWindow = shared().runSignatureWindow;
    m_createSignatureButton->setVisible(runSignatureWindow != nullptr);
    m_messageFrame->hide();
    reloadData();
    validateTableViewMessage();
    if (m_imageTableView->selectedRow() < 0)
        m_imageTableView->selectRow(0); // Return is enough to choose
    if (ImageStampCollection::count() == 0)
        m_addButton->setFocus();
    else
        m_imageTableView->setFocus();

    m_running = true;
    const int code = inkory::runModalForWindow(*dialog, pdfWindowController.imageStampWindow());
    m_running = false;
    dialog->hide();
    if (code == SignatureWanted)
        return runSignatureWindow && runSignatureWindow(pdfWindowController);
    return code == ImageChosen;
}

void ImageStampSelectionController::endSession(int code)
{
    if (!m_running) // closing a window can be reported twice; the session outside must not be stopped by it
        return;
    m_running = false;
    inkory::stopModalWithCode(code);
}

void ImageStampSelectionController::setImageStamp()
{
    const int row = m_imageTableView->selectedRow();
    if (m_running && row >= 0 && row < ImageStampCollection::count())
        m_pdfWindowController->setImageStampViewImage(ImageStampCollection::stampImageAtIndex(row));
    endSession(ImageChosen);
}

void ImageStampSelectionController::imageTableViewDoubleClick()
{
    setImageStamp();
}

void ImageStampSelectionController::createSignature()
{
    endSession(SignatureWanted);
}

void ImageStampSelectionController::closeDialog()
{
    endSession(Closed);
}

void ImageStampSelectionController::addImage()
{
    const QList<QUrl> urls = makeOpenPanel(folderToStartIn()).runModal(window());
    if (!urls.isEmpty()) {
        UserDefaults::standard().setUrl(lastFolderKey, urls.constFirst().adjusted(QUrl::RemoveFilename));
        const int position = ImageStampCollection::addImages(urls);
        reloadData();
        if (position >= 0) {
            m_imageTableView->selectRow(position);
            m_imageTableView->setFocus(); // Return chooses the new one
        }
        showProblems();
    }
    validateTableViewMessage();
}

void ImageStampSelectionController::removeImage()
{
    ImageStampCollection::removeStampImageAtIndex(m_imageTableView->selectedRow());
    reloadData();
    validateTableViewMessage();
    showProblems();
}

Qt::DropAction ImageStampSelectionController::validateDrop(const QMimeData &data) const
{
    const QStringList paths = droppedPaths(data);
    const bool anyImage = std::any_of(paths.begin(), paths.end(), [](const QString &path) {
        return ImageStampCollection::validateImageUrl(QUrl::fromLocalFile(path));
    });
    return anyImage ? Qt::CopyAction : Qt::IgnoreAction;
}

bool ImageStampSelectionController::acceptDrop(const QMimeData &data)
{
    const QStringList paths = droppedPaths(data);
    if (paths.isEmpty())
        return false;
    const int position = ImageStampCollection::addImages(paths);
    reloadData(); // in any case: other processes may have changed the library
    validateTableViewMessage();
    showProblems();
    if (position < 0)
        return false;
    m_imageTableView->scrollTo(m_model.index(position, 0));
    return true;
}

void ImageStampSelectionController::validateTableViewMessage()
{
    const QString advice = shared().runSignatureWindow
                               ? tr("Add an image of your signature from disk, draw one, or drop an image file here.")
                               : tr("Add an image of your signature from disk, or drop an image file here.");
    m_emptyListMessageTextField->setText(
        QStringLiteral("<p><b>%1</b></p><p>%2</p>").arg(tr("No signatures yet"), advice));
    m_emptyListMessageTextField->setVisible(ImageStampCollection::count() == 0);
}

void ImageStampSelectionController::setButtonsEnable()
{
    const int row = m_imageTableView->selectedRow();
    const bool valid = row >= 0 && row < ImageStampCollection::count();
    m_selectButton->setEnabled(valid);
    m_removeButton->setEnabled(valid);
}

void ImageStampSelectionController::reloadData()
{
    const int row = m_imageTableView->selectedRow();
    m_model.reload();
    m_imageTableView->selectRow(std::min(row, m_model.rowCount() - 1));
    setButtonsEnable();
}

/// Shows what the last change of the library could not do, in the dialog itself; hides the message when there is
/// nothing.
void ImageStampSelectionController::showProblems()
{
    QStringList lines = ImageStampCollection::problems();
    m_messageFrame->setVisible(!lines.isEmpty());
    if (lines.isEmpty())
        return;
    if (const qsizetype others = lines.size() - shownProblems; others > 0) {
        lines = lines.first(shownProblems);
        lines.append(tr("And %n more.", nullptr, static_cast<int>(others)));
    }
    auto *label = inkory::outlet<QLabel>(*window(), QStringLiteral("messageLabel"));
    label->setText(lines.join(QLatin1Char('\n')));
    auto *icon = inkory::outlet<QLabel>(*window(), QStringLiteral("messageIcon"));
    const QStyle &style = *window()->style();
    icon->setPixmap(
        style.standardIcon(QStyle::SP_MessageBoxWarning).pixmap(style.pixelMetric(QStyle::PM_SmallIconSize)));
    QAccessibleEvent alert(label, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}
