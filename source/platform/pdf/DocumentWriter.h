#pragma once

#include "platform/core/Result.h"
#include "platform/core/SecretBytes.h"
#include "platform/pdf/EngineMessages.h"
#include "platform/pdf/EngineValues.h"

#include <QByteArray>

#include <atomic>

namespace inkory
{

class DocumentFile;

/// What came of looking at a document with both libraries.
struct SurveyOutcome
{
    /// Empty if the survey could be made; otherwise why not, for the person.
    QString failure;
    Survey survey;
};

// Each of these starts a helper process, waits for it, and ends it: for worker threads. The file's private copy is used
// where there is one.

/// Reads the geometry of all pages, with the writing library and with the drawing one. Ends early, with a failure, when
/// the flag becomes true.
SurveyOutcome surveyDocument(const DocumentFile &file, const SecretBytes &password, const std::atomic<bool> &givenUp);

/// The whole new file: see writeDocument() in the engine. Fails with a sentence for the person.
Result<QByteArray> writeChangedDocument(const DocumentFile &file, const SecretBytes &password,
                                        const WriteRequest &request);

} // namespace inkory
