#include "platform/widgets/Alert.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

/// What a person does with the box that is shown next.
void withShownBox(const std::function<void(QMessageBox &)> &action)
{
    QTimer::singleShot(0, qApp, [action] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        action(*box);
    });
}

Alert threeButtons()
{
    Alert alert;
    alert.messageText = QStringLiteral("Question?");
    alert.buttons = {QStringLiteral("Save"), QStringLiteral("Don't Save"), QStringLiteral("Cancel")};
    return alert;
}

} // namespace

TEST(Alert, AnswersByThePositionOfTheButton)
{
    for (const auto &[position, answer] : {std::pair(0, 1), std::pair(1, 0), std::pair(2, -1)}) {
        withShownBox([position = position](QMessageBox &box) {
            const QString title = threeButtons().buttons.at(position);
            for (QAbstractButton *button : box.buttons()) {
                if (button->text().remove(u'&') == title)
                    button->click();
            }
        });
        EXPECT_EQ(threeButtons().runModal(), answer);
    }
}

TEST(Alert, ReturnChoosesTheFirstAndEscapeTheLast)
{
    withShownBox([](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Return); });
    EXPECT_EQ(threeButtons().runModal(), 1);
    withShownBox([](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Escape); });
    EXPECT_EQ(threeButtons().runModal(), -1);
    withShownBox([](QMessageBox &box) { box.close(); });
    EXPECT_EQ(threeButtons().runModal(), -1);
}

TEST(Alert, ShowsTextsFromFilesAsTheyAre)
{
    Alert alert;
    alert.messageText = QStringLiteral("<b>a</b>.pdf");
    alert.informativeText = QStringLiteral("<img src=\"/x.png\">");
    withShownBox([&](QMessageBox &box) {
        EXPECT_EQ(box.buttons().size(), 1);
        QStringList plain;
        for (const QLabel *label : box.findChildren<QLabel *>()) {
            if (label->textFormat() == Qt::PlainText)
                plain.append(label->text());
        }
        EXPECT_TRUE(plain.contains(alert.messageText));
        EXPECT_TRUE(plain.contains(alert.informativeText));
        box.reject();
    });
    EXPECT_EQ(alert.runModal(), 1);
}

TEST(Alert, PutsTheAccessoryBetweenTextsAndButtons)
{
    Alert alert = threeButtons();
    alert.accessoryView = [] {
        auto view = std::make_unique<QWidget>();
        view->setObjectName(QStringLiteral("accessory"));
        view->setMinimumSize(20, 20);
        return view;
    };
    withShownBox([](QMessageBox &box) {
        const auto *view = box.findChild<QWidget *>(QStringLiteral("accessory"));
        ASSERT_NE(view, nullptr);
        EXPECT_TRUE(view->isVisible());
        EXPECT_LT(view->geometry().bottom(), box.buttons().first()->mapTo(&box, QPoint()).y());
        box.reject();
    });
    (void)alert.runModal();
}

TEST(Alert, SurvivesThatItsParentWindowGoes)
{
    auto parent = std::make_unique<QWidget>();
    parent->show();
    withShownBox([&](QMessageBox &) { parent.reset(); });
    EXPECT_EQ(threeButtons().runModal(parent.get()), -1);
}

} // namespace inkory
