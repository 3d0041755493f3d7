#pragma once

#include <QAbstractListModel>

namespace inkory
{

/// The library as a list for a view: row i is the library's position i. Keeps nothing of its own, so whoever changes
/// the library calls reload().
class SignatureListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    /// The library image (ImagePtr) of a row.
    static constexpr int ImageRole = Qt::UserRole;

    using QAbstractListModel::QAbstractListModel;

    void reload();

    int rowCount(const QModelIndex &parent = {}) const override;
    /// The image for ImageRole; a name for screen readers. Nothing for rows that are no position.
    QVariant data(const QModelIndex &index, int role) const override;
};

} // namespace inkory
