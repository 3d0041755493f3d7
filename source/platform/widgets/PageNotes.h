#pragma once

#include "platform/widgets/WaitingPages.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRect>

#include <functional>
#include <map>
#include <vector>

class QAbstractScrollArea;
class QPainter;
class QPushButton;

namespace inkory
{

/// What a view says on its pages that have nothing to show: a sentence, painted as the page's content so that what lies
/// on the page covers it. Below the sentence, on pages that cannot be drawn, a button that tries again, a child of the
/// viewport above everything else there. Both stand in the middle of what is visible of the page; what does not fit
/// there is left out.
class PageNotes
{
    Q_DECLARE_TR_FUNCTIONS(PageNotes)

public:
    struct Page
    {
        int index = 0;
        /// The visible part, in the viewport's coordinates.
        QRect area;
    };

    /// The function is called with the index of the page whose button was pressed. The view outlives the notes.
    PageNotes(QAbstractScrollArea &view, std::function<void(int)> retry);

    /// Shows a button on each of these pages, the first ones first for the keyboard, and on no other page.
    void showButtons(const std::vector<Page> &failedPages);
    void paintFailure(QPainter &painter, const Page &page) const;
    /// On a page that is still being drawn; nothing until that takes long enough for the page to pass for an empty one.
    void paintWaiting(QPainter &painter, const Page &page);
    /// After each frame: pages on which it did not paint paintWaiting() wait no longer.
    void endFrame() { m_waitingPages.endFrame(); }
    /// Whether a press there is the second one of a double click on a button, which has vanished since and would have
    /// let nothing through.
    bool isSecondPress(const QPoint &position) const;

private:
    struct Places
    {
        QRect text;
        QRect button; // empty where there is no room for it
    };

    static QString failureSentence();
    Places placesOn(const Page &page) const;
    void paintSentence(QPainter &painter, const QRect &place, const QString &sentence) const;
    QPushButton *addButton(int pageIndex);
    void pressed(int pageIndex);
    void removeButton(int pageIndex);

    QAbstractScrollArea &m_view;
    WaitingPages m_waitingPages;
    std::function<void(int)> m_retry;
    std::map<int, QPushButton *> m_buttons; // by page; owned by the viewport
    QRect m_pressedPlace;
    QElapsedTimer m_sincePress;
};

} // namespace inkory
