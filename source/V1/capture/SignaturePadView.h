#pragma once

#include "V1/capture/PadGeometry.h"
#include "V1/capture/SignatureDrawing.h"
#include "V1/capture/StrokeHistory.h"
#include "V1/capture/TrackpadHint.h"
#include "platform/widgets/TouchSource.h"

#include <QColor>
#include <QCursor>
#include <QImage>
#include <QWidget>

#include <cstdint>
#include <optional>

class QTabletEvent;
class QTouchEvent;

/// The surface on which a signature is drawn: with the mouse, a pen or a finger, by dragging or from click to click, or
/// by fingers on a trackpad that stands for the pad while it is captured. Transparent where nothing is drawn, so that
/// the background behind it shows. Each piece of a line is painted into the image at once; the image is the only
/// record of the drawing.
///
/// Every pointer event counts, so the application turns Qt::AA_CompressHighFrequencyEvents and
/// Qt::AA_CompressTabletEvents off, once it has its QApplication: making it may turn them on.
class SignaturePadView : public QWidget, public inkory::TouchReceiver
{
    Q_OBJECT

public:
    explicit SignaturePadView(QWidget *parent = nullptr);
    ~SignaturePadView() override;

    /// Thickness 5, pen, dragging.
    void awakeFromNib();

    /// The drawing. Premultiplied ARGB; its upper left corner is the pad's. Covers the whole pad.
    const QImage &image() const { return m_image; }
    /// Takes the image as it is, and its density; where it does not cover the pad, now or later, it is extended with
    /// transparent pixels. A null image starts an empty drawing of the screen's density. Forgets all steps.
    void setImage(const QImage &image);

    /// Of a stroke, in points; 0 draws the thinnest line there is.
    std::uint64_t thickness() const { return m_thickness; }
    void setThickness(std::uint64_t thickness) { m_thickness = thickness; }
    /// The pen's; none at first, and nothing is drawn with none.
    QColor color() const { return m_color; }
    void setColor(const QColor &color) { m_color = color; }
    /// Whatever is not the pen erases.
    SignatureDrawTool selectedSignatureDrawTool() const { return m_selectedSignatureDrawTool; }
    void setSelectedSignatureDrawTool(SignatureDrawTool tool) { m_selectedSignatureDrawTool = tool; }
    SignatureDrawingMode signatureDrawingMode() const { return m_signatureDrawingMode; }
    /// Ends a stroke of the mouse, but not the capture of a trackpad.
    void setSignatureDrawingMode(SignatureDrawingMode mode);

    /// The brush, as the pointer's shape over the pad; in trackpad mode it is the arrow before capture, and during
    /// capture the pad itself paints the brush where the stroke is.
    const QCursor &cursor() const { return m_cursor; }
    void setCursor(const QCursor &cursor);
    /// Shows the brush at a point of the pad during capture; at other times moves the real pointer there, where the
    /// window system lets programs do that.
    void moveCursorToPoint(inkory::PadPoint point);
    /// Hides the brush that is shown during capture, until it is moved again.
    void hideCursor();

    /// A stroke of the mouse is in progress.
    bool isDrawing() const { return m_isDrawing; }
    /// Trackpad capture is active. Setting it to false releases whatever was captured and is safe at any time.
    bool isTouchDrawing() const { return m_isTouchDrawing; }
    void setIsTouchDrawing(bool isTouchDrawing);
    /// Where touches come from besides touch screens and pens, which need none: captured when a click starts trackpad
    /// drawing, released when it ends. Not owned; null for none. It must outlive the pad or be taken away before.
    void setTouchSource(inkory::TouchSource *source);

    /// Begins a stroke with a dot.
    void startDrawingFromPoint(inkory::PadPoint point);
    void stopDrawing();
    /// A straight line, with round ends, into the image; a dot from a point to itself. Points that are not finite draw
    /// nothing.
    void drawFromPoint(inkory::PadPoint from, inkory::PadPoint to);
    /// Erases everything, which can be undone.
    void clear();

    /// A step is a stroke, from press to release or from click to click, or clear().
    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }
    /// Ends a stroke of the mouse, and does nothing more when there is no step.
    void undo();
    void redo();

    /// Calls those of the three operations below that apply: once for all touches that began, that moved, that ended.
    void touchesChanged(const inkory::Touches &touches) override;
    void touchSourceLost() override;
    /// These do nothing unless isTouchDrawing. The whole surface is the whole pad. Began and moved use the first touch
    /// that is down, ended the first one that ended.
    void touchesBeganWithEvent(const inkory::Touches &touches);
    void touchesMovedWithEvent(const inkory::Touches &touches);
    void touchesEndedWithEvent(const inkory::Touches &touches);

Q_SIGNALS:
    /// canUndo() or canRedo() answers otherwise than before.
    void undoStateChanged();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void tabletEvent(QTabletEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    inkory::PadPoint padPointAt(QPointF position) const;
    inkory::PadPoint padPointOf(const inkory::Touch &touch) const;
    QPointF exactPosition(const QMouseEvent &event) const;
    QPointF viewPosition(inkory::PadPoint point) const;
    inkory::Touches touchesOf(const QTouchEvent &event) const;

    bool touchEvent(const QTouchEvent &event);
    void dragFingers(const QTouchEvent &event);
    void capturedPenEvent(const QTabletEvent &event);
    void pointerPressed(QPointF position);
    void pointerMoved(QPointF position, Qt::MouseButtons buttons);
    void pointerReleased(QPointF position);
    void trackToPoint(inkory::PadPoint point);
    void noteTap(QPointF position);
    void followTap(QPointF position);
    void startCapture(QInputDevice::DeviceType clickedDevice);
    void leaveCapture();

    void coverPad();
    void afterSteps(const QRect &changedPixels);
    void showHints();
    QRect capturedCursorRect() const;

    QImage m_image;
    bool m_hasScreensDensity = false; // the image was made here, and not taken over
    inkory::StrokeHistory m_history;
    bool m_couldUndo = false; // as last signalled
    bool m_couldRedo = false;

    std::uint64_t m_thickness = 0;
    QColor m_color;
    SignatureDrawTool m_selectedSignatureDrawTool = SignatureDrawToolPen;
    SignatureDrawingMode m_signatureDrawingMode = SignatureDrawingModeDrag;
    QCursor m_cursor;

    bool m_isDrawing = false;
    inkory::PadPoint m_previousPoint; // the end of the last segment
    std::optional<int> m_draggingFinger;

    bool m_isTouchDrawing = false;
    inkory::TrackpadHint m_hint;
    bool m_isTap = false; // a press in trackpad mode that will start capture
    QPointF m_tapStart;
    std::optional<std::int64_t> m_drawingBeginTouchIdentity;
    std::optional<inkory::PadPoint> m_capturedCursorPoint; // where the brush is shown during capture
    inkory::TouchSource *m_touchSource = nullptr;
};
