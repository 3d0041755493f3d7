#include "V1/application/KRDocumentController.h"

#include "platform/core/NotificationCenter.h"

QString KRDocumentController::documentRemovedNotification()
{
    return QStringLiteral("DOCUMENT_REMOVED");
}

void KRDocumentController::removeDocument(inkory::Document *document)
{
    DocumentController::removeDocument(document);
    inkory::NotificationCenter::defaultCenter().post(documentRemovedNotification(), this);
}
