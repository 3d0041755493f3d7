#pragma once

#include "platform/pdf/PageGeometry.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

class DocumentFile;

/// A file in the writing library's hands.
struct QpdfFile
{
    /// What the library reads from; shared with the caller, not copied.
    QByteArray bytes;
    std::shared_ptr<QPDF> document;
};

/// Opens the bytes with the password, in each of the forms it may have in a file. Warnings are not printed. Throws what
/// the library throws.
QpdfFile openWithQpdf(const QByteArray &bytes, const QByteArray &password);

/// The box that four numbers in any order stand for, perhaps without area; none for anything else, and for numbers past
/// any sense.
std::optional<PageRect> boxFromObject(const QPDFObjectHandle &object);

/// Cleans up what a file says: see PageGeometry.
PageGeometry cleanGeometry(const std::optional<PageRect> &mediaBox, const std::optional<PageRect> &cropBox,
                           long long rotation);

/// Why the document's author does not let it be changed; empty if it may be.
QString changeRefusal(QPDF &document);

/// The document written anew with a healthy page tree, its protection kept; empty if the library finds no page in it
/// either. The pages are the ones that readPages() finds in the original, in the same order.
QByteArray repairedDocument(const QByteArray &bytes, const QByteArray &password);

/// Whether a locked file is protected by something else than a password. Reads the file's private copy, or through its
/// descriptor while there is none.
bool isProtectionUnknown(const DocumentFile &file);

} // namespace inkory
