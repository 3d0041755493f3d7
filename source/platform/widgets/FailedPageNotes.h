#pragma once

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

/// What a view says on its pages that cannot be drawn: a sentence, painted as the page's content so that what lies on
/// the page covers it, and below the sentence a button that tries again, a child of the viewport above everything else
/// there. Both stand in the middle of what is visible of the page; what does not fit there is left out.
class FailedPageNotes
{
    Q_DECLARE_TR_FUNCTIONS(FailedPageNotes)

public:
    struct Page
    {
        int index = 0;
        /// The visible part, in the viewport's coordinates.
        QRect area;
    };

    /// The function is called with the index of the page whose button was pressed. The view outlives the notes.
    FailedPageNotes(QAbstractScrollArea &view, std::function<void(int)> retry);

    /// Shows a button on each of these pages, the first ones first for the keyboard, and on no other page.
    void showButtons(const std::vector<Page> &failedPages);
    void paintSentence(QPainter &painter, const Page &page) const;
    /// Whether a press there is the second one of a double click on a button, which has vanished since and would have
    /// let nothing through.
    bool isSecondPress(const QPoint &position) const;

private:
    struct Places
    {
        QRect text;
        QRect button; // empty where there is no room for it
    };

    Places placesOn(const Page &page) const;
    QPushButton *addButton(int pageIndex);
    void pressed(int pageIndex);
    void removeButton(int pageIndex);

    QAbstractScrollArea &m_view;
    std::function<void(int)> m_retry;
    std::map<int, QPushButton *> m_buttons; // by page; owned by the viewport
    QRect m_pressedPlace;
    QElapsedTimer m_sincePress;
};

} // namespace inkory
