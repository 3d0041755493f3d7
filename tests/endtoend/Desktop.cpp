#include "endtoend/Desktop.h"

#include "support/Tools.h"

#include <QCursor>
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

bool waitFor(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, patienceMilliseconds);
}

ToolOutcome xdotool(const QStringList &arguments)
{
    return runTool(QStringLiteral("xdotool"), arguments);
}

void movePointer(const QPoint &position)
{
    if (QCursor::pos() != position) { // xdotool would wait for a movement
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

bool Desktop::start(const QStringList &arguments, const QString &title)
{
    m_program.setProcessChannelMode(QProcess::MergedChannels);
    m_program.start(QStringLiteral(INKORY_PROGRAM), arguments);
    return m_program.waitForStarted() && activate(title);
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

void Desktop::drag(const QPoint &from, const QPoint &to)
{
    movePointer(from);
    xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    movePointer((from + to) / 2);
    movePointer(to);
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
    QTest::qWait(settleMilliseconds);
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
