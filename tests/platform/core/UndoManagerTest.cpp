#include "platform/core/UndoManager.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

/// Holds one value. What undoes setting it is setting it back.
class Cell : public UndoTarget
{
public:
    explicit Cell(UndoManager &undoManager) : manager(undoManager) {}

    void set(int newValue)
    {
        manager.registerUndo(*this, u"set"_qs, value);
        value = newValue;
    }
    void performUndoOperation(const QString &operation, const QVariant &argument) override
    {
        ASSERT_EQ(operation, u"set"_qs);
        set(argument.toInt());
    }

    UndoManager &manager;
    int value = 0;
};

class UndoManagerTest : public ::testing::Test
{
protected:
    void setInOwnStep(int value, const QString &name = {})
    {
        m_cell.set(value);
        m_manager.setActionName(name);
        QCoreApplication::processEvents();
    }

    UndoManager m_manager;
    Cell m_cell{m_manager};
};

TEST_F(UndoManagerTest, UndoAndRedoWalkThroughTheStepsWithTheirNames)
{
    setInOwnStep(1, u"One"_qs);
    setInOwnStep(2, u"Two"_qs);
    m_manager.undo();
    EXPECT_EQ(m_cell.value, 1);
    EXPECT_EQ(m_manager.undoActionName(), u"One"_qs);
    EXPECT_EQ(m_manager.redoActionName(), u"Two"_qs);
    m_manager.undo();
    EXPECT_EQ(m_cell.value, 0);
    EXPECT_FALSE(m_manager.canUndo());
    for (int redone = 0; redone < 3; ++redone)
        m_manager.redo();
    EXPECT_EQ(m_cell.value, 2);
    EXPECT_FALSE(m_manager.canRedo());
    m_manager.undo();
    setInOwnStep(3);
    EXPECT_FALSE(m_manager.canRedo());
}

TEST_F(UndoManagerTest, EventsThatWaitedTogetherAreStepsOfTheirOwnButMovesAreNot)
{
    QObject receiver;
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    QMouseEvent press(QEvent::MouseButtonPress, {}, {}, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, {}, {}, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QMouseEvent move(QEvent::MouseMove, {}, {}, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    for (QEvent *event : QList<QEvent *>{&key, &press, &release, &move}) {
        setInOwnStep(0);
        m_cell.set(1);
        QCoreApplication::sendEvent(&receiver, event);
        m_cell.set(2);
        m_manager.undo();
        EXPECT_EQ(m_cell.value, event == &move ? 0 : 1) << event->type();
    }
}

TEST_F(UndoManagerTest, DeadTargetsAreSkipped)
{
    m_cell.set(1);
    Cell(m_manager).set(7);
    m_manager.undo();
    EXPECT_EQ(m_cell.value, 0);
}

TEST_F(UndoManagerTest, EditedComparesWithTheSavedState)
{
    setInOwnStep(1);
    EXPECT_TRUE(m_manager.isEdited());
    m_manager.undo();
    EXPECT_FALSE(m_manager.isEdited());
    m_manager.redo();
    m_manager.markClean();
    EXPECT_FALSE(m_manager.isEdited());
    m_manager.undo();
    EXPECT_TRUE(m_manager.isEdited());
    m_manager.redo();
    EXPECT_FALSE(m_manager.isEdited());
    m_manager.undo();
    setInOwnStep(1); // another way, not back to what was saved
    EXPECT_TRUE(m_manager.isEdited());
    const quint64 saved = m_manager.stateToken();
    m_cell.set(2); // while the saving was going on
    m_manager.markClean(saved);
    EXPECT_TRUE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, TheLastStepIsRemovedOnlyIfItIsTheOneMeant)
{
    setInOwnStep(5, u"Kept"_qs);
    m_manager.markClean();
    setInOwnStep(6, u"Removed"_qs);
    m_manager.removeLastStep(m_cell, u"other"_qs, 5);
    m_manager.removeLastStep(m_cell, u"set"_qs, 6);
    EXPECT_EQ(m_manager.undoActionName(), u"Removed"_qs);
    m_manager.removeLastStep(m_cell, u"set"_qs, 5);
    EXPECT_EQ(m_manager.undoActionName(), u"Kept"_qs);
    EXPECT_FALSE(m_manager.isEdited());
}

} // namespace
