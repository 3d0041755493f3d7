#include "V1/stamps/KRImageStamp.h"

#include "V1/stamps/KRPDFPage.h"
#include "platform/pdf/DrawingContext.h"

#include <cmath>

using namespace inkory;

namespace
{

bool isTurnedSideways(const KRPDFPage *page)
{
    return page && (page->rotation() == 90 || page->rotation() == 270);
}

} // namespace

std::shared_ptr<KRImageStamp> KRImageStamp::create(const ImagePtr &image, const PageRect &frame, StampHost *pdfView,
                                                   KRPDFPage *pdfPage)
{
    std::shared_ptr<KRImageStamp> stamp(new KRImageStamp(image, frame, pdfView, pdfPage));
    stamp->setup();
    stamp->createStamp();
    return stamp;
}

KRImageStamp::KRImageStamp(const ImagePtr &image, const PageRect &frame, StampHost *pdfView, KRPDFPage *pdfPage)
    : KRStamp(frame, pdfView, pdfPage), m_image(image)
{
}

// At most half of the page as displayed in each direction, keeping the proportions; images are never enlarged.
QSizeF KRImageStamp::sizeOnScreen() const
{
    const QSizeF size = m_image->size();
    const PageRect media = pdfPage() ? pdfPage()->boundsForBox(DisplayBox::MediaBox) : PageRect{};
    double maxWidth = media.width / 2;
    double maxHeight = media.height / 2;
    if (isTurnedSideways(pdfPage()))
        std::swap(maxWidth, maxHeight);
    if (size.width() <= maxWidth && size.height() <= maxHeight)
        return size;
    const auto heightFactor = static_cast<float>(maxHeight / size.height());
    const auto widthFactor = static_cast<float>(maxWidth / size.width());
    if (heightFactor <= widthFactor)
        return {size.width() * heightFactor, maxHeight};
    return {maxWidth, size.height() * widthFactor};
}

void KRImageStamp::createStamp()
{
    const QSizeF size = sizeOnScreen();
    double halfX = std::floor(size.width() / 2);
    double halfY = std::floor(size.height() / 2);
    if (isTurnedSideways(pdfPage()))
        std::swap(halfX, halfY); // the base class is about to exchange width and height
    setFrame({frame().x - halfX, frame().y - halfY, size.width(), size.height()});
    KRStamp::createStamp();
}

void KRImageStamp::drawStampInRect(const QRectF &rect, float frac)
{
    DrawingContext::current()->drawImage(rect, m_image, static_cast<double>(frac));
}
