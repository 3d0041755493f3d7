#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>

#include <memory>

class QDialog;
class QWidget;

namespace inkory
{

/// A panel of which the program has one for all its windows: it stands over the window that asked for it last, beside
/// what is worked on, blocks nothing, and stays usable while a modal session runs. Closing it (also with Escape) only
/// hides it; it goes with the window that it was shown for. Owns its dialog. Main thread only.
class SharedPanel : public QObject
{
    Q_OBJECT

public:
    ~SharedPanel() override;

    /// Shows the panel over the window that this widget is in, raised and with the keyboard. It keeps its place where
    /// it is shown already, and covers what is worked on (global coordinates; empty: the whole window) only where there
    /// is no space beside it.
    void orderFront(QWidget *widget, const QRect &workedOn = {});
    void close();
    bool isVisible() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    explicit SharedPanel(std::unique_ptr<QDialog> dialog);
    QDialog &dialog() const { return *m_dialog; }

private:
    void watch(QPointer<QWidget> &watched, QWidget *window);
    void joinSession();
    void standOver(QWidget *window);
    void place(const QRect &workedOn);

    std::unique_ptr<QDialog> m_dialog;
    QPointer<QWidget> m_window;  // that it was shown for
    QPointer<QWidget> m_session; // the modal one that it belongs to meanwhile
};

} // namespace inkory
