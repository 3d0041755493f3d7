#pragma once

#include "platform/pdf/PageText.h"

#include <QAbstractItemModel>

#include <vector>

namespace inkory
{

/// A document's outline as a tree of one column; never changes once it is made.
class OutlineModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    /// Levels that leave out one are taken for the next one.
    explicit OutlineModel(std::vector<OutlineItem> items, QObject *parent = nullptr);
    ~OutlineModel() override;

    /// None for an invalid index.
    const OutlineItem *item(const QModelIndex &index) const;
    /// Those whose children are to be shown at first, parents before their children, until about `mostRows` rows are
    /// shown.
    QModelIndexList indicesOpenAtFirst(int mostRows) const;
    /// The deepest level that an item has, from 0.
    int deepestLevel() const { return m_deepestLevel; }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct Node
    {
        int parent = 0; // the root is 0, an item's node its number + 1
        int row = 0;
        std::vector<int> children;
    };

    int nodeOf(const QModelIndex &index) const { return index.isValid() ? static_cast<int>(index.internalId()) : 0; }
    const Node &node(int number) const { return m_nodes[static_cast<std::size_t>(number)]; }
    QModelIndex indexOf(int number) const;

    std::vector<OutlineItem> m_items;
    std::vector<Node> m_nodes;
    int m_deepestLevel = 0;
};

} // namespace inkory
