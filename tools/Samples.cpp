// Writes the files that the tests are about into a folder, for tools that need PDF files to begin with:
//   inkory_samples FOLDER
// Beside a file that a password opens stands one of the same name, ".password" appended, with nothing but that.

#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        QTextStream(stderr) << "inkory_samples FOLDER\n";
        return 2;
    }
    const QString folder = QCoreApplication::arguments().at(1);
    for (const inkory::test::Sample &sample : inkory::test::troubleSamples()) {
        const QString name = sample.name + QStringLiteral(".pdf");
        inkory::test::writeFile(folder, name, sample.bytes);
        if (!sample.password.isEmpty())
            inkory::test::writeFile(folder, name + QStringLiteral(".password"), sample.password.toUtf8());
    }
    return 0;
}
