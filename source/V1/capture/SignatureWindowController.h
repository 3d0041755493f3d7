#pragma once

#include "V1/library/ImageStampReceiver.h"
#include "platform/widgets/WindowController.h"

#include <QColor>
#include <QTimer>

#include <memory>
#include <vector>

class ColorSelectButtonCell;
class QComboBox;
class QKeyEvent;
class QLabel;
class QSlider;
class SignaturePadBackgroundView;
class SignaturePadView;

namespace inkory
{
class CaptureColorWell;
class CaptureDevices;
class SegmentedControl;
} // namespace inkory

/// Runs the window in which the person draws a signature. What is drawn goes into the library and to the document
/// window that asked. One for the whole process: thickness, colour, tool, drawing method and paper stay from one
/// showing to the next, the drawing does not.
///
/// Main thread only. The interface description "SignatureWindow" must have been registered.
class SignatureWindowController : public inkory::WindowController
{
    Q_OBJECT

public:
    /// Made, with its window, by the first call.
    static SignatureWindowController &sharedController();
    /// Ends the shared controller; the next call of sharedController() makes a new one. Not during a run.
    static void releaseShared();
    ~SignatureWindowController() override;

    /// The colours of the swatches, in their order.
    static const std::vector<QColor> &colors();

    /// Runs the window over the receiver's window. Answers whether a signature was made; it is in the library, and the
    /// receiver has it then. False while it runs already.
    bool showModal(inkory::ImageStampReceiver &pdfWindowController);

    /// Ends the run with this code, 1 if a signature was made. The pointer is free and visible afterwards. Does nothing
    /// outside a run.
    void closeWithCode(int code);
    void closePanel();
    /// Stores what is drawn and ends the run; without a drawing it just ends it. If the drawing cannot be stored, says
    /// why and leaves it as it is.
    void done();
    void clearClicked();

    void thicknessSliderMoved();
    void clickColorButton(const ColorSelectButtonCell &sender);
    void colorPicked(const QColor &color);
    void setColorsWithForeground(const QColor &color);
    /// The tag of the chosen segment is the pad's tool, or drawing mode.
    void switchSignatureDrawTool(inkory::SegmentedControl *sender);
    void selectDrawMethodMatrix(inkory::SegmentedControl *sender);
    void backgroundStyleChanged();
    void setMatchingBrushCursor();

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void awakeFromNib() override;
    void windowDidLoad() override;
    void windowWillClose() override;

private:
    SignatureWindowController();

    void fillControls();
    void connectOutlets();
    void makeColorButtons();
    void arrangeTabOrder();
    void applyIcons();
    void placeOver(const QWidget *parentWindow);
    void letGo();
    void updateSignaturePad();
    void hideThicknessSliderLabel();
    void windowDidBecomeKey();
    void undoStateChanged();
    bool clicksWithReturn(const QKeyEvent &event);
    bool keepsForEscape(const QKeyEvent &event);
    void showAdvice();
    void say(const QString &advice);

    inkory::ImageStampReceiver *m_pdfWindowController = nullptr; // of the current run; not owned
    bool m_running = false;
    qint64 m_warnedOfDrawing = 0; // the state of the drawing that Escape may throw away
    QTimer m_padUpdate;
    QTimer m_labelHiding;
    std::unique_ptr<inkory::CaptureDevices> m_devices;

    // Outlets; they belong to the window.
    SignaturePadView *m_signaturePadView = nullptr;
    SignaturePadBackgroundView *m_backgroundView = nullptr;
    QLabel *m_thicknessLabel = nullptr;
    QLabel *m_adviceLabel = nullptr;
    QSlider *m_thicknessSlider = nullptr;
    QWidget *m_colorButtonsView = nullptr;
    inkory::CaptureColorWell *m_colorWell = nullptr;
    inkory::SegmentedControl *m_drawMethodMatrix = nullptr;
    inkory::SegmentedControl *m_drawToolControl = nullptr;
    QComboBox *m_backgroundStyleSelector = nullptr;
};
