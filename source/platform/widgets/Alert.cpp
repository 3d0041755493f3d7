#include "platform/widgets/Alert.h"

#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <utility>

namespace inkory
{

namespace
{

std::function<int(const Alert &)> &responder()
{
    static std::function<int(const Alert &)> function;
    return function;
}

QMessageBox::Icon iconForStyle(Alert::Style style)
{
    switch (style) {
    case Alert::Style::Informational:
        return QMessageBox::Information;
    case Alert::Style::Critical:
        return QMessageBox::Critical;
    case Alert::Style::Warning:
        break;
    }
    return QMessageBox::Warning;
}

QMessageBox::ButtonRole roleForPosition(qsizetype position, qsizetype count)
{
    if (position == 0)
        return QMessageBox::AcceptRole;
    return position == count - 1 ? QMessageBox::RejectRole : QMessageBox::DestructiveRole;
}

QList<QAbstractButton *> addButtons(QMessageBox &box, const QStringList &titles, int defaultButton)
{
    QList<QAbstractButton *> added;
    for (qsizetype i = 0; i < titles.size(); ++i) {
        QPushButton *button = box.addButton(titles.at(i), roleForPosition(i, titles.size()));
        if (i == defaultButton)
            box.setDefaultButton(button);
        added.append(button);
    }
    return added;
}

void addAccessoryView(QMessageBox &box, std::unique_ptr<QWidget> accessory)
{
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    auto *buttons = box.findChild<QDialogButtonBox *>();
    if (!accessory || !grid || !buttons)
        return;
    const int row = grid->rowCount();
    const int columns = grid->columnCount();
    grid->removeWidget(buttons);
    grid->addWidget(accessory.release(), row, columns - 1); // the layout's widget owns it now
    grid->addWidget(buttons, row + 1, 0, 1, columns);
}

} // namespace

int Alert::runModal(QWidget *parentWindow) const
{
    if (responder())
        return responder()(*this);

    QWidget *parent = parentWindow ? parentWindow : QApplication::activeWindow();
    if (!parent)
        parent = modalWindow();
    // On the heap, because it is destroyed with its parent window if that goes first.
    const QPointer<QMessageBox> box = new QMessageBox(parent);
    box->setWindowTitle(QGuiApplication::applicationDisplayName());
    box->setIcon(iconForStyle(style));
    box->setText(messageText);
    box->setInformativeText(informativeText);
    for (QLabel *label : box->findChildren<QLabel *>())
        label->setTextFormat(Qt::PlainText);
    const QStringList titles = buttons.isEmpty() ? QStringList(QCoreApplication::translate("Alert", "OK")) : buttons;
    const QList<QAbstractButton *> shown = addButtons(*box, titles, defaultButton);
    if (accessoryView)
        addAccessoryView(*box, accessoryView());

    box->exec();
    const qsizetype clicked = box ? shown.indexOf(box->clickedButton()) : -1;
    delete box.data();
    const qsizetype chosen = clicked >= 0 ? clicked : titles.size() - 1; // destroyed or ended by quitting: as Escape
    return 1 - static_cast<int>(chosen);
}

void Alert::setResponder(std::function<int(const Alert &)> newResponder)
{
    responder() = std::move(newResponder);
}

} // namespace inkory
