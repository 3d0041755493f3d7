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
/// Places are pixels of the screen.
class Desktop
{
public:
    Desktop() = default;
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    /// Starts the program with a file and waits for its window; whether it came. The page is shown at actual size, and
    /// no thumbnails beside it, which would have its colors, too.
    bool open(const QString &path);

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
    /// The left button goes down at the first place, along all others, and up at the last one.
    void drag(const QList<QPoint> &path);
    /// Moves the pointer; whether it stays there.
    static bool pointerReaches(const QPoint &position);
    /// Saves the document that has the keyboard into its file, answering whether to replace that, and quits; whether
    /// the file became another one and the program ended well.
    bool saveAndQuit(const QString &path);
    /// Asks the program to end, as the system does when the person logs out.
    void terminate() { m_program.terminate(); }
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
