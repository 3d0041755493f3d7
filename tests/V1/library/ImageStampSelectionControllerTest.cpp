#include "LibraryFixture.h"

#include "V1/library/ImageStampSelectionController.h"
#include "V1/library/LibraryInterfaceDescriptions.h"
#include "V1/library/SignatureListDelegate.h"
#include "V1/library/SignatureListView.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

namespace
{

using Controller = ImageStampSelectionController;

class Receiver : public inkory::ImageStampReceiver
{
public:
    QWidget *imageStampWindow() override { return &m_window; }
    void setImageStampViewImage(const inkory::ImagePtr &image) override { m_images.append(image); }

    QWidget m_window;
    QList<inkory::ImagePtr> m_images;
};

class SelectionDialog : public LibraryFixture
{
protected:
    SelectionDialog()
    {
        inkory::registerLibraryInterfaceDescriptions();
        m_receiver.m_window.show();
    }

    ~SelectionDialog() override
    {
        inkory::OpenPanel::setResponder({});
        Controller::setSignatureWindowRunner({});
        Controller::releaseShared();
    }

    static Controller &dialog() { return Controller::sharedImageStampSelection(); }

    template <class T> static T *part(const char *name)
    {
        return dialog().window()->findChild<T *>(QLatin1String(name));
    }

    static inkory::SignatureListView *list() { return part<inkory::SignatureListView>("imageTableView"); }
    static QPushButton *button(const char *name) { return part<QPushButton>(name); }

    /// Shows the dialog and acts in it; a dialog that stays open is closed, and reported as a failure.
    bool run(const std::function<void()> &action)
    {
        bool leftOpen = false;
        QTimer::singleShot(0, &m_receiver.m_window, [&] {
            EXPECT_TRUE(QTest::qWaitForWindowActive(dialog().window()));
            action();
            leftOpen = dialog().window()->isVisible() && QApplication::activeModalWidget() == dialog().window();
            QTimer::singleShot(200, dialog().window(), [] { dialog().closeDialog(); });
        });
        return dialog().showModal(m_receiver);
    }

    static void press(Qt::Key key) { QTest::keyClick(dialog().window()->windowHandle(), key); }

    void addThree()
    {
        for (int width : {51, 52, 53})
            ASSERT_GE(ImageStampCollection::addImages(QStringList{makeImage(QStringLiteral("a.png"), width)}), 0);
    }

    /// Sends what arrives when files are dragged over the list; answers whether it is accepted.
    static bool dragAndDrop(const QStringList &paths, bool drop)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString &file : paths)
            urls.append(QUrl::fromLocalFile(file));
        data.setUrls(urls);
        const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(QPoint(20, 20), offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(list()->viewport(), &enter);
        if (!enter.isAccepted() || !drop)
            return enter.isAccepted();
        EXPECT_EQ(enter.dropAction(), Qt::CopyAction); // also with Shift: the file stays where it is
        QDropEvent dropped(QPointF(20, 20), offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        QApplication::sendEvent(list()->viewport(), &dropped);
        return dropped.isAccepted();
    }

    Receiver m_receiver;
};

TEST_F(SelectionDialog, ReturnChoosesTheFirstSignatureAtOnce)
{
    addThree();
    EXPECT_TRUE(run([] { press(Qt::Key_Return); }));
    ASSERT_EQ(m_receiver.m_images.size(), 1);
    EXPECT_EQ(m_receiver.m_images.constFirst(), ImageStampCollection::stampImageAtIndex(0));
    EXPECT_FALSE(dialog().window()->isVisible());
}

TEST_F(SelectionDialog, SelectionIsKeptBetweenRuns)
{
    addThree();
    EXPECT_FALSE(run([] {
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        press(Qt::Key_Escape);
    }));
    EXPECT_TRUE(m_receiver.m_images.isEmpty());
    EXPECT_TRUE(run([] { press(Qt::Key_Enter); }));
    EXPECT_EQ(m_receiver.m_images, QList{ImageStampCollection::stampImageAtIndex(2)});
}

TEST_F(SelectionDialog, DoubleClickChooses)
{
    addThree();
    EXPECT_TRUE(run([] {
        const QPoint center = list()->visualRect(list()->model()->index(1, 0)).center();
        const QPoint inWindow = list()->viewport()->mapTo(dialog().window(), center);
        QTest::mouseClick(dialog().window()->windowHandle(), Qt::LeftButton, {}, inWindow);
        QTest::mouseDClick(dialog().window()->windowHandle(), Qt::LeftButton, {}, inWindow);
    }));
    EXPECT_EQ(m_receiver.m_images, QList{ImageStampCollection::stampImageAtIndex(1)});
}

TEST_F(SelectionDialog, DeleteRemovesAndTheNextOneIsSelected)
{
    addThree();
    EXPECT_FALSE(run([] {
        press(Qt::Key_Delete);
        EXPECT_EQ(widths(), (QList<int>{52, 53}));
        EXPECT_EQ(list()->selectedRow(), 0);
        press(Qt::Key_Delete);
        press(Qt::Key_Delete);
        EXPECT_TRUE(part<QLabel>("emptyListMessageTextField")->isVisible());
        EXPECT_FALSE(button("selectButton")->isEnabled());
        EXPECT_FALSE(button("removeButton")->isEnabled());
        press(Qt::Key_Delete);
        dialog().window()->close();
    }));
    EXPECT_TRUE(filesInLibrary().isEmpty());
}

TEST_F(SelectionDialog, ClosingTheWindowStopsOnlyThisSession)
{
    QWidget outer;
    QTimer::singleShot(0, &outer, [this] {
        EXPECT_FALSE(run([] { dialog().window()->close(); }));
        dialog().closeDialog(); // a second report of the same closing
        dialog().setImageStamp();
        inkory::stopModalWithCode(7);
    });
    EXPECT_EQ(inkory::runModalForWindow(outer), 7);
    EXPECT_TRUE(m_receiver.m_images.isEmpty());
}

TEST_F(SelectionDialog, ChoosingWithoutASelectionEndsWithYesAndNoImage)
{
    EXPECT_TRUE(run([] { dialog().imageTableViewDoubleClick(); }));
    EXPECT_TRUE(m_receiver.m_images.isEmpty());
}

TEST_F(SelectionDialog, PanelStartsAtHomeAndRemembersTheFolder)
{
    const QString image = makeImage(QStringLiteral("pictures/s.png"), 60);
    QList<inkory::OpenPanel> asked;
    inkory::OpenPanel::setResponder([&](const inkory::OpenPanel &panel) {
        asked.append(panel);
        return asked.size() == 2 ? QList<QUrl>{} : QList{QUrl::fromLocalFile(image)};
    });
    addThree();
    run([] {
        button("addButton")->click();
        EXPECT_EQ(list()->selectedRow(), 3);
        button("addButton")->click(); // cancelled
        EXPECT_EQ(list()->selectedRow(), 3);
        dialog().closeDialog();
    });
    Controller::releaseShared();
    restart();
    run([] {
        button("addButton")->click();
        dialog().closeDialog();
    });
    ASSERT_EQ(asked.size(), 3);
    EXPECT_EQ(asked.at(0).folder, QUrl::fromLocalFile(m_home.path() + QLatin1Char('/')));
    EXPECT_EQ(asked.at(2).folder, QUrl::fromLocalFile(path(QStringLiteral("pictures/"))));
    EXPECT_EQ(asked.at(0).selection, inkory::OpenPanel::Selection::Several);
    EXPECT_EQ(asked.at(0).dialog, inkory::PanelDialog::Toolkit);
    EXPECT_TRUE(asked.at(0).nameFilters.constFirst().contains(QStringLiteral("*.PNG")));
}

TEST_F(SelectionDialog, ImageThatCannotBeAddedIsExplainedInTheDialog)
{
    const QString bad = makeFile(QStringLiteral("<b>bad.png"), "no image");
    inkory::OpenPanel::setResponder([&](const inkory::OpenPanel &) { return QList{QUrl::fromLocalFile(bad)}; });
    run([] {
        EXPECT_FALSE(part<QFrame>("messageFrame")->isVisible());
        button("addButton")->click();
        EXPECT_TRUE(part<QLabel>("messageLabel")->isVisible());
        EXPECT_TRUE(part<QLabel>("messageLabel")->text().startsWith(QStringLiteral("“<b>bad.png” could not be added")));
        EXPECT_EQ(part<QLabel>("messageLabel")->textFormat(), Qt::PlainText);
        dialog().closeDialog();
    });
}

TEST_F(SelectionDialog, DropsTakeImagesOnly)
{
    const QString image = makeImage(QStringLiteral("s.png"));
    const QString text = makeFile(QStringLiteral("notes.txt"), "no image");
    run([&] {
        EXPECT_FALSE(dragAndDrop({text, m_home.path()}, false));
        EXPECT_FALSE(dragAndDrop({}, false));
        EXPECT_TRUE(dragAndDrop({text, image}, true));
        EXPECT_EQ(ImageStampCollection::count(), 1);
        EXPECT_EQ(list()->model()->rowCount(), 1);
        EXPECT_EQ(list()->selectedRow(), -1);
        EXPECT_FALSE(part<QLabel>("emptyListMessageTextField")->isVisible());
        EXPECT_FALSE(dragAndDrop({makeFile(QStringLiteral("bad.png"), "no image")}, true));
        dialog().closeDialog();
    });
    EXPECT_TRUE(QFileInfo::exists(image));
}

TEST_F(SelectionDialog, DrawingIsOfferedOnlyWhenSomebodyRunsTheSignatureWindow)
{
    EXPECT_FALSE(run([] {
        EXPECT_FALSE(button("createSignatureButton")->isVisible());
        dialog().createSignature();
    }));
    for (const bool made : {true, false}) {
        Controller::setSignatureWindowRunner([&](inkory::ImageStampReceiver &receiver) {
            EXPECT_EQ(&receiver, &m_receiver);
            EXPECT_FALSE(dialog().window()->isVisible());
            return made;
        });
        EXPECT_EQ(run([] {
                      EXPECT_TRUE(button("createSignatureButton")->isVisible());
                      button("createSignatureButton")->click();
                  }),
                  made);
    }
}

TEST_F(SelectionDialog, EveryControlCanBeReachedAndHasAName)
{
    addThree();
    run([] {
        EXPECT_EQ(dialog().window()->focusWidget(), list());
        for (const char *name : {"addButton", "removeButton", "closeButton", "selectButton"}) {
            EXPECT_TRUE(button(name)->text().contains(u'&')) << name;
            EXPECT_NE(button(name)->focusPolicy() & Qt::TabFocus, 0) << name;
            EXPECT_FALSE(button(name)->toolTip().isEmpty()) << name;
        }
        EXPECT_EQ(list()->accessibleName(), QStringLiteral("Signatures"));
        EXPECT_EQ(list()->model()->index(1, 0).data(Qt::AccessibleTextRole).toString(),
                  QStringLiteral("Signature 2 of 3"));
        dialog().closeDialog();
    });
}

TEST(SignatureListDelegate, FitsKeepingTheAspectWithoutEnlarging)
{
    using Delegate = inkory::SignatureListDelegate;
    EXPECT_EQ(Delegate::fittedSize({3200, 110}, {320, 110}), QSizeF(320, 11));
    EXPECT_EQ(Delegate::fittedSize({110, 1100}, {320, 110}), QSizeF(11, 110));
    EXPECT_EQ(Delegate::fittedSize({40, 20}, {320, 110}), QSizeF(40, 20));
    EXPECT_EQ(Delegate::fittedSize({0, 5}, {320, 110}), QSizeF(0, 0));
}

} // namespace
