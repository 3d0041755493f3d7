#pragma once

#include "platform/widgets/TextFinder.h"

#include <QFrame>
#include <QPointer>
#include <QTimer>

class QLabel;
class QLineEdit;
class QToolButton;

namespace inkory
{

/// A strip below the pages in which the person looks for a text: it says which of how many hits is shown, and has the
/// view mark them. Hidden until it is asked for.
class FindBar : public QFrame
{
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    /// Binds the bar to the view, which has its document; not owned.
    void setPDFView(PDFView *view);

    /// Shows the bar with the keyboard in its field. What is selected on the pages is looked for, if it is one short
    /// line, and is itself the first hit.
    void open();
    /// Shows the bar, too, if it was hidden, and goes on from the last hit; without a text it is opened.
    void findNext();
    void findPrevious();
    /// Hides the bar and takes the marks away; the text stays for the next time.
    void dismiss();

Q_SIGNALS:
    /// The pages get the keyboard back.
    void dismissed();

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QToolButton *makeButton(const char *name, const QString &text);
    void arrange();
    void applyIcons();
    void searchFrom(const PDFView::Place &place);
    bool showsHitsOfField();
    void hitsChanged();
    void showHits();
    void showCurrentHit();
    QString countText() const;
    QString noteText() const;

    QPointer<PDFView> m_view;
    TextFinder m_finder;
    QLineEdit *m_field;
    QToolButton *m_previousButton;
    QToolButton *m_nextButton;
    QToolButton *m_closeButton;
    QLabel *m_count;
    QLabel *m_note;
    QTimer m_typingPause; // runs while what is typed has not been looked for
    QTimer m_refreshPause;
};

} // namespace inkory
