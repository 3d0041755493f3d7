#pragma once

#include "platform/pdf/EngineValues.h"

#include <QByteArray>

namespace inkory
{

/// What came of writing a document.
struct WrittenDocument
{
    WriteProblem problem = WriteProblem::NotBuilt;
    /// The whole new file; empty unless the problem is None.
    QByteArray bytes;
};

/// Reads the document's pages with the writing library. Never throws.
FileStructure readStructure(const QByteArray &document, const QByteArray &password);

/// Makes the changed document. What lies over a page becomes one form XObject drawn after the page's content under the
/// page's initial graphics state; everything else of the file stays as it was, encryption included (of the older of two
/// ciphers in one kind of file the library makes the newer one; passwords and permissions stay). The result has been
/// read again and has as many pages as asked for. Never throws.
WrittenDocument writeDocument(const QByteArray &document, const QByteArray &password, const WriteRequest &request);

} // namespace inkory
