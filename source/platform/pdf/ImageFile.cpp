#include "platform/pdf/ImageFile.h"

#include "platform/pdf/EngineValues.h"
#include "platform/pdf/ImageHelper.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace inkory
{

namespace
{

constexpr qint64 mostMegabytes = 256;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(ImageFile)
};

} // namespace

Result<ImagePtr> readImageFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return Error{Text::tr("The file does not exist.")};
    if (!info.isFile())
        return Error{Text::tr("It is not a file.")}; // opening a pipe could wait for ever
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return Error{Text::tr("The file could not be opened: %1.").arg(file.errorString())};
    const qint64 size = file.size();
    if (size == 0)
        return Error{Text::tr("The file is empty. Copy or download it again.")};
    if (size > mostMegabytes << 20)
        return Error{Text::tr("The file is too large: %1 MB is the limit. Save the image smaller and add that file.")
                         .arg(mostMegabytes)};
    return decodeInHelper(file.handle(), size);
}

QString sentenceFor(const ImageReply &reply)
{
    switch (reply.problem) {
    case ImageProblem::None:
        break;
    case ImageProblem::UnknownKind:
        return Text::tr("The file is not an image of a known kind. Save it as PNG or JPEG and add that file.");
    case ImageProblem::CutOff:
        return Text::tr("The image is incomplete: the file has been cut off. Copy or download it again.");
    case ImageProblem::TooLarge:
        return Text::tr("The image is too large: it has %1 × %2 pixels. Save it smaller and add that file.")
            .arg(reply.pixelSize.width())
            .arg(reply.pixelSize.height());
    case ImageProblem::Damaged:
        return Text::tr("The image is damaged and cannot be read. Save it as PNG or JPEG and add that file, or try "
                        "another copy of it.");
    }
    return {};
}

} // namespace inkory
