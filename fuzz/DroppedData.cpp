#include "Fuzzing.h"
#include "V1/application/WelcomeWindowController.h"
#include "V1/library/ImageStampSelectionController.h"

#include <QApplication>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>

using namespace inkory;

namespace
{

const QString uriList = QStringLiteral("text/uri-list");

/// What the controllers stand on, and files to drop. "@" in the fuzzer's bytes stands for the folder.
struct Ground
{
    Ground() : application(count, names)
    {
        write(QStringLiteral("/a.pdf"), "%PDF-1.7\n1 0 obj\n");
        write(QStringLiteral("/b.png"), "no picture, but its name says so");
        write(QStringLiteral("/c.txt"), "text");
    }

    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(folder.path() + name);
        fuzz::require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "files can be made");
    }
    QByteArray url(const char *name) const { return "file://" + folder.path().toUtf8() + name; }

    int count = 1;
    char program[5] = "fuzz";
    char *names[2] = {program, nullptr};
    QApplication application;
    QTemporaryDir folder;
    WelcomeWindowController welcome{QStringLiteral("WelcomeWindow")};
    ImageStampSelectionController &library = ImageStampSelectionController::sharedImageStampSelection();
};

bool isTaken(const Ground &ground, const QByteArray &urls, bool asDocument)
{
    QMimeData data;
    data.setData(uriList, urls);
    const Qt::DropAction action = asDocument ? ground.welcome.draggingEntered(data) : ground.library.validateDrop(data);
    fuzz::require(action == Qt::CopyAction || action == Qt::IgnoreAction, "a drop is copied or not taken");
    return action == Qt::CopyAction;
}

} // namespace

// A drop is taken if and only if a fitting file is among what is dropped, whatever else there is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Ground &ground = *new Ground; // outlives the program's end, where windows could not be taken apart
    // With a line's end: without one, a zero byte at the end does not count, and in the middle of a list it does.
    const QByteArray urls = fuzz::bytesFromFuzzer(data, size).replace('@', ground.folder.path().toUtf8()) + "\r\n";
    const bool isDocument = isTaken(ground, urls, true);
    const bool isImage = isTaken(ground, urls, false);
    // Line by line: a per cent sign at the end of one must not swallow the beginning of the next.
    QByteArray decoded;
    for (const QByteArray &line : urls.split('\n'))
        decoded += QByteArray::fromPercentEncoding(line).toLower() + '\n';
    fuzz::require(!isDocument || (decoded.contains("file:") && decoded.contains("/a.pdf")),
                  "only the PDF document is taken as a document");
    fuzz::require(!isImage || (decoded.contains("file:") && decoded.contains("/b.png")),
                  "only the image is taken as an image");
    fuzz::require(isTaken(ground, urls + ground.url("/a.pdf"), true), "a document among others is taken");
    fuzz::require(isTaken(ground, urls + ground.url("/b.png"), false), "an image among others is taken");
    fuzz::require(isTaken(ground, urls + ground.url("/c.txt"), true) == isDocument,
                  "another file is not taken for a document");
    return 0;
}
