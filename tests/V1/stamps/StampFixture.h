#pragma once

#include "V1/stamps/KRImageStamp.h"
#include "V1/stamps/KRPDFPage.h"
#include "platform/core/UndoManager.h"
#include "support/Tools.h"

#include <QCoreApplication>

/// Pages, images and an undo stack for stamps without a view.
class StampFixture : public ::testing::Test
{
protected:
    struct Host : inkory::StampHost
    {
        inkory::UndoManager *undoManager() const override { return const_cast<inkory::UndoManager *>(&manager); }
        inkory::UndoManager manager;
    };

    /// A US letter page with this rotation.
    static std::unique_ptr<KRPDFPage> letterPage(int rotation)
    {
        inkory::PageGeometry geometry;
        geometry.rotation = rotation;
        return std::make_unique<KRPDFPage>(geometry, 0);
    }

    static inkory::ImagePtr image(int width, int height)
    {
        QImage pixels(width, height, QImage::Format_ARGB32);
        pixels.fill(Qt::black);
        return inkory::Image::fromPixels(pixels);
    }

    std::shared_ptr<KRImageStamp> stampOn(KRPDFPage &page, double x = 300, double y = 400)
    {
        return KRImageStamp::create(image(100, 40), {x, y, 0, 0}, &host, &page);
    }

    /// Lets the undo manager close its step, as between two events.
    static void endEvent() { QCoreApplication::processEvents(); }

    Host host;
};
