#pragma once

#include "V1/editing/KRPDFView.h"
#include "V1/editing/StampViewOverlay.h"
#include "V1/stamps/KRImageStamp.h"
#include "V1/stamps/KRPDFDocument.h"
#include "V1/stamps/KRPDFPage.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QMainWindow>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>

/// An editing view of 700 x 500 pixels in a shown window, with a toolbar, an undo stack, and an open document.
class EditingFixture : public ::testing::Test
{
protected:
    EditingFixture()
    {
        window.setCentralWidget(new QWidget);
        view = new KRPDFView(window.centralWidget());
        auto *toolbar = new StampViewToolbar(view);
        toolbar->resize(10, 24);
        view->setStampViewToolbar(toolbar);
        view->setRotateStampCWButton(addButton(toolbar, 6));
        view->setRotateStampCCWButton(addButton(toolbar, 5));
        view->setTextEditButton(addButton(toolbar, 1));
        view->textEditButton()->setCheckable(true);
        view->setTextFontButton(addButton(toolbar, 2));
        view->setTextColorButton(addButton(toolbar, 3));
        view->setTextBGColorButton(addButton(toolbar, 4));
        view->setUndoManager(&undoManager);
        view->awakeFromNib();
        window.resize(700, 500);
        window.show();
        view->setGeometry(0, 0, 700, 500);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

    ~EditingFixture() override { view->setDocument(nullptr); }

    void open(const QByteArray &bytes)
    {
        document.initWithURL(inkory::test::writeFile(folder.path(), QStringLiteral("document.pdf"), bytes));
        view->setDocument(&document);
        view->windowDidLoad();
        ASSERT_TRUE(QTest::qWaitFor([this] { return document.isGeometrySettled(); }, 10000));
        ASSERT_TRUE(document.canSave()) << document.readOnlyReason().toStdString();
    }

    KRPDFPage &page(int index) const { return dynamic_cast<KRPDFPage &>(*document.pageAtIndex(index)); }

    /// The point of page space in the window.
    QPoint windowPoint(int pageIndex, inkory::PagePoint point)
    {
        const inkory::ViewPoint inView = view->convertPointFromPage(point, &page(pageIndex));
        return view->mapTo(&window, QPoint(qRound(inView.x), qRound(view->height() - inView.y)));
    }

    /// A press and a release, delivered to the window, so that hit-testing takes part.
    void click(QPoint position) { QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, position); }

    static inkory::ImagePtr image(int width = 100, int height = 40)
    {
        QImage pixels(width, height, QImage::Format_ARGB32);
        pixels.fill(Qt::blue);
        return inkory::Image::fromPixels(pixels);
    }

    void useImageTool()
    {
        view->setStampImage(image());
        view->setCurrentToolType(ToolTypeImageStamp);
    }

    static QToolButton *addButton(QWidget *toolbar, int tag)
    {
        auto *button = new QToolButton(toolbar);
        button->setProperty("tag", tag);
        button->setGeometry(0, 2, 20, 20);
        return button;
    }

    QTemporaryDir folder;
    KRPDFDocument document;
    inkory::UndoManager undoManager;
    QMainWindow window;
    KRPDFView *view = nullptr; // the window's
};
