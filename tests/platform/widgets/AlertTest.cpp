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

static Alert threeButtons()
{
    Alert alert;
    alert.messageText = QStringLiteral("<b>a</b>.pdf");
    alert.informativeText = QStringLiteral("<img src=\"/x.png\">");
    alert.buttons = {QStringLiteral("Save"), QStringLiteral("Don't Save"), QStringLiteral("Cancel")};
    return alert;
}

/// The answer to the box with three buttons after what a person does with it.
static int answerAfter(const std::function<void(QMessageBox &)> &action, QWidget *parent = nullptr)
{
    QTimer::singleShot(0, qApp, [action] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        action(*box);
    });
    return threeButtons().runModal(parent);
}

TEST(Alert, AnswersByThePositionOfTheButton)
{
    const auto click = [](const char *title) {
        return [title](const QMessageBox &box) {
            for (QAbstractButton *button : box.buttons()) {
                if (button->text().remove(u'&') == QLatin1String(title))
                    return button->click();
            }
        };
    };
    EXPECT_EQ(answerAfter(click("Save")), 1);
    EXPECT_EQ(answerAfter(click("Don't Save")), 0);
    EXPECT_EQ(answerAfter(click("Cancel")), -1);
    EXPECT_EQ(answerAfter([](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Return); }), 1);
    EXPECT_EQ(answerAfter([](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Escape); }), -1);
    auto parent = std::make_unique<QWidget>();
    parent->show();
    EXPECT_EQ(answerAfter([&](QMessageBox &) { parent.reset(); }, parent.get()), -1);
}

TEST(Alert, ShowsTextsFromFilesAsTheyAre)
{
    answerAfter([](QMessageBox &box) {
        QStringList texts;
        for (const QLabel *label : box.findChildren<QLabel *>())
            texts.append(label->textFormat() == Qt::PlainText ? label->text() : QString());
        EXPECT_TRUE(texts.contains(threeButtons().messageText));
        EXPECT_TRUE(texts.contains(threeButtons().informativeText));
        box.reject();
    });
}

} // namespace inkory
