#pragma once

#include "platform/core/Image.h"

class QWidget;

namespace inkory
{

/// Who asked for a signature: the document window that shows the selection dialog and gets the chosen image.
class ImageStampReceiver
{
public:
    virtual ~ImageStampReceiver() = default;

    /// The window over which dialogs stand.
    virtual QWidget *imageStampWindow() = 0;
    virtual void setImageStampViewImage(const ImagePtr &image) = 0;
};

} // namespace inkory
