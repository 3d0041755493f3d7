#include "V1/library/SignatureListModel.h"

#include "V1/library/ImageStampCollection.h"

namespace inkory
{

void SignatureListModel::reload()
{
    beginResetModel();
    endResetModel();
}

int SignatureListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(ImageStampCollection::count());
}

QVariant SignatureListModel::data(const QModelIndex &index, int role) const
{
    const ImagePtr image = index.isValid() ? ImageStampCollection::stampImageAtIndex(index.row()) : nullptr;
    if (!image)
        return {};
    if (role == ImageRole)
        return QVariant::fromValue(image);
    if (role == Qt::AccessibleTextRole)
        return tr("Signature %1 of %2").arg(index.row() + 1).arg(rowCount());
    if (role == Qt::AccessibleDescriptionRole || role == Qt::ToolTipRole)
        return tr("%1 × %2 pixels").arg(image->pixels().width()).arg(image->pixels().height());
    return {};
}

} // namespace inkory
