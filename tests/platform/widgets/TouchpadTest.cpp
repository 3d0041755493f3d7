#include "platform/widgets/TouchpadCapture.h"

#include "support/Tools.h"

#include <QDir>

#include <array>
#include <fcntl.h>
#include <linux/input.h>
#include <unistd.h>

using namespace inkory;

namespace
{

/// A touchpad whose events come through a pipe; it is 1000 wide from 200 on, and 500 high.
class TouchpadTest : public ::testing::Test, public TouchReceiver
{
protected:
    TouchpadTest()
    {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC) == 0)
            m_end = ends[1];
        m_touchpad.state = Touchpad::State::Open;
        m_touchpad.reader = std::make_unique<TouchpadReader>(ends[0], TouchpadReader::Surface{{200, 1200}, {0, 500}});
        m_touchpad.setGrabbed = [this](bool grabbed) {
            m_grabs.append(grabbed);
            return true;
        };
    }
    ~TouchpadTest() override { unplug(); }

    void unplug()
    {
        if (m_end >= 0)
            ::close(std::exchange(m_end, -1));
    }
    void listen(TouchpadReader &reader)
    {
        QObject::connect(&reader, &TouchpadReader::touched, &reader,
                         [this](const Touches &touches) { touchesChanged(touches); });
    }
    /// What was told, as "B7(0.5,1)" for a finger 7 that began in the middle of the upper edge; reports are parted by
    /// |.
    void touchesChanged(const Touches &touches) override
    {
        QStringList words;
        for (const Touch &touch : touches)
            words.append(QStringLiteral("%1%2(%3,%4)")
                             .arg(QStringLiteral("-BM-S---E").at(int(touch.phase)))
                             .arg(touch.identity)
                             .arg(touch.normalizedPosition.x())
                             .arg(touch.normalizedPosition.y()));
        m_told.append(words.join(QLatin1Char(' ')) + QLatin1Char('|'));
    }
    void touchSourceLost() override { m_told.append(QStringLiteral("lost")); }
    /// Says these axes' values, and that this was all.
    void report(const QList<std::pair<int, int>> &values)
    {
        for (const auto &[axis, value] : values)
            say(EV_ABS, axis, value);
        say(EV_SYN, SYN_REPORT, 0);
    }
    void say(int type, int code, int value)
    {
        input_event event{};
        event.type = static_cast<__u16>(type);
        event.code = static_cast<__u16>(code);
        event.value = value;
        m_bytes.append(reinterpret_cast<const char *>(&event), sizeof event);
    }
    /// Sends what was said, in pieces of that many bytes, and waits until it was heard.
    void send(qsizetype piece)
    {
        for (; !m_bytes.isEmpty(); m_bytes.remove(0, piece)) {
            ASSERT_GT(::write(m_end, m_bytes.constData(), static_cast<std::size_t>(std::min(piece, m_bytes.size()))),
                      0);
            QCoreApplication::processEvents();
        }
        QCoreApplication::processEvents();
    }

    Touchpad m_touchpad;
    QList<bool> m_grabs;
    QString m_told;
    QByteArray m_bytes;
    int m_end = -1;
};

TEST_F(TouchpadTest, ReadsFingersFromSlotsAlsoFromEventsThatComeInPieces)
{
    listen(*m_touchpad.reader);
    report({{ABS_MT_TRACKING_ID, 7}, {ABS_MT_POSITION_X, 700}, {ABS_MT_POSITION_Y, 0}});
    report({{ABS_MT_SLOT, 1}, {ABS_MT_TRACKING_ID, 8}, {ABS_MT_POSITION_X, 1200}, {ABS_MT_POSITION_Y, 500}});
    report({{ABS_PRESSURE, 40}}); // of no interest
    report({{ABS_MT_SLOT, 0}, {ABS_MT_TRACKING_ID, -1}, {ABS_MT_SLOT, 1}, {ABS_MT_POSITION_X, 100}});
    report({{ABS_MT_SLOT, 99}, {ABS_MT_TRACKING_ID, 5}, {ABS_MT_POSITION_X, 300}}); // no such slot
    // The same number again, on the spot of the finger before; the kernel does not repeat the place.
    report({{ABS_MT_SLOT, 0}, {ABS_MT_TRACKING_ID, 7}});
    report({{ABS_MT_TRACKING_ID, 9}}); // another finger, without a word on the first one's end
    send(7);
    EXPECT_EQ(m_told, QStringLiteral("B7(0.5,1)|S7(0.5,1) B8(1,0)|E7(0.5,1) M8(0,0)|B7(0.5,1) S8(0,0)|"
                                     "E7(0.5,1) B9(0.5,1) S8(0,0)|"));
}

TEST_F(TouchpadTest, LiftsAllFingersWhereEventsWereLost)
{
    listen(*m_touchpad.reader);
    report({{ABS_MT_TRACKING_ID, 1}, {ABS_MT_POSITION_X, 700}, {ABS_MT_POSITION_Y, 250}});
    say(EV_ABS, ABS_MT_POSITION_X, 900);
    say(EV_SYN, SYN_DROPPED, 0);
    report({{ABS_MT_POSITION_X, 1000}, {ABS_MT_TRACKING_ID, 4}});
    report({{ABS_MT_TRACKING_ID, 5}});
    send(1000);
    EXPECT_EQ(m_told, QStringLiteral("B1(0.5,0.5)|E1(0.7,0.5)|B5(0.7,0.5)|"));
}

TEST_F(TouchpadTest, TakesTheDeviceWhenNoFingerIsOnItAndGivesItBack)
{
    report({{ABS_MT_TRACKING_ID, 1}}); // of the click that begins the capture
    send(1000);
    TouchpadCapture capture([this] { return std::move(m_touchpad); });
    EXPECT_TRUE(capture.beginCapture(*this));
    EXPECT_FALSE(capture.beginCapture(*this));
    EXPECT_TRUE(m_grabs.isEmpty());
    report({{ABS_MT_TRACKING_ID, -1}});
    report({{ABS_MT_TRACKING_ID, 2}});
    send(1000);
    EXPECT_EQ(m_grabs, QList{true});
    EXPECT_EQ(m_told, QStringLiteral("B2(0,1)|"));
    unplug();
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_told == QStringLiteral("B2(0,1)|lost"); }));
    EXPECT_EQ(m_grabs, (QList{true, false}));
    EXPECT_FALSE(capture.isCaptured());
}

TEST_F(TouchpadTest, GivesTheDeviceBackWhenItIsSilentAndSaysWhereItMayNotBeRead)
{
    TouchpadCapture silent([this] { return std::move(m_touchpad); }, std::chrono::milliseconds(1));
    EXPECT_TRUE(silent.beginCapture(*this));
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_told == QStringLiteral("lost"); }));
    EXPECT_EQ(m_grabs, (QList{true, false}));

    TouchpadCapture forbidden([] { return Touchpad{Touchpad::State::NotAllowed, nullptr, {}}; });
    EXPECT_FALSE(forbidden.beginCapture(*this));
    EXPECT_TRUE(forbidden.isForbidden());
}

TEST(TouchpadSearch, FindsTouchpadsByWhatTheyCanDo)
{
    QTemporaryDir folder;
    const auto describe = [&folder](const QString &name, const QByteArray &properties, const QByteArray &axes) {
        QDir(folder.path()).mkpath(name + QStringLiteral("/device/capabilities"));
        test::writeFile(folder.path(), name + QStringLiteral("/device/properties"), properties);
        test::writeFile(folder.path(), name + QStringLiteral("/device/capabilities/abs"), axes);
    };
    describe(QStringLiteral("event2"), "5\n", "2e0800000000003\n"); // slots, places, and a button pad
    describe(QStringLiteral("event3"), "3\n", "2e0800000000003\n"); // a touch screen
    describe(QStringLiteral("event4"), "1\n", "3\n");               // an old touchpad that tells of one finger only
    describe(QStringLiteral("event5"), "0\n", "0\n");
    EXPECT_EQ(touchpadNames(folder.path()), QStringList{QStringLiteral("event2")});
}

} // namespace
