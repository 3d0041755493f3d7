#pragma once

#include "platform/widgets/DocumentController.h"

/// The process's document controller, which announces every closed document with "DOCUMENT_REMOVED". It must be the
/// first document controller that is made. Owned by the application delegate.
class KRDocumentController : public inkory::DocumentController
{
    Q_OBJECT

public:
    using DocumentController::DocumentController;

    /// "DOCUMENT_REMOVED"; its object is the controller, so that an observer does not learn which document it was.
    static QString documentRemovedNotification();

    /// Posts the notification once the document is no longer in the list.
    void removeDocument(inkory::Document *document) override;
};
