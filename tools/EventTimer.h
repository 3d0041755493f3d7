#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QString>

#include <algorithm>

/// An application that times every event delivered from its event loop: how long the GUI thread is kept.
class EventTimer : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth > 0)
            return QApplication::notify(receiver, event);
        ++m_depth;
        const auto type = event->type();
        const char *className = receiver->metaObject()->className(); // the receiver may be gone afterwards
        QElapsedTimer timer;
        timer.start();
        const bool isTaken = QApplication::notify(receiver, event);
        note(static_cast<double>(timer.nsecsElapsed()) / 1e6,
             [&] { return QStringLiteral("event %1 of %2").arg(type).arg(QLatin1String(className)); });
        --m_depth;
        return isTaken;
    }

    /// Counts something that was not delivered as an event; `describe` answers what it was.
    template <class Describe> void note(double milliseconds, Describe describe)
    {
        if (milliseconds <= m_longest)
            return;
        m_longest = milliseconds;
        m_longestWas = describe();
    }

    void reset()
    {
        m_longest = 0;
        m_longestWas.clear();
    }

    double longestMilliseconds() const { return m_longest; }
    QString longestWas() const { return m_longestWas; }

private:
    int m_depth = 0;
    double m_longest = 0;
    QString m_longestWas;
};
