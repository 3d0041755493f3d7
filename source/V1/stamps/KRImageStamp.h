#pragma once

#include "V1/stamps/KRStamp.h"
#include "platform/core/Image.h"

/// A stamp that shows an image, in practice a signature. Sizes itself from the image, at most half the page in each
/// direction, and centres itself on the point where it was placed.
class KRImageStamp : public KRStamp
{
public:
    /// The frame's origin is the point, in page space, on which the stamp is to be centred; its width and height are
    /// not used. The stamp joins the page's list.
    static std::shared_ptr<KRImageStamp> create(const inkory::ImagePtr &image, const inkory::PageRect &frame,
                                                inkory::StampHost *pdfView, KRPDFPage *pdfPage);

    StampType stampType() const override { return StampTypeImage; }

    /// Never none. Shared with other stamps of the same image.
    const inkory::ImagePtr &image() const { return m_image; }
    void setImage(const inkory::ImagePtr &image) { m_image = image; }

protected:
    void createStamp() override;
    void drawStampInRect(const QRectF &rect, float frac) override;

private:
    KRImageStamp(const inkory::ImagePtr &image, const inkory::PageRect &frame, inkory::StampHost *pdfView,
                 KRPDFPage *pdfPage);
    QSizeF sizeOnScreen() const;

    inkory::ImagePtr m_image;
};
