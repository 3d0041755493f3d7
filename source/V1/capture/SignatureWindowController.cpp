#include "V1/capture/SignatureWindowController.h"

#include "V1/capture/BrushCursor.h"
#include "V1/capture/CaptureColorWell.h"
#include "V1/capture/CaptureDevices.h"
#include "V1/capture/ColorSelectButtonCell.h"
#include "V1/capture/SignaturePadBackgroundView.h"
#include "V1/capture/SignaturePadView.h"
#include "V1/capture/SignatureTrimming.h"
#include "V1/library/ImageStampCollection.h"
#include "platform/core/Log.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/ModalSession.h"
#include "platform/widgets/SegmentedControl.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QScreen>
#include <QSlider>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace inkory;

namespace
{

enum WindowCode { NoSignature = 0, SignatureMade = 1 };

constexpr std::chrono::milliseconds labelStays(300);
constexpr QMargins windowFrame(2, 34, 2, 2); // about what the desktop puts around the window

bool isStart(QEvent::Type type)
{
    return type == QEvent::MouseButtonPress || type == QEvent::TabletPress || type == QEvent::TouchBegin;
}

std::unique_ptr<SignatureWindowController> &shared()
{
    static std::unique_ptr<SignatureWindowController> controller;
    return controller;
}

} // namespace

SignatureWindowController::SignatureWindowController() : WindowController(QStringLiteral("SignatureWindow"))
{
    m_padUpdate.setSingleShot(true);
    connect(&m_padUpdate, &QTimer::timeout, this, &SignatureWindowController::updateSignaturePad);
    m_labelHiding.setSingleShot(true);
    m_labelHiding.setInterval(labelStays);
    connect(&m_labelHiding, &QTimer::timeout, this, &SignatureWindowController::hideThicknessSliderLabel);
}

SignatureWindowController::~SignatureWindowController()
{
    if (m_signaturePadView)
        m_signaturePadView->setTouchSource(nullptr); // the window outlives the devices
}

SignatureWindowController &SignatureWindowController::sharedController()
{
    if (!shared()) {
        shared().reset(new SignatureWindowController);
        shared()->window();
        qAddPostRoutine(&releaseShared); // a window must not outlive the application object
    }
    return *shared();
}

void SignatureWindowController::releaseShared()
{
    shared().reset();
}

bool SignatureWindowController::showModal(ImageStampReceiver &pdfWindowController)
{
    QWidget *shown = m_running ? nullptr : window();
    if (!shown)
        return false;
    m_pdfWindowController = &pdfWindowController;
    placeOver(pdfWindowController.imageStampWindow());
    shown->winId(); // from now on the pad knows the density of its screen
    m_signaturePadView->setImage({});
    m_signaturePadView->setFocus();
    const bool isTrackpadChosen = m_signaturePadView->signatureDrawingMode() == SignatureDrawingModeTrackpad;
    m_drawMethodMatrix->setSegmentVisible(m_drawMethodMatrix->segmentCount() - 1,
                                          isTrackpadChosen || CaptureDevices::isTrackpadModeUsable());
    showAdvice();
    m_running = true;
    const int code = runModalForWindow(*shown, pdfWindowController.imageStampWindow());
    if (std::exchange(m_running, false)) // the program is quitting: nobody has closed the window
        letGo();
    shown->hide();
    return code == SignatureMade;
}

void SignatureWindowController::closeWithCode(int code)
{
    if (!m_running) // closing a window can be reported twice; the session outside must not be stopped by it
        return;
    m_running = false;
    letGo();
    stopModalWithCode(code);
}

void SignatureWindowController::letGo()
{
    m_signaturePadView->setIsTouchDrawing(false);
    m_colorWell->closePanel();
}

void SignatureWindowController::closePanel()
{
    closeWithCode(NoSignature);
}

void SignatureWindowController::windowWillClose()
{
    closeWithCode(NoSignature);
}

void SignatureWindowController::done()
{
    if (!m_running)
        return; // a second click that waited in the queue
    const ImagePtr drawn = trimmedSignature(m_signaturePadView->image());
    if (!drawn)
        return closeWithCode(NoSignature);
    m_signaturePadView->setIsTouchDrawing(false); // an answer may be wanted
    if (const ImagePtr stored = ImageStampCollection::saveImageToUserData(drawn)) {
        m_pdfWindowController->setImageStampViewImage(stored);
        return closeWithCode(SignatureMade);
    }
    logLine(QStringLiteral("Unable to obtain image from Image Collection!"));
    Alert alert;
    alert.messageText = tr("Your signature could not be kept");
    alert.informativeText = (ImageStampCollection::problems() +
                             QStringList(tr("Try again once that is mended: the drawing is still there.")))
                                .join(QStringLiteral("\n\n"));
    alert.buttons = {tr("Try Again"), tr("Close Without It")};
    constexpr int tryAgain = 1;
    if (alert.runModal(window()) == tryAgain)
        return done();
    closeWithCode(NoSignature);
}

void SignatureWindowController::clearClicked()
{
    m_signaturePadView->clear();
}

void SignatureWindowController::thicknessSliderMoved()
{
    m_padUpdate.start(0);
    m_labelHiding.start();
    m_thicknessLabel->setText(QLocale().toString(m_thicknessSlider->value()));
    m_thicknessLabel->show();
}

void SignatureWindowController::updateSignaturePad()
{
    m_signaturePadView->setThickness(static_cast<std::uint64_t>(m_thicknessSlider->value()));
    setMatchingBrushCursor();
}

void SignatureWindowController::hideThicknessSliderLabel()
{
    m_thicknessLabel->hide();
}

void SignatureWindowController::clickColorButton(const ColorSelectButtonCell &sender)
{
    const QColor color = colors().at(static_cast<std::size_t>(sender.tag()));
    m_colorWell->setColor(color);
    setColorsWithForeground(color);
}

void SignatureWindowController::colorPicked(const QColor &color)
{
    setColorsWithForeground(color);
}

void SignatureWindowController::setColorsWithForeground(const QColor &color)
{
    m_signaturePadView->setColor(color);
}

void SignatureWindowController::switchSignatureDrawTool(SegmentedControl *sender)
{
    const int tool = sender->tagForSegment(sender->selectedSegment());
    const bool isEnabled = tool != SignatureDrawToolEraser;
    m_colorWell->setEnabled(isEnabled);
    if (!isEnabled)
        m_colorWell->closePanel();
    const auto swatches = m_colorButtonsView->findChildren<ColorSelectButtonCell *>();
    for (ColorSelectButtonCell *swatch : swatches)
        swatch->setEnabled(isEnabled);
    m_signaturePadView->setSelectedSignatureDrawTool(static_cast<SignatureDrawTool>(tool));
}

void SignatureWindowController::selectDrawMethodMatrix(SegmentedControl *sender)
{
    if (sender->selectedSegment() < 0)
        return;
    const int mode = sender->tagForSegment(sender->selectedSegment());
    m_signaturePadView->setSignatureDrawingMode(static_cast<SignatureDrawingMode>(mode));
    showAdvice();
}

void SignatureWindowController::backgroundStyleChanged()
{
    const int index = m_backgroundStyleSelector->currentIndex();
    if (index >= 0)
        m_backgroundView->setSignaturePadBackgroundStyle(static_cast<SignaturePadBackgroundStyle>(index));
}

void SignatureWindowController::setMatchingBrushCursor()
{
    m_signaturePadView->setCursor(brushCursor(m_thicknessSlider->value(), m_signaturePadView->devicePixelRatioF()));
}

void SignatureWindowController::windowDidBecomeKey()
{
    setMatchingBrushCursor(); // the screen may be another one
    m_devices->resume();
    if (!m_signaturePadView->isTouchDrawing())
        return;
    m_signaturePadView->moveCursorToPoint({1, 1});
    m_signaturePadView->hideCursor();
}

void SignatureWindowController::placeOver(const QWidget *parentWindow)
{
    QWidget &shown = *window();
    const QWidget *parent = parentWindow ? parentWindow->window() : nullptr;
    const QRect screen = (parent ? parent : &shown)->screen()->availableGeometry() - windowFrame;
    const QSize size = shown.size().boundedTo(screen.size());
    const QPoint centre = (parent ? parent->frameGeometry() : screen).center();
    QRect place(QPoint(), size);
    place.moveCenter(centre);
    place.moveLeft(std::clamp(place.left(), screen.left(), screen.right() - size.width() + 1));
    place.moveTop(std::clamp(place.top(), screen.top(), screen.bottom() - size.height() + 1));
    shown.setGeometry(place);
}

bool SignatureWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_signaturePadView && isStart(event->type()))
        showAdvice(); // what was said of the drawing is no longer true
    if (isWindowLoaded() && watched == window()) {
        if (event->type() == QEvent::WindowActivate)
            windowDidBecomeKey();
        else if (event->type() == QEvent::WindowDeactivate)
            m_devices->suspend();
        else if (event->type() == QEvent::PaletteChange)
            applyIcons();
        else if (event->type() == QEvent::KeyPress && (keepsForEscape(static_cast<QKeyEvent &>(*event)) ||
                                                       clicksWithReturn(static_cast<QKeyEvent &>(*event))))
            return true;
    }
    return WindowController::eventFilter(watched, event);
}

/// Escape, which is also pressed to end a capture, throws no drawing away without a word.
bool SignatureWindowController::keepsForEscape(const QKeyEvent &event)
{
    if (event.key() != Qt::Key_Escape)
        return false;
    const bool isCaptured = m_signaturePadView->isTouchDrawing(); // and something else than the pad has the keyboard
    if (isCaptured)
        m_signaturePadView->setIsTouchDrawing(false);
    if (isCaptured || event.isAutoRepeat())
        return true;
    const QImage &drawing = m_signaturePadView->image();
    if (m_warnedOfDrawing == drawing.cacheKey() || drawnPixels(drawing).isEmpty())
        return false;
    m_warnedOfDrawing = drawing.cacheKey();
    say(tr("Press Escape again to close without keeping the drawing."));
    return true;
}

/// Return is for the button that has the keyboard; where none has it, for the default one.
bool SignatureWindowController::clicksWithReturn(const QKeyEvent &event)
{
    auto *button = qobject_cast<QAbstractButton *>(window()->focusWidget());
    if (!button || (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter))
        return false;
    button->click();
    return true;
}

/// What trackpad mode can do with the devices that there are.
void SignatureWindowController::showAdvice()
{
    m_warnedOfDrawing = 0; // the warning is about to go
    QStringList lines;
    if (m_signaturePadView->signatureDrawingMode() == SignatureDrawingModeTrackpad) {
        if (m_devices->held() == CaptureDevices::Held::Pointer)
            lines.append(tr("Hold the button to draw, or click to start and to end a line."));
        else if (m_devices->wasInVain())
            lines.append(tr("The pointer cannot be held here. Draw with a pen or on a touch screen, or by dragging."));
        if (m_devices->isTouchpadForbidden())
            lines.append(tr("To use the touchpad’s surface, join the group “input” and log in again."));
    }
    say(lines.join(QLatin1Char(' ')));
}

void SignatureWindowController::say(const QString &advice)
{
    m_adviceLabel->setText(advice);
    if (advice.isEmpty())
        return;
    QAccessibleEvent alert(m_adviceLabel, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}
