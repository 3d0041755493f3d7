#include "platform/core/UndoManager.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace inkory
{
namespace
{

/// Holds one value. What undoes setting it is setting it back.
class Cell : public UndoTarget
{
public:
    explicit Cell(UndoManager &manager) : m_manager(manager) {}

    void set(int value, const QString &name = {})
    {
        m_manager.registerUndo(*this, u"set"_qs, m_value);
        if (!name.isEmpty())
            m_manager.setActionName(name);
        m_value = value;
        performed << value;
    }
    void performUndoOperation(const QString &operation, const QVariant &argument) override
    {
        ASSERT_EQ(operation, u"set"_qs);
        set(argument.toInt());
    }
    int value() const { return m_value; }

    QList<int> performed;

private:
    UndoManager &m_manager;
    int m_value = 0;
};

/// Its operation has no opposite.
class OneWay : public UndoTarget
{
public:
    void performUndoOperation(const QString &, const QVariant &) override {}
};

class UndoManagerTest : public ::testing::Test
{
protected:
    static void letEventLoopRun() { QCoreApplication::processEvents(); }
    void setInOwnStep(int value, const QString &name = {})
    {
        m_cell.set(value, name);
        letEventLoopRun();
    }

    UndoManager m_manager;
    Cell m_cell{m_manager};
};

TEST_F(UndoManagerTest, UndoAndRedoWalkThroughTheStepsWithTheirNames)
{
    EXPECT_FALSE(m_manager.canUndo());
    m_manager.undo();
    setInOwnStep(1, u"One"_qs);
    setInOwnStep(2, u"Two"_qs);
    EXPECT_EQ(m_manager.undoActionName(), u"Two"_qs);
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), 1);
    EXPECT_EQ(m_manager.undoActionName(), u"One"_qs);
    EXPECT_EQ(m_manager.redoActionName(), u"Two"_qs);
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), 0);
    EXPECT_FALSE(m_manager.canUndo());
    m_manager.redo();
    m_manager.redo();
    m_manager.redo();
    EXPECT_EQ(m_cell.value(), 2);
    EXPECT_FALSE(m_manager.canRedo());
    EXPECT_EQ(m_manager.undoActionName(), u"Two"_qs);
}

TEST_F(UndoManagerTest, ANewChangeEndsRedo)
{
    setInOwnStep(1);
    m_manager.undo();
    setInOwnStep(2);
    EXPECT_FALSE(m_manager.canRedo());
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), 0);
}

TEST_F(UndoManagerTest, RegistrationsOfOneEventAreOneStepUndoneInReverse)
{
    m_cell.set(1);
    m_cell.set(2, u"Both"_qs);
    EXPECT_TRUE(m_manager.canUndo());
    EXPECT_EQ(m_manager.undoActionName(), u"Both"_qs);
    m_manager.undo(); // closes the open step itself
    EXPECT_EQ(m_cell.performed, QList<int>({1, 2, 1, 0}));
    EXPECT_FALSE(m_manager.canUndo());
    m_manager.redo();
    EXPECT_EQ(m_cell.value(), 2);
}

TEST_F(UndoManagerTest, AStepEndsWhenControlReturnsToAnEventLoopAlsoANestedOne)
{
    m_cell.set(1);
    QEventLoop nested;
    QMetaObject::invokeMethod(&nested, &QEventLoop::quit, Qt::QueuedConnection);
    nested.exec();
    m_cell.set(2);
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), 1);
}

class StepEndingEvent : public UndoManagerTest, public ::testing::WithParamInterface<QEvent::Type>
{
};

TEST_P(StepEndingEvent, SeparatesStepsOfEventsThatWaitedTogether)
{
    QObject receiver;
    m_cell.set(1);
    if (GetParam() == QEvent::KeyPress) {
        QKeyEvent event(GetParam(), Qt::Key_A, Qt::NoModifier);
        QCoreApplication::sendEvent(&receiver, &event);
    } else {
        QMouseEvent event(GetParam(), {}, {}, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&receiver, &event);
    }
    m_cell.set(2);
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), GetParam() == QEvent::MouseMove ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(All, StepEndingEvent,
                         ::testing::Values(QEvent::KeyPress, QEvent::MouseButtonPress, QEvent::MouseButtonDblClick,
                                           QEvent::MouseButtonRelease, QEvent::MouseMove));

TEST_F(UndoManagerTest, ANameForNoOpenStepIsTheLastStepsName)
{
    setInOwnStep(1);
    m_manager.setActionName(u"Late"_qs);
    EXPECT_EQ(m_manager.undoActionName(), u"Late"_qs);
}

TEST_F(UndoManagerTest, DeadTargetsAreSkipped)
{
    {
        Cell gone(m_manager);
        m_cell.set(1);
        gone.set(7);
    }
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), 0);
    EXPECT_TRUE(m_manager.canRedo());
}

TEST_F(UndoManagerTest, ArgumentsLiveAsLongAsTheirStep)
{
    auto owned = std::make_shared<QObject>();
    const std::weak_ptr<QObject> watched = owned;
    m_manager.registerUndo(m_cell, u"set"_qs, QVariant::fromValue(std::exchange(owned, nullptr)));
    letEventLoopRun();
    EXPECT_FALSE(watched.expired());
    m_manager.removeAllSteps();
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(m_manager.canUndo());
    EXPECT_TRUE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, EditedComparesWithTheSavedState)
{
    EXPECT_FALSE(m_manager.isEdited());
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
}

TEST_F(UndoManagerTest, ChangesAfterTheSavedStateWasTakenStayUnsaved)
{
    m_cell.set(1);
    const quint64 saved = m_manager.stateToken();
    m_cell.set(2); // still the same step
    m_manager.markClean(saved);
    EXPECT_TRUE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, AChangeWithoutStepKeepsUndoFromReachingTheSavedState)
{
    setInOwnStep(1);
    m_manager.noteChangeWithoutStep();
    m_manager.undo();
    EXPECT_EQ(m_cell.value(), 0);
    EXPECT_TRUE(m_manager.isEdited());
    m_manager.markClean();
    m_manager.redo();
    m_manager.undo();
    EXPECT_FALSE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, AChangeWithoutStepKeepsRedoFromReachingTheSavedState)
{
    setInOwnStep(1);
    m_manager.markClean();
    m_manager.undo();
    m_manager.noteChangeWithoutStep();
    m_manager.redo();
    EXPECT_EQ(m_cell.value(), 1);
    EXPECT_TRUE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, AChangeWithoutStepIsKeptByAnOpenStepToo)
{
    m_cell.set(1);
    m_manager.noteChangeWithoutStep();
    m_manager.undo();
    EXPECT_TRUE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, RedoDoesNotClaimTheSavedStateAcrossAStepThatCannotBeRedone)
{
    OneWay oneWay;
    m_manager.registerUndo(oneWay, u"go"_qs, {});
    letEventLoopRun();
    setInOwnStep(1);
    m_manager.markClean();
    m_manager.undo();
    m_manager.undo();
    m_manager.redo(); // the cell is 1 again, but what oneWay did is missing
    EXPECT_EQ(m_cell.value(), 1);
    EXPECT_TRUE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, TheLastStepIsRemovedOnlyIfItIsTheOneMeant)
{
    Cell other(m_manager);
    setInOwnStep(5, u"Kept"_qs);
    m_manager.markClean();
    setInOwnStep(6, u"Removed"_qs);
    m_manager.removeLastStep(other, u"set"_qs, 5);
    m_manager.removeLastStep(m_cell, u"other"_qs, 5);
    m_manager.removeLastStep(m_cell, u"set"_qs, 6);
    EXPECT_EQ(m_manager.undoActionName(), u"Removed"_qs);
    m_manager.removeLastStep(m_cell, u"set"_qs, 5);
    EXPECT_EQ(m_manager.undoActionName(), u"Kept"_qs);
    EXPECT_FALSE(m_manager.isEdited());
}

TEST_F(UndoManagerTest, RemovingAnOperationKeepsTheRestOfItsStep)
{
    Cell other(m_manager);
    other.set(3);
    m_cell.set(1);
    m_manager.removeLastStep(m_cell, u"set"_qs, 0);
    m_manager.undo();
    EXPECT_EQ(other.value(), 0);
    EXPECT_EQ(m_cell.value(), 1);
}

TEST_F(UndoManagerTest, TellsOfEveryChangeOfWhatItAnswers)
{
    QSignalSpy spy(&m_manager, &UndoManager::changed);
    m_cell.set(1);
    EXPECT_EQ(spy.count(), 1);
    m_manager.setActionName(u"x"_qs);
    EXPECT_EQ(spy.count(), 2);
    m_manager.markClean();
    EXPECT_EQ(spy.count(), 3);
    m_manager.markClean();
    EXPECT_EQ(spy.count(), 3);
    m_manager.undo();
    EXPECT_EQ(spy.count(), 4);
}

/// Asks the manager what it is doing, and tries to disturb it.
class Meddler : public UndoTarget
{
public:
    explicit Meddler(UndoManager &manager) : m_manager(manager) {}
    void performUndoOperation(const QString &, const QVariant &) override
    {
        undoing = m_manager.isUndoing();
        redoing = m_manager.isRedoing();
        m_manager.registerUndo(*this, u"go"_qs, {});
        m_manager.noteChangeWithoutStep();
        QCoreApplication::processEvents();
        m_manager.undo();
        m_manager.redo();
    }

    bool undoing = false;
    bool redoing = false;

private:
    UndoManager &m_manager;
};

TEST_F(UndoManagerTest, WhatAnOperationDoesToTheManagerWhileUndoingBelongsToTheStep)
{
    Meddler meddler(m_manager);
    setInOwnStep(1);
    m_manager.markClean();
    m_manager.registerUndo(meddler, u"go"_qs, {});
    m_manager.undo();
    EXPECT_TRUE(meddler.undoing && !meddler.redoing);
    EXPECT_EQ(m_cell.value(), 1);
    EXPECT_FALSE(m_manager.isEdited());
    m_manager.redo();
    EXPECT_TRUE(meddler.redoing && !meddler.undoing);
    m_manager.undo();
    EXPECT_FALSE(m_manager.isEdited());
}

} // namespace
} // namespace inkory
