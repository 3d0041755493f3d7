#include "V1/application/WelcomeWindowController.h"

#include "V1/application/DropArea.h"
#include "V1/application/RecentDocumentsModel.h"
#include "platform/widgets/DocumentController.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/ModalSession.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QMimeDatabase>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QTimer>

#include <algorithm>
#include <chrono>

using inkory::DocumentController;
using inkory::DropArea;

namespace
{

constexpr std::chrono::milliseconds checkAfterPanelDelay(100);
constexpr double titleSizeRatio = 1.8;
constexpr double hintTitleSizeRatio = 1.25;

void scaleFont(QLabel *label, double ratio, QFont::Weight weight)
{
    if (!label)
        return;
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * ratio);
    font.setWeight(weight);
    label->setFont(font);
}

QStringList validPaths(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile() && WelcomeWindowController::isValidPdfDocument(url.toLocalFile()))
            paths.append(url.toLocalFile());
    }
    return paths;
}

} // namespace

void WelcomeWindowController::awakeFromNib()
{
    QWidget &root = *window();
    m_recentDocumentsTableView = inkory::outlet<QTableView>(root, QStringLiteral("recentDocumentsTableView"));
    m_openButton = inkory::outlet<QPushButton>(root, QStringLiteral("openButton"));
    m_noRecentTextField = inkory::outlet<QLabel>(root, QStringLiteral("noRecentTextField"));
    m_dragFilesTextField = inkory::outlet<QLabel>(root, QStringLiteral("dragFilesTextField"));
    m_dropArea = inkory::outlet<DropArea>(root, QStringLiteral("dropArea"));
    auto *openPanelButton = inkory::outlet<QPushButton>(root, QStringLiteral("openPanelButton"));

    if (const auto *controller = DocumentController::sharedDocumentController())
        m_recentDocuments = controller->recentDocumentURLs();
    const bool isEmpty = m_recentDocuments.isEmpty();
    m_noRecentTextField->setVisible(isEmpty);
    m_dragFilesTextField->setVisible(isEmpty);
    m_recentDocumentsTableView->setVisible(!isEmpty);
    m_dropArea->setLook(isEmpty ? DropArea::Look::Quiet : DropArea::Look::Hidden);

    QTableView &table = *m_recentDocumentsTableView;
    table.setModel(new inkory::RecentDocumentsModel(m_recentDocuments, &table));
    table.setItemDelegate(new inkory::RecentDocumentDelegate(&table));
    table.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table.installEventFilter(this);
    table.viewport()->installEventFilter(this);
    for (int row = 0; row < m_recentDocuments.size(); ++row)
        growColumn(row);
    connect(&table, &QTableView::doubleClicked, this, &WelcomeWindowController::openSelectedDocument);
    connect(table.selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &WelcomeWindowController::tableViewSelectionDidChange);
    connect(m_openButton, &QPushButton::clicked, this, &WelcomeWindowController::openSelectedDocument);
    connect(openPanelButton, &QPushButton::clicked, this, &WelcomeWindowController::openDocument);
    root.setAcceptDrops(true);
    styleTexts();
    makeShortcuts();
    (isEmpty ? static_cast<QWidget *>(openPanelButton) : m_recentDocumentsTableView)->setFocus();
}

void WelcomeWindowController::styleTexts()
{
    scaleFont(inkory::outlet<QLabel>(*window(), QStringLiteral("titleTextField")), titleSizeRatio, QFont::Bold);
    scaleFont(m_noRecentTextField, hintTitleSizeRatio, QFont::DemiBold);
}

void WelcomeWindowController::makeShortcuts()
{
    const auto add = [this](QKeySequence::StandardKey key, auto operation) {
        auto *shortcut = new QShortcut(QKeySequence(key), window());
        connect(shortcut, &QShortcut::activated, this, operation);
    };
    add(QKeySequence::Open, &WelcomeWindowController::openDocument);
    add(QKeySequence::Close, [this] { window()->close(); });
    add(QKeySequence::Quit, [this] { window()->close(); });
}

int WelcomeWindowController::selectedRow() const
{
    const auto *selection = m_recentDocumentsTableView->selectionModel();
    const QModelIndexList rows = selection ? selection->selectedRows() : QModelIndexList();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void WelcomeWindowController::tableViewSelectionDidChange()
{
    m_openButton->setEnabled(hasValidSelection());
}

void WelcomeWindowController::growColumn(int row)
{
    const QTableView &table = *m_recentDocumentsTableView;
    QStyleOptionViewItem option;
    option.font = table.font();
    const auto width = static_cast<float>(table.itemDelegate()->sizeHint(option, table.model()->index(row, 0)).width());
    m_widestCell = std::max(m_widestCell, width);
    fillColumn();
}

void WelcomeWindowController::fillColumn()
{
    const int width = std::max(qRound(m_widestCell), m_recentDocumentsTableView->viewport()->width());
    m_recentDocumentsTableView->setColumnWidth(0, width);
}

void WelcomeWindowController::openDocument()
{
    auto *controller = DocumentController::sharedDocumentController();
    if (!controller)
        return;
    controller->openDocument(this);
    QTimer::singleShot(checkAfterPanelDelay, this, &WelcomeWindowController::closeIfDocumentOpened);
}

void WelcomeWindowController::openSelectedDocument()
{
    auto *controller = DocumentController::sharedDocumentController();
    if (!controller || !hasValidSelection())
        return;
    controller->openDocumentWithContentsOfURL(m_recentDocuments.at(selectedRow()), DocumentController::Display::Yes);
    if (!controller->documents().isEmpty())
        closeDialog();
}

void WelcomeWindowController::orderOut()
{
    m_isClosed = true;
    m_recentDocumentsTableView->setModel(nullptr);
    window()->hide();
}

void WelcomeWindowController::closeDialog()
{
    if (m_isClosed)
        return;
    orderOut();
    inkory::stopModal();
}

void WelcomeWindowController::abortDialog()
{
    if (m_isClosed)
        return;
    orderOut();
    inkory::abortModal();
}

void WelcomeWindowController::closeIfDocumentOpened()
{
    const auto *controller = DocumentController::sharedDocumentController();
    if (controller && !controller->documents().isEmpty())
        abortDialog();
}

void WelcomeWindowController::windowWillClose()
{
    if (m_isClosed)
        return;
    m_isClosed = true;
    m_wasDismissedByUser = true;
    inkory::stopModal();
}

Qt::DropAction WelcomeWindowController::draggingEntered(const QMimeData &data) const
{
    return validPaths(data).isEmpty() ? Qt::IgnoreAction : Qt::CopyAction;
}

bool WelcomeWindowController::performDragOperation(const QMimeData &data)
{
    const QStringList paths = validPaths(data);
    auto *controller = DocumentController::sharedDocumentController();
    if (paths.isEmpty() || !controller)
        return false;
    window()->hide();
    for (const QString &path : paths)
        controller->openDocumentWithContentsOfURL(QUrl::fromLocalFile(path), DocumentController::Display::Yes);
    closeDialog();
    return true;
}

bool WelcomeWindowController::isValidPdfDocument(const QString &path)
{
    const QFileInfo info(path);
    return info.isFile() && QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchContent).name() ==
                                QStringLiteral("application/pdf");
}

bool WelcomeWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (isWindowLoaded() && watched == window() && handleDragEvent(*event))
        return true;
    if (m_recentDocumentsTableView && watched == m_recentDocumentsTableView->viewport() &&
        event->type() == QEvent::Resize)
        fillColumn();
    if (watched == m_recentDocumentsTableView && event->type() == QEvent::KeyPress &&
        handleTableKey(static_cast<const QKeyEvent &>(*event).key()))
        return true;
    return WindowController::eventFilter(watched, event);
}

bool WelcomeWindowController::handleTableKey(int key)
{
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        openSelectedDocument();
        return true;
    }
    // A list that gets the focus makes its first row the current one without selecting it; the key would go to the
    // second.
    const bool moves = key == Qt::Key_Down || key == Qt::Key_Up;
    if (!moves || hasValidSelection() || m_recentDocuments.isEmpty())
        return false;
    m_recentDocumentsTableView->selectRow(0);
    return true;
}

/// Looks into the files when a drag enters, not at each of its moves. The pointer's shape follows from accepting or
/// ignoring.
bool WelcomeWindowController::handleDragEvent(QEvent &event)
{
    const auto quietLook = m_recentDocuments.isEmpty() ? DropArea::Look::Quiet : DropArea::Look::Hidden;
    switch (event.type()) {
    case QEvent::DragEnter:
        m_isDropAcceptable = draggingEntered(*static_cast<QDragEnterEvent &>(event).mimeData()) != Qt::IgnoreAction;
        m_dropArea->setLook(m_isDropAcceptable ? DropArea::Look::Inviting : quietLook);
        [[fallthrough]];
    case QEvent::DragMove: {
        auto &drag = static_cast<QDragMoveEvent &>(event);
        drag.setDropAction(m_isDropAcceptable ? Qt::CopyAction : Qt::IgnoreAction);
        drag.setAccepted(m_isDropAcceptable);
        return true;
    }
    case QEvent::DragLeave:
        m_dropArea->setLook(quietLook);
        return true;
    case QEvent::Drop: {
        auto &drop = static_cast<QDropEvent &>(event);
        m_dropArea->setLook(quietLook);
        drop.setDropAction(Qt::CopyAction);
        drop.setAccepted(performDragOperation(*drop.mimeData()));
        return true;
    }
    default:
        return false;
    }
}
