#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QStyledItemDelegate>
#include <QUrl>

namespace inkory
{

/// The recent documents as a table of one column: a snapshot, not refreshed. The folder's path is FolderRole.
class RecentDocumentsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role { FolderRole = Qt::UserRole };

    explicit RecentDocumentsModel(QList<QUrl> urls, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    /// File name with extension; the whole path as tool tip; nothing for other rows and roles.
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QList<QUrl> m_urls;
};

/// Draws a recent document: a sheet of paper, the file's name, and below it the folder in a quieter colour. The size
/// that it asks for is wide enough for the name; a long folder is cut.
class RecentDocumentDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace inkory
