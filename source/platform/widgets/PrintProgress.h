#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;

namespace inkory
{

/// Tells over a window which page is being printed, and lets the person cancel. QProgressDialog runs the event loop
/// each time when it is told about progress. Meanwhile its window takes no input, so that what is printed does not
/// change.
class PrintProgress : public QDialog
{
    Q_OBJECT

public:
    explicit PrintProgress(QWidget *parent);

    /// The sheet's number (from 1), how many there are, and the number of the page on it.
    void showSheet(int sheet, int sheetCount, int page);
    /// All pages are on their way to the printer.
    void showSending();
    /// The printer has not said that it has them. It may be slow, or never answer: the person decides.
    void showSilence();

Q_SIGNALS:
    void cancelled();

protected:
    void reject() override;

private:
    QLabel *m_label;
    QProgressBar *m_bar;
};

} // namespace inkory
