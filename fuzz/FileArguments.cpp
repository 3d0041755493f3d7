#include "V1/application/FileArguments.h"
#include "Fuzzing.h"

#include <QFile>

using namespace inkory;

namespace
{

void checkPath(const QUrl &url, const QByteArray &argument)
{
    const QByteArray path = QFile::encodeName(url.toLocalFile());
    fuzz::require(url.isLocalFile() && url.host().isEmpty(), "a path is a file of this machine");
    fuzz::require(path.startsWith('/'), "a path is known from the root on");
    const QByteArray name = argument.mid(argument.lastIndexOf('/') + 1);
    if (!name.isEmpty() && name != "." && name != "..")
        fuzz::require(path.endsWith('/' + name), "a file keeps its name");
    if (!argument.contains("/") && !name.startsWith('.'))
        fuzz::require(url == urlFromArgument(QFile::decodeName("./" + argument)), "a name is a file in this folder");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = fuzz::bytesFromFuzzer(data, size);
    const auto end = bytes.indexOf('\0'); // where the system ends an argument
    const QByteArray argument = end < 0 ? bytes : bytes.first(end);
    const QString text = QFile::decodeName(argument);
    if (QFile::encodeName(text) != argument)
        return 0; // no text, and so no name that could be kept
    const QUrl url = urlFromArgument(text);
    if (text.isEmpty())
        fuzz::require(url.isEmpty(), "an empty argument names no file");
    else if (text.contains(QStringLiteral("://")))
        fuzz::require(url.isValid(), "an address is valid");
    else
        checkPath(url, argument);
    return 0;
}
