#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <map>

namespace inkory
{

/// Tells for how long pages have had nothing to show, so that a page that takes long does not look like an empty one.
/// Owned by the view that shows the pages.
class WaitingPages : public QObject
{
    Q_OBJECT

public:
    explicit WaitingPages(QObject *parent = nullptr);

    /// To be asked in each frame in which the page has nothing to show: whether it has waited long enough for the
    /// person to be told.
    bool isOverdue(int pageIndex);
    /// Forgets the pages not asked about since the last call. To be called after frames that show all that is visible.
    void endFrame();

Q_SIGNALS:
    /// More pages are overdue: the view is to be painted again. Once for each page at most.
    void becameOverdue();

private:
    struct Wait
    {
        QElapsedTimer since;
        bool isOverdue = false;
        bool isSeen = true; // in this frame
    };

    void checkWaits();

    std::map<int, Wait> m_waits; // by page index
    QTimer m_timer;              // runs while a page waits that is not overdue
};

} // namespace inkory
