#include "V1/application/AppDelegate.h"

#include "V1/application/InterfaceRegistration.h"
#include "V1/application/KRDocumentController.h"
#include "V1/application/PDFDocumentModel.h"
#include "V1/application/WelcomeWindowController.h"
#include "V1/capture/SignatureWindowController.h"
#include "V1/library/ImageStampSelectionController.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/PlatformVersion.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QScreen>
#include <QTimer>

#include <chrono>

namespace
{

/// The platform releases that are refused lie between these, both included.
constexpr double firstRefusedPlatform = 1504;
constexpr double lastRefusedPlatform = 1504.6;

/// How soon to look again whether the welcome window can be shown, while another modal window is in the way.
constexpr std::chrono::milliseconds lookAgainDelay(100);

void centre(QWidget &window)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    window.move(screen.center() - QRect(QPoint(), window.size()).center());
}

} // namespace

AppDelegate::AppDelegate(QObject *parent) : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::launch(const QList<QUrl> &files)
{
    if (applicationWillFinishLaunching() == Launch::Refused)
        return QCoreApplication::exit(1);
    m_documentController->openDocumentsReportingFailures(files);
    if (m_documentController->documents().isEmpty() && !m_documentController->isOpening())
        applicationShouldOpenUntitledFile();
}

AppDelegate::Launch AppDelegate::applicationWillFinishLaunching()
{
    inkory::UserDefaults::standard().registerDefaults({{QStringLiteral("NSFunctionBarAPIEnabled"), false}});

    const double version = inkory::platformVersion();
    if (version >= firstRefusedPlatform && version <= lastRefusedPlatform) {
        m_welcomeWindowDisplayed = true; // none is wanted while the alert is up
        inkory::Alert alert;
        alert.messageText = tr("Your MacOS Sierra is not up to date");
        alert.informativeText =
            tr("It appears that you are running MacOS Sierra 10.12 which isn't updated to the latest MacOS version.\n\n"
               "On MacOS Sierra, Inkory requires at least version 10.12.2 to run.");
        alert.runModal();
        return Launch::Refused;
    }

    inkory::registerApplicationInterfaceDescriptions();
    ImageStampSelectionController::setSignatureWindowRunner([](inkory::ImageStampReceiver &receiver) {
        return SignatureWindowController::sharedController().showModal(receiver);
    });
    m_documentController = std::make_unique<KRDocumentController>();
    m_documentController->setDocumentFactory([] { return std::make_unique<PDFDocumentModel>(); });
    connect(m_documentController.get(), &KRDocumentController::documentOpened, this, &AppDelegate::documentOpened);
    connect(m_documentController.get(), &KRDocumentController::openingEnded, this, &AppDelegate::pdfDocumentWasClosed);
    m_welcomeWindowDisplayed = false;
    inkory::NotificationCenter::defaultCenter().addObserver(
        this, KRDocumentController::documentRemovedNotification(), nullptr,
        [this](const inkory::Notification &) { pdfDocumentWasClosed(); });
    return Launch::Allowed;
}

bool AppDelegate::applicationShouldOpenUntitledFile()
{
    if (!m_welcomeWindowDisplayed)
        openWelcomeWindow();
    return false;
}

void AppDelegate::openWelcomeWindow()
{
    if (m_welcomeWindowController)
        return;
    m_welcomeWindowController = std::make_unique<WelcomeWindowController>(QStringLiteral("WelcomeWindow"));
    QWidget *window = m_welcomeWindowController->window();
    centre(*window);
    m_documentController->setSessionThatAllowsOpening(window);
    inkory::runModalForWindow(*window);
    const bool dismissedByUser = m_welcomeWindowController->wasDismissedByUser();
    m_welcomeWindowController.reset();
    m_welcomeWindowDisplayed = true;
    QTimer::singleShot(0, this, [this, dismissedByUser] { welcomeWindowEnded(dismissedByUser); });
}

void AppDelegate::welcomeWindowEnded(bool dismissedByUser)
{
    const QList<inkory::Document *> documents = m_documentController->documents();
    if (!documents.isEmpty())
        documents.last()->showWindows(); // a window that was shown below a modal one is not the active one
    else if (dismissedByUser && !m_documentController->isOpening())
        m_documentController->terminate(); // nothing is left that the person could act on
    else
        openWelcomeWindowIfIdle();
}

void AppDelegate::pdfDocumentWasClosed()
{
    // Not in the poster's call: the document's window is still closing, and another document may be about to open.
    QTimer::singleShot(0, this, &AppDelegate::openWelcomeWindowIfIdle);
}

void AppDelegate::openWelcomeWindowIfIdle()
{
    if (m_welcomeWindowController || m_documentController->isQuitting() || m_documentController->isOpening() ||
        !m_documentController->documents().isEmpty())
        return;
    if (inkory::modalWindow() || QApplication::activeModalWidget())
        QTimer::singleShot(lookAgainDelay, this, &AppDelegate::openWelcomeWindowIfIdle);
    else
        openWelcomeWindow();
}

void AppDelegate::documentOpened()
{
    if (m_welcomeWindowController)
        QTimer::singleShot(0, m_welcomeWindowController.get(), &WelcomeWindowController::closeIfDocumentOpened);
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Quit || watched != QCoreApplication::instance())
        return false;
    if (!m_documentController || m_documentController->documents().isEmpty())
        return false;
    m_documentController->terminate();
    event->ignore();
    return true;
}
