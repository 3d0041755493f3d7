#include "platform/widgets/WindowController.h"

#include "platform/widgets/InterfaceDescriptions.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

class RecordingController : public WindowController
{
public:
    using WindowController::WindowController;

    QStringList calls;
    QLineEdit *field = nullptr;
    bool mayClose = true;

protected:
    void awakeFromNib() override
    {
        calls.append(QStringLiteral("awake"));
        field = outlet<QLineEdit>(*window(), QStringLiteral("field"));
    }
    void windowDidLoad() override { calls.append(QStringLiteral("load")); }
    bool windowShouldClose() override { return mayClose; }
    void windowWillClose() override { calls.append(QStringLiteral("close")); }
    bool keyDown(QKeyEvent &event) override
    {
        calls.append(QStringLiteral("key %1").arg(event.key()));
        return true;
    }
};

class WindowControllerTest : public ::testing::Test
{
protected:
    WindowControllerTest()
    {
        registerInterfaceDescription(QStringLiteral("Test"), [] {
            auto window = std::make_unique<QWidget>();
            auto *layout = new QVBoxLayout(window.get());
            auto *field = new QLineEdit;
            field->setObjectName(QStringLiteral("field"));
            layout->addWidget(field);
            return window;
        });
    }
    ~WindowControllerTest() override { setLogListener({}); }

    RecordingController controller{QStringLiteral("Test")};
};

} // namespace

TEST_F(WindowControllerTest, LoadsItsWindowOnceAndWhenItIsAskedFor)
{
    EXPECT_FALSE(controller.isWindowLoaded());
    QWidget *window = controller.window();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(controller.window(), window);
    EXPECT_NE(controller.field, nullptr);
    EXPECT_EQ(controller.calls, QStringList({QStringLiteral("awake"), QStringLiteral("load")}));
}

TEST_F(WindowControllerTest, AnUnknownDescriptionOrOutletIsLogged)
{
    QStringList lines;
    setLogListener([&](const QString &line) { lines.append(line); });
    RecordingController unknown(QStringLiteral("Nobody"));
    EXPECT_EQ(unknown.window(), nullptr);
    EXPECT_EQ(outlet<QLabel>(*controller.window(), QStringLiteral("field")), nullptr);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.at(0).contains(QStringLiteral("Nobody")));
    EXPECT_TRUE(lines.at(1).contains(QStringLiteral("field")));
}

TEST_F(WindowControllerTest, ClosingAsksAndTells)
{
    controller.showWindow();
    controller.mayClose = false;
    EXPECT_FALSE(controller.window()->close());
    EXPECT_TRUE(controller.window()->isVisible());
    EXPECT_FALSE(controller.calls.contains(QStringLiteral("close")));
    controller.mayClose = true;
    EXPECT_TRUE(controller.window()->close());
    EXPECT_EQ(controller.calls.count(QStringLiteral("close")), 1);
}

TEST_F(WindowControllerTest, HidingByCodeIsNotClosing)
{
    controller.showWindow();
    controller.window()->hide();
    EXPECT_FALSE(controller.calls.contains(QStringLiteral("close")));
}

TEST_F(WindowControllerTest, GetsTheKeysThatNobodyTook)
{
    controller.showWindow();
    controller.field->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(controller.window()));
    controller.calls.clear();
    QTest::keyClick(controller.window()->windowHandle(), Qt::Key_V);
    EXPECT_EQ(controller.field->text(), QStringLiteral("v"));
    EXPECT_TRUE(controller.calls.isEmpty());
    QTest::keyClick(controller.window()->windowHandle(), Qt::Key_F9);
    EXPECT_EQ(controller.calls, QStringList(QStringLiteral("key %1").arg(Qt::Key_F9)));
}

} // namespace inkory
