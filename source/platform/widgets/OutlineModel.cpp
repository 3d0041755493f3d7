#include "platform/widgets/OutlineModel.h"

#include "platform/core/DisplayText.h"
#include "platform/widgets/PlainToolTip.h"

#include <algorithm>
#include <utility>

namespace inkory
{

OutlineModel::OutlineModel(std::vector<OutlineItem> items, QObject *parent)
    : QAbstractItemModel(parent), m_items(std::move(items)), m_nodes(m_items.size() + 1)
{
    std::vector<int> path = {0}; // the node that took an item last on each level, the root before them
    for (int number = 1; number <= static_cast<int>(m_items.size()); ++number) {
        const int level = std::max(0, m_items[static_cast<std::size_t>(number) - 1].level);
        path.resize(std::min(path.size(), static_cast<std::size_t>(level) + 1));
        std::vector<int> &siblings = m_nodes[static_cast<std::size_t>(path.back())].children;
        m_nodes[static_cast<std::size_t>(number)] = {path.back(), static_cast<int>(siblings.size()), {}};
        siblings.push_back(number);
        m_deepestLevel = std::max(m_deepestLevel, static_cast<int>(path.size()) - 1);
        path.push_back(number);
    }
}

OutlineModel::~OutlineModel() = default;

const OutlineItem *OutlineModel::item(const QModelIndex &index) const
{
    const int number = nodeOf(index);
    return number > 0 ? &m_items[static_cast<std::size_t>(number) - 1] : nullptr;
}

QModelIndexList OutlineModel::indicesOpenAtFirst(int mostRows) const
{
    QModelIndexList open;
    std::vector<bool> isShown(m_nodes.size());
    auto rows = node(0).children.size();
    for (int number = 1; number < static_cast<int>(m_nodes.size()); ++number) {
        const int parent = node(number).parent;
        const bool isSeen = parent == 0 || isShown[static_cast<std::size_t>(parent)];
        const auto childCount = node(number).children.size();
        if (!isSeen || childCount == 0 || !m_items[static_cast<std::size_t>(number) - 1].isOpen)
            continue;
        rows += childCount;
        if (rows > static_cast<std::size_t>(mostRows))
            break;
        isShown[static_cast<std::size_t>(number)] = true;
        open.append(indexOf(number));
    }
    return open;
}

QModelIndex OutlineModel::indexOf(int number) const
{
    return number > 0 ? createIndex(node(number).row, 0, static_cast<quintptr>(number)) : QModelIndex();
}

QModelIndex OutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return indexOf(node(nodeOf(parent)).children[static_cast<std::size_t>(row)]);
}

QModelIndex OutlineModel::parent(const QModelIndex &child) const
{
    return indexOf(node(nodeOf(child)).parent);
}

int OutlineModel::rowCount(const QModelIndex &parent) const
{
    return static_cast<int>(node(nodeOf(parent)).children.size());
}

int OutlineModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant OutlineModel::data(const QModelIndex &index, int role) const
{
    const OutlineItem *found = item(index);
    if (!found || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    QString title = displayable(found->title, OutlineItem::longestTitle).trimmed();
    if (title.isEmpty())
        title = tr("(untitled)");
    return role == Qt::ToolTipRole ? plainToolTip(title) : title;
}

} // namespace inkory
