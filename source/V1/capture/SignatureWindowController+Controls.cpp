#include "V1/capture/SignatureWindowController.h"

#include "V1/capture/CaptureColorWell.h"
#include "V1/capture/CaptureDevices.h"
#include "V1/capture/ColorSelectButtonCell.h"
#include "V1/capture/SignaturePadBackgroundView.h"
#include "V1/capture/SignaturePadView.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/NamedImages.h"
#include "platform/widgets/SegmentedControl.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QToolButton>

#include <array>

using namespace inkory;

namespace
{

constexpr int swatchesInRow = 7;
constexpr int swatchDistance = 22;
constexpr int swatchSize = 20;
constexpr int swatchMargin = 2;

struct NamedColor
{
    QColor color;
    const char *name = nullptr; // to be translated
};

const std::array<NamedColor, 14> &namedColors()
{
    static const std::array<NamedColor, 14> colors{{
        {QColor(0, 0, 0), QT_TRANSLATE_NOOP("SignatureWindowController", "Black")},
        {QColor(0, 0, 255), QT_TRANSLATE_NOOP("SignatureWindowController", "Blue")},
        {QColor(153, 102, 51), QT_TRANSLATE_NOOP("SignatureWindowController", "Brown")},
        {QColor(0, 255, 255), QT_TRANSLATE_NOOP("SignatureWindowController", "Cyan")},
        {QColor(85, 85, 85), QT_TRANSLATE_NOOP("SignatureWindowController", "Dark gray")},
        {QColor::fromRgbF(0.5F, 0.5F, 0.5F), QT_TRANSLATE_NOOP("SignatureWindowController", "Gray")},
        {QColor(0, 255, 0), QT_TRANSLATE_NOOP("SignatureWindowController", "Green")},
        {QColor(170, 170, 170), QT_TRANSLATE_NOOP("SignatureWindowController", "Light gray")},
        {QColor(255, 0, 255), QT_TRANSLATE_NOOP("SignatureWindowController", "Magenta")},
        {QColor::fromRgbF(1, 0.5F, 0), QT_TRANSLATE_NOOP("SignatureWindowController", "Orange")},
        {QColor::fromRgbF(0.5F, 0, 0.5F), QT_TRANSLATE_NOOP("SignatureWindowController", "Purple")},
        {QColor(255, 0, 0), QT_TRANSLATE_NOOP("SignatureWindowController", "Red")},
        {QColor(255, 255, 255), QT_TRANSLATE_NOOP("SignatureWindowController", "White")},
        {QColor(255, 255, 0), QT_TRANSLATE_NOOP("SignatureWindowController", "Yellow")},
    }};
    return colors;
}

} // namespace

const std::vector<QColor> &SignatureWindowController::colors()
{
    static const std::vector<QColor> colors = [] {
        std::vector<QColor> result;
        for (const NamedColor &named : namedColors())
            result.push_back(named.color);
        return result;
    }();
    return colors;
}

void SignatureWindowController::awakeFromNib()
{
    const QWidget &root = *window();
    m_signaturePadView = outlet<SignaturePadView>(root, QStringLiteral("signaturePadView"));
    m_backgroundView = outlet<SignaturePadBackgroundView>(root, QStringLiteral("backgroundView"));
    m_thicknessLabel = outlet<QLabel>(root, QStringLiteral("thicknessLabel"));
    m_adviceLabel = outlet<QLabel>(root, QStringLiteral("adviceLabel"));
    m_thicknessSlider = outlet<QSlider>(root, QStringLiteral("thicknessSlider"));
    m_colorButtonsView = outlet<QWidget>(root, QStringLiteral("colorButtonsView"));
    m_colorWell = outlet<CaptureColorWell>(root, QStringLiteral("colorWell"));
    m_drawMethodMatrix = outlet<SegmentedControl>(root, QStringLiteral("drawMethodMatrix"));
    m_drawToolControl = outlet<SegmentedControl>(root, QStringLiteral("drawToolControl"));
    m_backgroundStyleSelector = outlet<QComboBox>(root, QStringLiteral("backgroundStyleSelector"));
    m_signaturePadView->awakeFromNib();
    m_signaturePadView->installEventFilter(this);
    m_devices = std::make_unique<CaptureDevices>(*m_signaturePadView);
    m_signaturePadView->setTouchSource(m_devices.get());
    fillControls();
    makeColorButtons();
    arrangeTabOrder();
    applyIcons();
    connectOutlets();
}

void SignatureWindowController::windowDidLoad()
{
    m_thicknessLabel->hide();
    m_thicknessSlider->setValue(5);
    m_backgroundStyleSelector->setCurrentIndex(0);
    m_backgroundView->setSignaturePadBackgroundStyle(SignaturePadBackgroundStyleRuled);
    setColorsWithForeground(m_colorWell->color());
    setMatchingBrushCursor();
}

void SignatureWindowController::fillControls()
{
    m_drawMethodMatrix->addSegment(tr("Drag"), {}, SignatureDrawingModeDrag);
    m_drawMethodMatrix->addSegment(tr("Click"), {}, SignatureDrawingModeClick);
    m_drawMethodMatrix->addSegment(tr("Trackpad"), {}, SignatureDrawingModeTrackpad);
    m_drawMethodMatrix->button(0)->setToolTip(tr("Press and drag to draw"));
    m_drawMethodMatrix->button(1)->setToolTip(tr("Click to start a line, and click again to end it"));
    m_drawMethodMatrix->button(2)->setToolTip(tr("Draw with your fingers on the trackpad"));
    m_drawMethodMatrix->setSelectedSegment(0);
    m_drawToolControl->addSegment(tr("Pen"), {}, SignatureDrawToolPen);
    m_drawToolControl->addSegment(tr("Eraser"), {}, SignatureDrawToolEraser);
    m_drawToolControl->setSelectedSegment(0);
    // As wide as its widest number, and there also while it is hidden: what is beside it stays in place.
    QSizePolicy policy = m_thicknessLabel->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_thicknessLabel->setSizePolicy(policy);
    const int width = m_thicknessLabel->fontMetrics().horizontalAdvance(QString::number(m_thicknessSlider->maximum()));
    m_thicknessLabel->setMinimumWidth(width);
    m_adviceLabel->setMinimumHeight(2 * m_adviceLabel->fontMetrics().lineSpacing()); // the pad keeps its size
}

void SignatureWindowController::makeColorButtons()
{
    const int count = static_cast<int>(namedColors().size());
    const int rows = (count + swatchesInRow - 1) / swatchesInRow;
    for (int i = 0; i < count; ++i) {
        const NamedColor &named = namedColors().at(static_cast<std::size_t>(i));
        auto *button = new ColorSelectButtonCell(m_colorButtonsView);
        button->setGeometry(i % swatchesInRow * swatchDistance + swatchMargin,
                            i / swatchesInRow * swatchDistance + swatchMargin, swatchSize, swatchSize);
        button->setBackgroundColor(named.color);
        button->setTag(i);
        button->setToolTip(tr(named.name));
        button->setAccessibleName(tr(named.name));
        connect(button, &QAbstractButton::clicked, this, [this, button] { clickColorButton(*button); });
    }
    m_colorButtonsView->setFixedSize(swatchesInRow * swatchDistance + swatchMargin,
                                     rows * swatchDistance + swatchMargin);
}

/// In the order in which the tools stand; what was made here would otherwise come last.
void SignatureWindowController::arrangeTabOrder()
{
    QList<QWidget *> order{m_signaturePadView};
    for (const SegmentedControl *control : {m_drawMethodMatrix, m_drawToolControl}) {
        for (int i = 0; i < control->segmentCount(); ++i)
            order.append(control->button(i));
    }
    order.append(m_thicknessSlider);
    const auto swatches = m_colorButtonsView->findChildren<ColorSelectButtonCell *>();
    for (ColorSelectButtonCell *swatch : swatches)
        order.append(swatch);
    order.append(m_colorWell);
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order.at(i - 1), order.at(i));
}

void SignatureWindowController::applyIcons()
{
    const QWidget &root = *window();
    const QColor line = root.palette().color(QPalette::ButtonText);
    m_drawToolControl->setSegmentIcon(0, iconNamed(QStringLiteral("draw"), line));
    m_drawToolControl->setSegmentIcon(1, iconNamed(QStringLiteral("eraser"), line));
    outlet<QToolButton>(root, QStringLiteral("undoButton"))->setIcon(iconNamed(QStringLiteral("undo"), line));
    outlet<QToolButton>(root, QStringLiteral("redoButton"))->setIcon(iconNamed(QStringLiteral("redo"), line));
}

void SignatureWindowController::connectOutlets()
{
    using Self = SignatureWindowController;
    const QWidget &root = *window();
    const auto onClick = [&](const char *button, auto operation) {
        connect(outlet<QAbstractButton>(root, QLatin1String(button)), &QAbstractButton::clicked, this, operation);
    };
    onClick("clearButton", &Self::clearClicked);
    onClick("cancelButton", &Self::closePanel);
    onClick("doneButton", &Self::done);
    onClick("undoButton", [this] { m_signaturePadView->undo(); });
    onClick("redoButton", [this] { m_signaturePadView->redo(); });
    const auto onKey = [this](QKeySequence::StandardKey key, auto operation) {
        connect(new QShortcut(key, window()), &QShortcut::activated, m_signaturePadView, operation);
    };
    onKey(QKeySequence::Undo, &SignaturePadView::undo);
    onKey(QKeySequence::Redo, &SignaturePadView::redo);
    connect(m_signaturePadView, &SignaturePadView::undoStateChanged, this, &Self::undoStateChanged);
    connect(qobject_cast<QDialog *>(window()), &QDialog::rejected, this, &Self::closePanel); // Escape
    connect(m_thicknessSlider, &QSlider::valueChanged, this, &Self::thicknessSliderMoved);
    connect(m_colorWell, &CaptureColorWell::colorPicked, this, &Self::colorPicked);
    connect(m_drawToolControl, &SegmentedControl::activated, this, &Self::switchSignatureDrawTool);
    connect(m_drawMethodMatrix, &SegmentedControl::activated, this, &Self::selectDrawMethodMatrix);
    connect(m_backgroundStyleSelector, &QComboBox::currentIndexChanged, this, &Self::backgroundStyleChanged);
    connect(m_devices.get(), &CaptureDevices::changed, this, &Self::showAdvice);
    undoStateChanged();
}

void SignatureWindowController::undoStateChanged()
{
    const QWidget &root = *window();
    outlet<QToolButton>(root, QStringLiteral("undoButton"))->setEnabled(m_signaturePadView->canUndo());
    outlet<QToolButton>(root, QStringLiteral("redoButton"))->setEnabled(m_signaturePadView->canRedo());
}
