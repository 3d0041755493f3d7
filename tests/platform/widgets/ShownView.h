#pragma once

#include "platform/widgets/PDFView.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QScrollBar>
#include <QSignalSpy>

namespace inkory::test
{

/// A document that is open and whose pages' sizes are known.
class OpenedDocument : public ::testing::Test
{
protected:
    void open(const QByteArray &bytes, PDFView *view = nullptr)
    {
        document.initWithURL(writeFile(folder.path(), QStringLiteral("a.pdf"), bytes));
        if (view)
            view->setDocument(&document);
        ASSERT_TRUE(QTest::qWaitFor([&] { return document.isGeometrySettled(); }, 20000));
    }

    QTemporaryDir folder;
    PDFDocument document;
};

/// The same in a shown view of 640 x 480 pixels.
template <class View = PDFView> class ShownView : public OpenedDocument
{
protected:
    void open(const QByteArray &bytes)
    {
        view.resize(640, 480);
        view.show();
        OpenedDocument::open(bytes, &view);
    }
    bool isDrawn()
    {
        return QTest::qWaitFor([&] { return view.isContentComplete(); }, 10000);
    }
    /// Where the point of view space is in the widget.
    QPoint inWidget(const ViewPoint &point) const { return {qRound(point.x), qRound(view.height() - point.y)}; }

    View view;
};

} // namespace inkory::test
