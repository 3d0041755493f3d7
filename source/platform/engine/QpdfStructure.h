#pragma once

#include "platform/pdf/EngineValues.h"

#include <QByteArray>

#include <exception>
#include <memory>
#include <optional>
#include <string>

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

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

/// Whether the document's author does not let it be changed.
bool forbidsChanges(QPDF &document);

/// Whether the library had to look for what the file does not say rightly, in what it has read of it so far. Forgets
/// the library's warnings.
bool isRepaired(QPDF &document);

/// What is wrong with a file for which the library threw this. PasswordNeeded also where the password is wrong.
OpenProblem readingProblem(const std::exception &exception);

/// Logs what an exception from a library says, behind what could not be done.
void logFailure(const char *failure, const std::exception &exception);

/// The document as a file, with all that is unchanged as it was. Throws what the library throws.
QByteArray writtenBytes(QPDF &document, qsizetype expectedSize, const std::string &minimumVersion = {});

/// A document written anew with a healthy page tree, its protection kept.
struct RepairedDocument
{
    OpenProblem problem = OpenProblem::Damaged;
    /// Empty unless the problem is None.
    QByteArray bytes;
};

/// Its pages are the ones that readPages() finds in the original, in the same order. Never throws.
RepairedDocument repairedDocument(const QByteArray &bytes, const QByteArray &password);

/// Whether a locked file is protected by something else than a password.
bool isProtectionUnknown(const QByteArray &bytes);

} // namespace inkory
