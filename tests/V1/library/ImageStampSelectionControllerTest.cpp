#include "LibraryFixture.h"

#include "V1/library/ImageStampSelectionController.h"
#include "V1/library/LibraryInterfaceDescriptions.h"
#include "V1/library/SignatureListView.h"
#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QWindow>

namespace
{

using Controller = ImageStampSelectionController;

class SelectionDialog : public LibraryFixture, public inkory::ImageStampReceiver
{
protected:
    SelectionDialog()
    {
        inkory::registerLibraryInterfaceDescriptions();
        m_window.show();
    }

    ~SelectionDialog() override
    {
        Controller::setSignatureWindowRunner({});
        Controller::releaseShared();
    }

    QWidget *imageStampWindow() override { return &m_window; }
    void setImageStampViewImage(const inkory::ImagePtr &image) override { m_images.append(image); }

    static Controller &dialog() { return Controller::sharedImageStampSelection(); }
    static QPushButton *button(const char *name)
    {
        return dialog().window()->findChild<QPushButton *>(QLatin1String(name));
    }
    static inkory::SignatureListView *list() { return dialog().window()->findChild<inkory::SignatureListView *>(); }
    static void press(Qt::Key key) { QTest::keyClick(dialog().window()->windowHandle(), key); }

    /// Shows the dialog and acts in it; a dialog that stays open is closed, and reported as a failure.
    bool run(const std::function<void()> &action)
    {
        QTimer closing;
        closing.callOnTimeout([] {
            ADD_FAILURE() << "the dialog stayed open";
            dialog().closeDialog();
        });
        QTimer::singleShot(0, &m_window, [&] {
            EXPECT_TRUE(QTest::qWaitForWindowActive(dialog().window()));
            action();
            closing.start(2000);
        });
        return dialog().showModal(*this);
    }

    QWidget m_window;
    QList<inkory::ImagePtr> m_images;
};

TEST_F(SelectionDialog, KeysChooseAndTheSelectionIsKeptBetweenRuns)
{
    addSignatures({51, 52, 53});
    EXPECT_TRUE(run([] { press(Qt::Key_Return); }));
    EXPECT_EQ(m_images, QList{ImageStampCollection::stampImageAtIndex(0)});
    EXPECT_FALSE(run([] {
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        press(Qt::Key_Escape);
    }));
    EXPECT_EQ(m_images.size(), 1);
    EXPECT_TRUE(run([] { press(Qt::Key_Enter); }));
    EXPECT_EQ(m_images.constLast(), ImageStampCollection::stampImageAtIndex(2));
}

TEST_F(SelectionDialog, DeleteRemovesAndTheNextOneIsSelected)
{
    addSignatures({51, 52, 53});
    EXPECT_FALSE(run([] {
        press(Qt::Key_Backspace);
        press(Qt::Key_Delete);
        EXPECT_EQ(widths(), (QList<int>{52, 53}));
        EXPECT_EQ(list()->selectedRow(), 0);
        for (int i = 0; i < 3; ++i)
            press(Qt::Key_Delete);
        EXPECT_FALSE(button("selectButton")->isEnabled());
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
    EXPECT_TRUE(m_images.isEmpty());
}

TEST_F(SelectionDialog, DropsTakeImagesOnly)
{
    QMimeData text;
    text.setUrls({QUrl::fromLocalFile(makeFile(u"notes.txt"_qs, "no image"))});
    QMimeData both;
    both.setUrls({text.urls().constFirst(), QUrl::fromLocalFile(makeImage(u"s.png"_qs))});
    run([&] {
        EXPECT_EQ(dialog().validateDrop(text), Qt::IgnoreAction);
        EXPECT_EQ(dialog().validateDrop(both), Qt::CopyAction);
        EXPECT_TRUE(dialog().acceptDrop(both));
        dialog().closeDialog();
    });
    EXPECT_EQ(ImageStampCollection::count(), 1);
}

TEST_F(SelectionDialog, DrawingEndsTheDialogWithWhatTheSignatureWindowAnswers)
{
    for (const bool made : {true, false}) {
        Controller::setSignatureWindowRunner([&](inkory::ImageStampReceiver &receiver) {
            EXPECT_EQ(&receiver, this);
            EXPECT_FALSE(dialog().window()->isVisible());
            return made;
        });
        EXPECT_EQ(run([] { button("createSignatureButton")->click(); }), made);
    }
}

} // namespace
