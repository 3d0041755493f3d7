#include "V1/editing/PDFThumbnailView+PrintDocument.h"

#include "platform/widgets/PDFThumbnailView.h"
#include "platform/widgets/PDFView.h"

#include <QMetaObject>

void printDocument(const inkory::PDFThumbnailView &thumbnails)
{
    constexpr const char *command = "printDocument";
    for (QObject *performer = thumbnails.pdfView(); performer; performer = performer->parent()) {
        if (performer->metaObject()->indexOfMethod("printDocument()") >= 0) {
            QMetaObject::invokeMethod(performer, command);
            return;
        }
    }
}
