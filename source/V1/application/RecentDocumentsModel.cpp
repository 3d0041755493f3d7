#include "V1/application/RecentDocumentsModel.h"

#include "platform/core/DisplayText.h"
#include "platform/widgets/PlainToolTip.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>

#include <utility>

namespace inkory
{

namespace
{

constexpr int padding = 8;
constexpr int sheetWidth = 24;
constexpr int sheetHeight = 32;
constexpr int sheetFold = 7;
constexpr int sheetGap = 12;
constexpr double folderSizeRatio = 0.9;
constexpr double quietTextShare = 0.65;

QFont folderFont(QFont font)
{
    font.setPointSizeF(font.pointSizeF() * folderSizeRatio);
    return font;
}

QColor mixed(const QColor &front, const QColor &back, double share)
{
    const auto part = [share](int a, int b) { return qRound(a * share + b * (1 - share)); };
    return {part(front.red(), back.red()), part(front.green(), back.green()), part(front.blue(), back.blue())};
}

/// The home folder's name is of no use to the person who lives there.
QString shortened(const QString &folder)
{
    const QString home = QDir::homePath();
    if (folder == home)
        return QStringLiteral("~");
    return folder.startsWith(home + u'/') ? u'~' + folder.mid(home.size()) : folder;
}

void drawSheet(QPainter &painter, const QRectF &rect, const QColor &edge, const QColor &paper)
{
    QPainterPath path(rect.topLeft());
    path.lineTo(rect.right() - sheetFold, rect.top());
    path.lineTo(rect.right(), rect.top() + sheetFold);
    path.lineTo(rect.bottomRight());
    path.lineTo(rect.bottomLeft());
    path.closeSubpath();
    painter.setPen(QPen(edge, 1));
    painter.setBrush(paper);
    painter.drawPath(path);
    painter.drawPolyline(QPolygonF({{rect.right() - sheetFold, rect.top()},
                                    {rect.right() - sheetFold, rect.top() + sheetFold},
                                    {rect.right(), rect.top() + sheetFold}}));
}

} // namespace

RecentDocumentsModel::RecentDocumentsModel(QList<QUrl> urls, QObject *parent)
    : QAbstractTableModel(parent), m_urls(std::move(urls))
{
}

int RecentDocumentsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_urls.size());
}

int RecentDocumentsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 1;
}

QVariant RecentDocumentsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_urls.size())
        return {};
    const QUrl &url = m_urls.at(index.row());
    const QString path = url.toLocalFile();
    switch (role) {
    case Qt::DisplayRole:
        return displayable(url.fileName());
    case Qt::ToolTipRole:
        return plainToolTip(displayable(path));
    case FolderRole:
        return displayable(shortened(QFileInfo(path).path()));
    case Qt::AccessibleTextRole:
        return tr("%1, in %2").arg(displayable(url.fileName()), displayable(shortened(QFileInfo(path).path())));
    default:
        return {};
    }
}

QSize RecentDocumentDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QFontMetrics name(option.font);
    const QFontMetrics folder(folderFont(option.font));
    const int width = name.horizontalAdvance(index.data().toString());
    const int height = qMax(sheetHeight, name.height() + folder.height());
    return {3 * padding + sheetWidth + sheetGap + width, height + 2 * padding};
}

void RecentDocumentDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QStyleOptionViewItem background = option;
    background.text.clear();
    const QStyle &style = option.widget ? *option.widget->style() : *QApplication::style();
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &background, painter, option.widget);

    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const auto group = option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const QColor ground = option.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
    const QColor text = option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    const QColor quiet = mixed(text, ground, quietTextShare);

    const QRect inner = option.rect.adjusted(padding, padding, -padding, -padding);
    const QRect sheet(inner.x(), inner.center().y() - sheetHeight / 2, sheetWidth, sheetHeight);
    const QRectF crisp = QRectF(QStyle::visualRect(option.direction, inner, sheet)).adjusted(0.5, 0.5, -0.5, -0.5);
    drawSheet(*painter, crisp, quiet, mixed(Qt::white, ground, 0.9));

    const QRect lines = QStyle::visualRect(option.direction, inner, inner.adjusted(sheetWidth + sheetGap, 0, 0, 0));
    const int alignment = QStyle::visualAlignment(option.direction, Qt::AlignLeft) | Qt::TextSingleLine;
    const QFontMetrics name(option.font);
    painter->setFont(option.font);
    painter->setPen(text);
    painter->drawText(lines, alignment | Qt::AlignTop,
                      name.elidedText(index.data().toString(), Qt::ElideMiddle, lines.width()));
    painter->setFont(folderFont(option.font));
    painter->setPen(quiet);
    const QString folder = index.data(RecentDocumentsModel::FolderRole).toString();
    painter->drawText(lines, alignment | Qt::AlignBottom,
                      QFontMetrics(painter->font()).elidedText(folder, Qt::ElideMiddle, lines.width()));
    painter->restore();
}

} // namespace inkory
