#include "platform/widgets/OutlineModel.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

OutlineItem item(const char *title, int level, bool isOpen = false)
{
    return {QString::fromUtf8(title), level, PageDestination{level, {}}, isOpen};
}

TEST(OutlineModel, MakesATreeOfLevels)
{
    OutlineModel model({item("1", 0, true), item("1.1", 1), item("1.1.1", 2), item("1.2", 1, true), item("\n", 5),
                        item("a\u202eb", 0)});
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.rowCount(), 2);
    const QModelIndex first = model.index(0, 0);
    const QModelIndex second = model.index(1, 0, first);
    EXPECT_EQ(model.rowCount(first), 2);
    EXPECT_EQ(second.data().toString(), QStringLiteral("1.2"));
    const QModelIndex untitled = model.index(0, 0, second);
    EXPECT_EQ(untitled.data().toString(), QStringLiteral("(untitled)")) << "levels that are left out are none";
    EXPECT_EQ(model.item(untitled)->destination->page, 5);
    EXPECT_EQ(untitled.parent(), second);
    EXPECT_EQ(model.index(1, 0).data().toString(), QStringLiteral("a\ufffdb"));
    EXPECT_EQ(model.deepestLevel(), 2);
    EXPECT_EQ(model.indicesOpenAtFirst(5), QModelIndexList({first, second}));
    EXPECT_EQ(model.indicesOpenAtFirst(4), QModelIndexList({first}));
}

} // namespace
