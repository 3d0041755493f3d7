#include "endtoend/Desktop.h"

#include "support/Tools.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <functional>

namespace inkory::test
{

namespace
{

constexpr int patienceMilliseconds = 15'000;
constexpr int settleMilliseconds = 150;
constexpr int questionMilliseconds = 500; // until the question is there, or what follows a save is done

bool waitFor(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, patienceMilliseconds);
}

ToolOutcome xdotool(const QStringList &arguments)
{
    return runTool(QStringLiteral("xdotool"), arguments);
}

QPoint pointerPosition()
{
    // x:700 y:500 screen:0 window:1234
    const QList<QByteArray> parts = xdotool({QStringLiteral("getmouselocation")}).output.split(' ');
    return parts.size() < 2 ? QPoint(-1, -1) : QPoint(parts[0].mid(2).toInt(), parts[1].mid(2).toInt());
}

void movePointer(const QPoint &position)
{
    if (pointerPosition() != position) { // xdotool would wait for a movement
        xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QString::number(position.x()),
                 QString::number(position.y())});
    }
    QTest::qWait(settleMilliseconds);
}

QByteArray windowTitled(const QString &title)
{
    const ToolOutcome found =
        xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), title});
    return found.succeeded() ? found.output.split('\n').first() : QByteArray();
}

} // namespace

Desktop::~Desktop()
{
    m_program.kill();
    m_program.waitForFinished();
}

bool Desktop::open(const QString &path)
{
    m_program.setProcessChannelMode(QProcess::MergedChannels);
    m_program.start(QStringLiteral(INKORY_PROGRAM), {path});
    if (!m_program.waitForStarted() || !activate(QFileInfo(path).fileName()))
        return false;
    press(QStringLiteral("F9"));
    press(QStringLiteral("ctrl+0"));
    return true;
}

bool Desktop::activate(const QString &title)
{
    QByteArray window;
    if (!waitFor([&] { return !(window = windowTitled(title)).isEmpty(); }))
        return false;
    xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::fromLatin1(window)});
    return waitFor([&] { return xdotool({QStringLiteral("getactivewindow")}).output.trimmed() == window; });
}

bool Desktop::waitUntilGone(const QString &title)
{
    return waitFor([&] { return windowTitled(title).isEmpty(); });
}

void Desktop::press(const QString &key)
{
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), key});
    QTest::qWait(settleMilliseconds);
}

void Desktop::type(const QString &text)
{
    constexpr const char *delayMilliseconds = "20";
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QLatin1String(delayMilliseconds), text});
    QTest::qWait(settleMilliseconds);
}

void Desktop::click(const QPoint &position)
{
    movePointer(position);
    xdotool({QStringLiteral("click"), QStringLiteral("1")});
    QTest::qWait(settleMilliseconds);
}

void Desktop::drag(const QList<QPoint> &path)
{
    movePointer(path.front());
    xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    for (const QPoint &position : path)
        movePointer(position);
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    QTest::qWait(settleMilliseconds);
}

bool Desktop::pointerReaches(const QPoint &position)
{
    xdotool({QStringLiteral("mousemove"), QString::number(position.x()), QString::number(position.y())});
    QTest::qWait(settleMilliseconds);
    return pointerPosition() == position;
}

bool Desktop::saveAndQuit(const QString &path)
{
    const QByteArray original = readFile(path);
    press(QStringLiteral("ctrl+s"));
    QTest::qWait(questionMilliseconds);
    press(QStringLiteral("Return"));
    if (!waitFor([&] { return readFile(path) != original; }))
        return false;
    QTest::qWait(questionMilliseconds);
    press(QStringLiteral("ctrl+q"));
    return waitForEnd() == 0;
}

int Desktop::waitForEnd()
{
    const bool ended = waitFor([this] { return m_program.state() == QProcess::NotRunning; });
    return ended && m_program.exitStatus() == QProcess::NormalExit ? m_program.exitCode() : -1;
}

QImage Desktop::screen()
{
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

QRect Desktop::waitForColor(const QColor &color)
{
    QRect former;
    QRect found;
    waitFor([&] {
        former = found;
        found = findInkBounds(screen(), color, 8);
        return !found.isEmpty() && found == former;
    });
    return found;
}

} // namespace inkory::test
