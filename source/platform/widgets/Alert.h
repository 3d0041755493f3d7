#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QWidget;

namespace inkory
{

/// A modal question or message. QMessageBox renders text from files as HTML, and its answers cannot be given by a test.
struct Alert
{
    enum class Style { Warning, Informational, Critical };

    Style style = Style::Warning;
    /// Plain text, always.
    QString messageText;
    QString informativeText;
    /// The last one of several is what Escape and closing choose. Empty: one "OK".
    QStringList buttons;
    /// Which button Return chooses, from 0: another one than the first where that one destroys something.
    int defaultButton = 0;
    /// Makes a widget that is shown below the texts; may be empty.
    std::function<std::unique_ptr<QWidget>()> accessoryView;

    /// Shows the alert, application-modal, over the parent window (none: the active window), and answers which button
    /// was chosen: 1 for the first, 0 for the second, -1 for the third.
    int runModal(QWidget *parentWindow = nullptr) const;

    /// For tests: answers in the person's place, without showing anything, while it is set.
    static void setResponder(std::function<int(const Alert &)> responder);
};

} // namespace inkory
