#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

namespace inkory
{

class UndoTarget;

/// Knows whether its target still lives. Does not keep it alive.
using UndoTargetReference = std::weak_ptr<UndoTarget *>;

/// Something whose operations can be registered as undo steps: it performs an operation by its name. A step registered
/// on a target that has been destroyed since is skipped.
class UndoTarget
{
public:
    UndoTarget();
    UndoTarget(const UndoTarget &) = delete;
    UndoTarget &operator=(const UndoTarget &) = delete;
    virtual ~UndoTarget();

    /// Performs the operation. A name that the target does not know is a programming mistake.
    virtual void performUndoOperation(const QString &operation, const QVariant &argument) = 0;

    UndoTargetReference undoTargetReference() const { return m_self; }

private:
    std::shared_ptr<UndoTarget *> m_self;
};

/// A document's undo stack, made of data: a target, an operation's name, one argument value, and an action name for the
/// menu. QUndoStack's commands are objects with code of their own; here what undoes an operation is itself an
/// operation, and what it registers while undoing becomes the redo step.
///
/// All registrations of one event are one step: a step is closed when control returns to the event loop, or when the
/// next key press, pointer press or pointer release arrives (two of them may wait in the queue together). Main thread
/// only.
class UndoManager : public QObject
{
    Q_OBJECT

public:
    explicit UndoManager(QObject *parent = nullptr);
    ~UndoManager() override;

    /// Adds an operation to the open step, or opens one. Outside undo and redo this empties the redo stack. The
    /// argument is kept (and what it owns kept alive) while the step exists.
    void registerUndo(UndoTarget &target, const QString &operation, const QVariant &argument);

    /// What is registered from now on is a step of its own, also during the same event.
    void closeStep();
    /// Names the open step, or, when none is open, the last one. The name is what a person reads after "Undo".
    void setActionName(const QString &name);

    /// Closes the open step, if any, and performs the operations of the last step in reverse order. Does nothing when
    /// there is none, or while undoing or redoing.
    void undo();
    void redo();

    bool canUndo() const;
    bool canRedo() const;
    bool isUndoing() const { return m_mode == Mode::Undoing; }
    bool isRedoing() const { return m_mode == Mode::Redoing; }
    /// Empty when there is nothing to undo or redo, or the step has no name.
    QString undoActionName() const;
    QString redoActionName() const;

    /// Drops every step, open or closed. The edited state stays as it is.
    void removeAllSteps();
    /// Drops the newest step if it was registered for this target with this operation and argument (for undoing the
    /// registration of something that turned out not to exist); the document is then as edited as it was before that
    /// step. A step with further operations keeps those. Does nothing while undoing or redoing.
    void removeLastStep(const UndoTarget &target, const QString &operation, const QVariant &argument);

    /// Counts a change that registers no step (a nudge, say), so that the document counts as edited, also after
    /// undoing: no step takes this change back. While undoing or redoing it does nothing: such a change belongs to the
    /// step.
    void noteChangeWithoutStep();
    /// Makes the present state the clean one (it has just been saved).
    void markClean() { markClean(stateToken()); }
    /// A value that names the present state, for saying later that this was the state that was saved.
    quint64 stateToken() const;
    void markClean(quint64 token);
    /// Whether the present state differs from the clean one. Undoing back to the clean state is clean again.
    bool isEdited() const;

Q_SIGNALS:
    /// What can be undone or redone, a name, or the edited state changed.
    void changed();

private:
    struct Operation
    {
        UndoTargetReference target;
        const UndoTarget *targetIdentity = nullptr; // compared only, never dereferenced
        QString operation;
        QVariant argument;
        QString actionName; // that the step got with it
    };
    struct Step
    {
        std::vector<Operation> operations;
        QString actionName;
        quint64 stateBefore = 0; // the state to which performing this step leads
    };
    enum class Mode { Normal, Undoing, Redoing };

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool openStepIsForUndo() const;
    void scheduleClosing();
    void stopFiltering();
    void perform(std::vector<Step> &from, std::vector<Step> &to, Mode mode);
    void renewStates(std::vector<Step> &steps);
    quint64 newState();

    std::vector<Step> m_undo;
    std::vector<Step> m_redo;
    std::optional<Step> m_open;
    Mode m_mode = Mode::Normal;
    quint64 m_state = 0;
    quint64 m_cleanState = 0;
    quint64 m_lastState = 0;
};

} // namespace inkory
