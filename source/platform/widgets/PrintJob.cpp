#include "platform/widgets/PrintJob.h"

#include "platform/core/DisplayText.h"
#include "platform/core/Log.h"
#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PrintOperation.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/PDFView.h"
#include "platform/widgets/PrintDialog.h"
#include "platform/widgets/PrintProgress.h"
#include "platform/widgets/PrinterQueue.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QProcess>
#include <QSaveFile>
#include <QTemporaryFile>
#include <QTimer>

#include <utility>

namespace inkory
{

namespace
{

constexpr std::size_t mostPagesNamed = 20;
constexpr int printerPatienceMilliseconds = 30'000;

/// One operation under way. Owned by its view; deletes itself at the end.
class PrintJob : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(PrintJob)

public:
    PrintJob(PDFView &view, std::unique_ptr<PrintOperation> operation)
        : QObject(&view), m_view(view), m_window(view.window()), m_operation(std::move(operation)),
          m_info(m_operation->printInfo()), m_title(m_operation->title()), m_progress(new PrintProgress(view.window())),
          m_printerPatience(new QTimer(this))
    {
        setObjectName(QStringLiteral("printJob"));
        connect(m_operation.get(), &PrintOperation::sheetBegan, m_progress, &PrintProgress::showSheet);
        connect(m_operation.get(), &PrintOperation::finished, this, &PrintJob::operationFinished);
        connect(m_progress, &PrintProgress::cancelled, this, &PrintJob::end);
        m_printerPatience->setObjectName(QStringLiteral("printerPatience"));
        m_printerPatience->setSingleShot(true);
        m_printerPatience->setInterval(printerPatienceMilliseconds);
        connect(m_printerPatience, &QTimer::timeout, m_progress, &PrintProgress::showSilence);
    }

    ~PrintJob() override
    {
        m_queue.disconnect(this); // its end would be told to what is half destroyed
        if (m_queue.state() != QProcess::NotRunning) {
            m_queue.kill();
            m_queue.waitForFinished();
        }
        delete m_progress.data();
    }

    void start()
    {
        if (!openOutput())
            return;
        m_progress->show();
        m_operation->start(m_output);
    }

private:
    bool isForPrinter() const { return !m_info.printerName.isEmpty(); }

    bool openOutput()
    {
        if (isForPrinter() && printerQueueProgram().isEmpty()) {
            endForPrinter(tr("The program “lp” is missing. Install the package “cups-client”, or print to a file."));
            return false;
        }
        if (isForPrinter()) {
            auto file = std::make_shared<QTemporaryFile>(QDir::temp().filePath(QStringLiteral("inkory-print-XXXXXX")));
            if (file->open()) {
                m_output = file;
                return true;
            }
            endWithAlert(tr("Nothing could be printed."),
                         tr("There is no place for temporary files: %1. Free some space on the disk and print again.")
                             .arg(displayable(file->errorString())));
            return false;
        }
        m_file = std::make_shared<QSaveFile>(m_info.outputFileName);
        m_output = m_file;
        if (m_file->open(QIODevice::WriteOnly))
            return true;
        endForUnwritableFile();
        return false;
    }

    void operationFinished(const PrintOperation::Outcome &outcome)
    {
        m_undrawnPages = outcome.undrawnPages;
        if (outcome.ending == PrintOperation::Ending::DocumentClosed)
            end();
        else if (isForPrinter())
            sendToPrinter(outcome.ending);
        else if (outcome.ending == PrintOperation::Ending::Printed && m_file->commit())
            endWell();
        else
            endForUnwritableFile();
    }

    void sendToPrinter(PrintOperation::Ending ending)
    {
        if (ending == PrintOperation::Ending::NotWritten) {
            endWithAlert(
                tr("Nothing could be printed."),
                tr("The pages could not be stored on their way to the printer: %1. Free some space on the disk and "
                   "print again.")
                    .arg(displayable(m_output->errorString())));
        } else {
            m_progress->showSending();
            connect(&m_queue, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart)
                    endForPrinter(tr("The program “lp” could not be started. Print to a file instead."));
            });
            connect(&m_queue, &QProcess::finished, this, &PrintJob::printerAnswered);
            m_queue.setProcessChannelMode(QProcess::MergedChannels);
            m_queue.setStandardInputFile(QProcess::nullDevice());
            m_printerPatience->start();
            m_queue.start(printerQueueProgram(), printerQueueArguments(m_info, m_title, m_output->fileName()));
        }
    }

    void printerAnswered(int exitCode, QProcess::ExitStatus status)
    {
        if (status == QProcess::NormalExit && exitCode == 0) {
            endWell();
            return;
        }
        const QString answer = displayable(QString::fromLocal8Bit(m_queue.readAll()).trimmed());
        endForPrinter(tr("The print system refused them: %1 Check that the printer is switched on and connected, then "
                         "print again.")
                          .arg(answer.isEmpty() ? tr("it did not say why.") : answer));
    }

    void endForPrinter(const QString &reason)
    {
        endWithAlert(tr("The pages could not be sent to the printer “%1”.").arg(displayable(m_info.printerName)),
                     reason);
    }

    void endForUnwritableFile()
    {
        endWithAlert(
            tr("The file “%1” could not be written.").arg(displayable(m_info.outputFileName)),
            tr("%1. Choose another folder or another name, and print again.").arg(displayable(m_file->errorString())));
    }

    void endWell()
    {
        if (!isForPrinter())
            Q_EMIT m_view.printedToFile(displayable(QFileInfo(m_info.outputFileName).fileName()));
        if (m_undrawnPages.empty()) {
            end();
            return;
        }
        QStringList numbers;
        for (std::size_t i = 0; i < m_undrawnPages.size() && i < mostPagesNamed; ++i)
            numbers.append(QString::number(m_undrawnPages[i]));
        if (m_undrawnPages.size() > mostPagesNamed)
            numbers.append(QStringLiteral("…"));
        endWithAlert(m_undrawnPages.size() == 1 ? tr("One page could not be drawn.")
                                                : tr("Some pages could not be drawn."),
                     tr("Printed as an empty page: %1. Do not count on the printout being complete.")
                         .arg(numbers.join(QStringLiteral(", "))));
    }

    /// What was not put in place by now disappears.
    void end()
    {
        m_operation.reset();
        m_printerPatience->stop();
        m_queue.disconnect(this);
        m_queue.kill();
        m_output.reset();
        m_file.reset();
        if (m_progress) {
            m_progress->disconnect(this);
            m_progress->hide();
            m_progress->deleteLater(); // it may be what called
        }
        deleteLater();
    }

    void endWithAlert(const QString &messageText, const QString &informativeText)
    {
        Alert alert;
        alert.messageText = messageText;
        alert.informativeText = informativeText;
        logLine(QStringLiteral("printing: %1 %2").arg(messageText, informativeText));
        const QPointer<QWidget> window = m_window;
        end();
        alert.runModal(window); // last: this object may be gone afterwards
    }

    PDFView &m_view; // the parent
    QPointer<QWidget> m_window;
    std::unique_ptr<PrintOperation> m_operation;
    PrintInfo m_info;
    QString m_title;
    QPointer<PrintProgress> m_progress; // the window may take it along
    std::shared_ptr<QFileDevice> m_output;
    std::shared_ptr<QSaveFile> m_file; // the same, where it is to be kept
    QProcess m_queue;
    QTimer *m_printerPatience; // runs while the print system has the pages
    std::vector<int> m_undrawnPages;
};

// What the window tells of its document, also after that was saved elsewhere; nothing for a window without one.
QFileInfo documentFileOf(const PDFView &view)
{
    return QFileInfo(view.window()->windowFilePath());
}

QString titleOf(const PDFView &view)
{
    const QString name = displayable(documentFileOf(view).fileName());
    return name.isEmpty() ? QGuiApplication::applicationDisplayName() : name;
}

QString suggestedFile(const PDFView &view)
{
    const QFileInfo document = documentFileOf(view);
    const bool isNamed = !document.fileName().isEmpty();
    const QDir folder = isNamed ? document.absoluteDir() : QDir::home();
    //: The suggested name of a PDF file that is printed to.
    const QString name = QCoreApplication::translate("PrintDialog", "%1 (printed)")
                             .arg(isNamed ? document.completeBaseName() : QGuiApplication::applicationDisplayName());
    return folder.filePath(name + QStringLiteral(".pdf"));
}

// What belongs to one document or one printout is not for the next.
PrintInfo lastingPart(PrintInfo info)
{
    info.pages = {};
    info.copies = 1;
    info.isToFile = info.printerName.isEmpty();
    info.outputFileName.clear();
    return info;
}

} // namespace

void runPrintOperation(PDFView &view, std::unique_ptr<PrintOperation> operation)
{
    if (view.findChild<QObject *>(QStringLiteral("printJob"), Qt::FindDirectChildrenOnly))
        return;
    operation->setTitle(titleOf(view));
    PrintInfo info = operation->printInfo();
    if (info.outputFileName.isEmpty())
        info.outputFileName = suggestedFile(view);
    operation->setPrintInfo(info);
    const QPointer<PDFView> shown = &view;
    if (!runPrintDialog(*operation, view) || !shown || !operation->document())
        return;
    sharedPrintInfo() = lastingPart(operation->printInfo());
    auto *job = new PrintJob(view, std::move(operation));
    job->start();
}

} // namespace inkory
