#include "platform/core/UndoManager.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <utility>

namespace inkory
{

UndoTarget::UndoTarget() : m_self(std::make_shared<UndoTarget *>(this)) {}

UndoTarget::~UndoTarget() = default;

UndoManager::UndoManager(QObject *parent) : QObject(parent) {}

UndoManager::~UndoManager() = default;

void UndoManager::registerUndo(UndoTarget &target, const QString &operation, const QVariant &argument)
{
    std::vector<Step> dropped; // destroyed at the very end: what the steps own may do anything when it goes
    if (!m_open) {
        m_open = Step{};
        m_open->stateBefore = m_state;
        if (m_mode == Mode::Normal)
            scheduleClosing();
    }
    m_open->operations.push_back({target.undoTargetReference(), &target, operation, argument, {}});
    if (m_mode != Mode::Normal)
        return; // perform() sets the state and tells of it when the whole step is done
    dropped.swap(m_redo);
    m_state = newState();
    Q_EMIT changed();
}

void UndoManager::setActionName(const QString &name)
{
    if (m_open) {
        m_open->actionName = name;
        if (!m_open->operations.empty())
            m_open->operations.back().actionName = name;
    } else if (m_mode == Mode::Normal && !m_undo.empty()) {
        m_undo.back().actionName = name;
    }
    if (m_mode == Mode::Normal)
        Q_EMIT changed();
}

void UndoManager::undo()
{
    if (m_mode != Mode::Normal)
        return;
    closeStep();
    perform(m_undo, m_redo, Mode::Undoing);
}

void UndoManager::redo()
{
    if (m_mode != Mode::Normal)
        return;
    closeStep();
    perform(m_redo, m_undo, Mode::Redoing);
}

bool UndoManager::canUndo() const
{
    return openStepIsForUndo() || !m_undo.empty();
}

bool UndoManager::canRedo() const
{
    return !m_redo.empty();
}

QString UndoManager::undoActionName() const
{
    if (openStepIsForUndo())
        return m_open->actionName;
    return m_undo.empty() ? QString() : m_undo.back().actionName;
}

QString UndoManager::redoActionName() const
{
    return m_redo.empty() ? QString() : m_redo.back().actionName;
}

void UndoManager::removeAllSteps()
{
    stopFiltering();
    const std::optional<Step> open = std::exchange(m_open, std::nullopt);
    const std::vector<Step> undoSteps = std::exchange(m_undo, {});
    const std::vector<Step> redoSteps = std::exchange(m_redo, {});
    Q_EMIT changed();
}

void UndoManager::removeLastStep(const UndoTarget &target, const QString &operation, const QVariant &argument)
{
    if (m_mode != Mode::Normal)
        return;
    closeStep();
    if (m_undo.empty())
        return;
    const auto isMeant = [&](const Operation &each) {
        return each.targetIdentity == &target && !each.target.expired() && each.operation == operation &&
               each.argument == argument;
    };
    std::vector<Operation> &operations = m_undo.back().operations;
    const auto found = std::find_if(operations.begin(), operations.end(), isMeant);
    if (found == operations.end())
        return;
    const Operation removed = std::move(*found);
    operations.erase(found);
    if (operations.empty()) {
        m_state = m_undo.back().stateBefore;
        m_undo.pop_back();
    } else {
        m_state = newState();
        if (!operations.back().actionName.isEmpty())
            m_undo.back().actionName = operations.back().actionName;
    }
    renewStates(m_redo);
    Q_EMIT changed();
}

void UndoManager::noteChangeWithoutStep()
{
    if (m_mode != Mode::Normal)
        return;
    // Undoing does not take this change back, so no state that steps lead to is any more the one that it was.
    m_state = newState();
    renewStates(m_undo);
    renewStates(m_redo);
    if (m_open)
        m_open->stateBefore = newState();
    Q_EMIT changed();
}

quint64 UndoManager::stateToken() const
{
    return m_state;
}

void UndoManager::markClean(quint64 token)
{
    const bool wasEdited = isEdited();
    m_cleanState = token;
    if (isEdited() != wasEdited)
        Q_EMIT changed();
}

bool UndoManager::isEdited() const
{
    return m_state != m_cleanState;
}

bool UndoManager::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride: // all that a key press leaves to be seen when it is a shortcut
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: // the second press of a double click
    case QEvent::MouseButtonRelease:
        closeStep();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

bool UndoManager::openStepIsForUndo() const
{
    return m_open && m_mode == Mode::Normal;
}

void UndoManager::scheduleClosing()
{
    QMetaObject::invokeMethod(this, &UndoManager::closeStep, Qt::QueuedConnection);
    if (QCoreApplication *application = QCoreApplication::instance())
        application->installEventFilter(this);
}

void UndoManager::stopFiltering()
{
    if (QCoreApplication *application = QCoreApplication::instance())
        application->removeEventFilter(this);
}

void UndoManager::closeStep()
{
    // What is gathered while undoing or redoing is closed by perform(), even if an operation runs an event loop.
    if (!m_open || m_mode != Mode::Normal)
        return;
    stopFiltering();
    m_undo.push_back(std::move(*m_open));
    m_open.reset();
}

void UndoManager::perform(std::vector<Step> &from, std::vector<Step> &to, Mode mode)
{
    if (from.empty())
        return;
    const Step step = std::move(from.back());
    from.pop_back();

    m_mode = mode;
    std::for_each(step.operations.rbegin(), step.operations.rend(), [](const Operation &each) {
        if (const auto target = each.target.lock())
            (*target)->performUndoOperation(each.operation, each.argument);
    });
    m_mode = Mode::Normal;

    if (m_open) {
        Step opposite = std::move(*m_open);
        m_open.reset();
        opposite.stateBefore = m_state;
        if (opposite.actionName.isEmpty())
            opposite.actionName = step.actionName;
        to.push_back(std::move(opposite));
    } else {
        // There is no way back to the present state, so the steps beyond it now start from another one.
        renewStates(to);
    }
    m_state = step.stateBefore;
    Q_EMIT changed();
}

void UndoManager::renewStates(std::vector<Step> &steps)
{
    for (Step &each : steps)
        each.stateBefore = newState();
}

quint64 UndoManager::newState()
{
    return ++m_lastState;
}

} // namespace inkory
