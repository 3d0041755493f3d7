#include "platform/core/UserDefaults.h"
#include "platform/widgets/ColorPanel.h"
#include "platform/widgets/FontManager.h"
#include "platform/widgets/FontPanel.h"
#include "platform/widgets/ModalSession.h"
#include "support/Tools.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QFontDialog>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTimer>
#include <QWindow>

namespace inkory::test
{

/// A shown window, the panels, and a person at them. The settings are in a folder of the test's own.
class TextPanelsTest : public ::testing::Test
{
protected:
    TextPanelsTest()
    {
        UserDefaults::setStandardFilePath(settings);
        window.setGeometry(20, 20, 200, 150);
        window.show();
        fonts.setFont(QFont(QStringLiteral("DejaVu Sans"), 12));
    }
    ~TextPanelsTest() override
    {
        FontPanel::closeShared();
        ColorPanel::closeShared();
    }

    template <class Dialog> static Dialog &shownDialog()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *dialog = qobject_cast<Dialog *>(widget); dialog && dialog->isVisible())
                return *dialog;
        }
        throw std::runtime_error("not shown");
    }
    /// Through the window, so that modal sessions take part.
    static void clickIn(const QWidget &widget, const QPoint &place)
    {
        QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {}, widget.mapTo(widget.window(), place));
    }
    static void chooseSize(int points)
    {
        const auto lists = shownDialog<QFontDialog>().findChildren<QListView *>();
        for (const QListView *list : lists) {
            const auto found =
                list->model()->match(list->model()->index(0, 0), Qt::DisplayRole, points, 1, Qt::MatchFixedString);
            if (!found.isEmpty())
                clickIn(*list->viewport(), list->visualRect(found.first()).center());
        }
    }
    static QWindow *ownerOf(const QWidget &dialog) { return dialog.windowHandle()->transientParent(); }

    QTemporaryDir folder;
    const QString settings = folder.filePath(QStringLiteral("settings.json"));
    QWidget window;
    FontPanel &fonts = FontPanel::sharedFontPanel();
    QSignalSpy fontChanged{&fonts, &FontPanel::fontChanged};
};

TEST_F(TextPanelsTest, TellOnceWhatThePersonChoseAndNothingOfWhatTheyAreShown)
{
    fonts.orderFront(&window);
    chooseSize(14);
    ASSERT_EQ(fontChanged.count(), 1);
    EXPECT_EQ(fontChanged.last().first().value<QFont>(), QFont(QStringLiteral("DejaVu Sans"), 14));
    QFont exact(QStringLiteral("DejaVu Serif"), 9, QFont::Bold);
    exact.setPointSizeF(10.5); // more than Qt's dialog can show
    fonts.setFont(exact);
    EXPECT_EQ(fontChanged.count(), 1);
    EXPECT_EQ(sharedFontManager().selectedFont(), exact);
    const auto *strikeOut = shownDialog<QFontDialog>().findChildren<QCheckBox *>().first();
    clickIn(*strikeOut, QPoint(10, strikeOut->height() / 2));
    exact.setStrikeOut(true);
    EXPECT_EQ(fontChanged.count(), 2);
    EXPECT_EQ(sharedFontManager().selectedFont(), exact);

    ColorPanel &colors = ColorPanel::sharedColorPanel();
    QSignalSpy colorChanged(&colors, &ColorPanel::colorChanged);
    colors.orderFront(&window);
    colors.setColor(Qt::red);
    EXPECT_EQ(colorChanged.count(), 0);
    auto *html = shownDialog<QColorDialog>().findChild<QLineEdit *>();
    html->selectAll();
    QTest::keyClicks(html, QStringLiteral("#0000ff"));
    QTest::keyClick(html, Qt::Key_Return);
    EXPECT_TRUE(colors.isVisible()); // no reason to close it
    EXPECT_EQ(colorChanged.last().first().value<QColor>(), QColor(Qt::blue));
    EXPECT_EQ(sharedFontManager().selectedColor(), QColor(Qt::blue));
}

TEST_F(TextPanelsTest, StayUsableWhileAModalSessionRuns)
{
    fonts.orderFront(&window);
    QWidget modal;
    QTimer::singleShot(0, &modal, [&] {
        EXPECT_TRUE(QTest::qWaitFor([&] { return ownerOf(shownDialog<QFontDialog>()) == modal.windowHandle(); }));
        chooseSize(16);
        ColorPanel::sharedColorPanel().orderFront(&window); // belongs to the session from the start
        EXPECT_EQ(ownerOf(shownDialog<QColorDialog>()), modal.windowHandle());
        modal.hide();
        stopModal();
    });
    runModalForWindow(modal);
    EXPECT_EQ(fontChanged.count(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ownerOf(shownDialog<QFontDialog>()) == window.windowHandle(); }));
    EXPECT_TRUE(ColorPanel::sharedColorPanel().isVisible());
}

TEST_F(TextPanelsTest, WhatWasChosenIsKeptAndDamageCountsAsNothing)
{
    QFont font(QStringLiteral("DejaVu Serif"), 9, QFont::Bold, true);
    font.setUnderline(true);
    {
        FontManager manager;
        manager.setSelectedFont(font);
        manager.setSelectedColor(QColor(1, 2, 255, 16));
        manager.setSelectedColor({});
        manager.setSelectedFont(QFont(QStringLiteral("DejaVu Sans"), 1000));
    }
    UserDefaults::setStandardFilePath(settings); // reads it again
    EXPECT_EQ(sharedFontManager().selectedFont(), font);
    EXPECT_EQ(UserDefaults::standard().string(QStringLiteral("TEXT_COLOR")), QStringLiteral("#0102ff10"));
    EXPECT_EQ(sharedFontManager().selectedColor(), QColor(1, 2, 255, 16));
    for (const char *damaged :
         {"", "DejaVu Sans", "No Such Family|12|400", "DejaVu Sans|nan|400", "DejaVu Sans|0.5|400",
          "DejaVu Sans|1000|400", "DejaVu Sans|12|0", "DejaVu Sans|12|x"}) {
        UserDefaults::standard().setStringList(QStringLiteral("TEXT_FONT"), QString::fromLatin1(damaged).split(u'|'));
        EXPECT_EQ(sharedFontManager().selectedFont(), std::nullopt) << damaged;
    }
    for (const char *damaged : {"", "red", "#12345", "#0102ff1", "#0102ff10\n"}) {
        UserDefaults::standard().setString(QStringLiteral("TEXT_COLOR"), QString::fromLatin1(damaged));
        EXPECT_EQ(sharedFontManager().selectedColor(), std::nullopt) << damaged;
    }
}

} // namespace inkory::test
