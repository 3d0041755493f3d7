#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>

namespace inkory::test
{

/// The program in a real window, driven from outside as by a person: pointer and keys are injected into the X server.
class Desktop
{
public:
    Desktop() = default;
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    /// Starts the program and waits for a window whose title contains the text; whether it came.
    bool start(const QStringList &arguments, const QString &title);

    /// Waits for a visible window whose title contains the text and gives it the keyboard; whether it came.
    bool activate(const QString &title);
    /// Waits until no such window is visible any more.
    bool waitUntilGone(const QString &title);
    /// One key or combination in X names, such as "s", "ctrl+s" or "Return".
    void press(const QString &key);
    /// The text's characters one after the other, as a keyboard of the United States has them.
    void type(const QString &text);
    /// A click with the left button at a place on the screen.
    void click(const QPoint &position);
    /// The left button goes down at one place and up at another.
    void drag(const QPoint &from, const QPoint &to);
    /// Waits until the program has ended by itself; its exit status, or -1.
    int waitForEnd();
    /// What the program printed.
    QByteArray output() { return m_program.readAll(); }

    /// A picture of the whole screen.
    static QImage screen();
    /// Waits until something of exactly this colour is on the screen and stands still; the bounds of it, empty if none
    /// came.
    static QRect waitForColor(const QColor &color);

private:
    QProcess m_program;
};

} // namespace inkory::test
