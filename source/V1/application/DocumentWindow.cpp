#include "V1/application/DocumentWindow.h"

#include "V1/application/SidePanelWidth.h"
#include "V1/editing/TextBackgroundMenu.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/NamedImages.h"
#include "platform/widgets/OutlineView.h"
#include "platform/widgets/SegmentedControl.h"

#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>

#include "ui_PDFDocumentWindow.h"

namespace inkory
{

namespace
{

constexpr int stampToolbarHeight = 24;
constexpr QSize signatureIconSize(84, 20); // as high as the other icons: the tool bar must not grow when it appears
// The pages' ground: a quiet grey between the theme's window colour and a middle grey.
constexpr int groundMix = 82; // per cent of the window colour

QColor mixed(const QColor &a, const QColor &b, int percentOfA)
{
    const auto mix = [&](int x, int y) { return (x * percentOfA + y * (100 - percentOfA)) / 100; };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

void setGround(QWidget *widget, QPalette::ColorRole role, const QColor &color)
{
    QPalette palette = widget->palette();
    palette.setColor(role, color);
    widget->setPalette(palette);
}

} // namespace

DocumentWindow::DocumentWindow(QWidget *parent) : QMainWindow(parent), m_ui(std::make_unique<Ui::PDFDocumentWindow>())
{
    m_ui->setupUi(this);
    setCentralWidget(m_ui->splitter);
    new SidePanelWidth(m_ui->splitter, m_ui->sidePanel, this);
    m_outlineView = new OutlineView(m_ui->sidePanel);
    m_outlineView->setObjectName(QStringLiteral("outlineView"));
    m_outlineView->hide();
    m_ui->statusBar->setSizeGripEnabled(false);
    m_ui->mainToolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    setContextMenuPolicy(Qt::NoContextMenu); // it would offer to hide the tool bar
    makeToolBar();
    makeStampToolbar();
    applyIcons();
}

DocumentWindow::~DocumentWindow() = default;

SegmentedControl *DocumentWindow::makeSegments(const QString &name)
{
    auto *control = new SegmentedControl(m_ui->mainToolBar);
    control->setObjectName(name);
    m_ui->mainToolBar->addWidget(control);
    return control;
}

void DocumentWindow::makeToolBar()
{
    QToolBar *bar = m_ui->mainToolBar;
    bar->setIconSize({20, 20});
    bar->addAction(m_ui->actionSidePanel);
    bar->addSeparator();

    SegmentedControl *tools = makeSegments(QStringLiteral("toolSelectionControl"));
    tools->addSegment(tr("Select (V)"), {}, 0);
    tools->addSegment(tr("Signature (S)"), {}, 1);
    tools->addSegment(tr("Text (T)"), {}, 2);
    addSignatureButton();
    bar->addSeparator();

    bar->addAction(m_ui->actionUndo);
    bar->addAction(m_ui->actionRedo);
    bar->addSeparator();

    SegmentedControl *zoomOut = makeSegments(QStringLiteral("zoomOutControl"));
    zoomOut->setMomentary(true);
    zoomOut->addSegment(tr("Zoom out (Ctrl+-)"), {}, 1);
    auto *factor = new QComboBox(bar);
    factor->setObjectName(QStringLiteral("zoomFactorField"));
    factor->setEditable(true);
    factor->setInsertPolicy(QComboBox::NoInsert);
    factor->setCompleter(nullptr); // it would make 100 of a typed 10
    factor->setAccessibleName(tr("Zoom factor"));
    factor->setToolTip(tr("Zoom factor"));
    factor->setFixedWidth(factor->fontMetrics().horizontalAdvance(QStringLiteral("6400 %")) + 44);
    bar->addWidget(factor);
    SegmentedControl *zoom = makeSegments(QStringLiteral("zoomControl"));
    zoom->setMomentary(true);
    zoom->addSegment(tr("Zoom in (Ctrl++)"), {}, 0);
    zoom->addSegment(tr("Actual size (Ctrl+0)"), {}, 2);
    zoom->addSegment(tr("Fit page (Ctrl+1)"), {}, 3);
    zoom->addSegment(tr("Fit width (Ctrl+2)"), {}, 4);
    bar->addSeparator();

    SegmentedControl *rotate = makeSegments(QStringLiteral("rotateControl"));
    rotate->setMomentary(true);
    rotate->addSegment(tr("Turn page left (Ctrl+L)"), {}, 0);
    rotate->addSegment(tr("Turn page right (Ctrl+R)"), {}, 1);
    rotate->addSegment(tr("Flip document"), {}, 2);
    addToolBarSpace();
    bar->addAction(m_ui->actionSave);
}

// The button stands in a frame of its own: a tool bar forces its icon size on the buttons that it holds itself.
void DocumentWindow::addSignatureButton()
{
    auto *frame = new QWidget(m_ui->mainToolBar);
    auto *signature = new QToolButton(frame);
    signature->setObjectName(QStringLiteral("imageStampToolbarImageView"));
    signature->setIconSize(signatureIconSize);
    signature->setToolTip(tr("The chosen signature. Click to choose another one."));
    signature->setAccessibleName(tr("Chosen signature"));
    auto *layout = new QHBoxLayout(frame);
    layout->setContentsMargins(4, 0, 4, 0);
    signature->setAutoRaise(true);
    layout->addWidget(signature);
    m_ui->mainToolBar->addWidget(frame)->setObjectName(QStringLiteral("imageStampToolbarItem"));
}

void DocumentWindow::addToolBarSpace()
{
    auto *space = new QWidget(m_ui->mainToolBar);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_ui->mainToolBar->addWidget(space);
}

void DocumentWindow::makeStampToolbar()
{
    m_stampToolbar = new StampViewToolbar(m_ui->pdfView);
    m_stampToolbar->setObjectName(QStringLiteral("stampViewToolbar"));
    m_stampToolbar->setPalette(QPalette(QColor(0xef, 0xef, 0xef))); // pressed buttons suit its white, in every theme
    m_stampToolbar->resize(2, stampToolbarHeight);
    m_stampToolbar->hide();
    const auto addButton = [this](const QString &name, const QString &text, int tag) {
        auto *button = new QToolButton(m_stampToolbar);
        button->setObjectName(name);
        button->setToolTip(text);
        button->setAccessibleName(text);
        button->setAutoRaise(true);
        button->setProperty("tag", tag);
        button->setGeometry(0, 2, 20, 20);
        button->setIconSize({16, 16});
        button->setCursor(Qt::ArrowCursor);
        button->setFocusPolicy(Qt::TabFocus);
        return button;
    };
    KRPDFView *view = m_ui->pdfView;
    view->setStampViewToolbar(m_stampToolbar);
    QToolButton *edit = addButton(QStringLiteral("textEditButton"), tr("Edit Text"), 1);
    edit->setCheckable(true);
    QToolButton *font = addButton(QStringLiteral("textFontButton"), tr("Font"), 2);
    QToolButton *color = addButton(QStringLiteral("textColorButton"), tr("Text Color"), 3);
    QToolButton *background = addButton(QStringLiteral("textBGColorButton"), tr("Text Background"), 4);
    background->setMenu(new QMenu(background));
    fillTextBackgroundMenu(*background->menu());
    background->setPopupMode(QToolButton::InstantPopup);
    for (QToolButton *button : {edit, font, color, background})
        button->hide(); // until a text is selected
    view->setTextEditButton(edit);
    view->setTextFontButton(font);
    view->setTextColorButton(color);
    view->setTextBGColorButton(background);
    view->setRotateStampCCWButton(addButton(QStringLiteral("rotateStampCCWButton"), tr("Turn left"), 5));
    view->setRotateStampCWButton(addButton(QStringLiteral("rotateStampCWButton"), tr("Turn right"), 6));
}

void DocumentWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_stampToolbar)
        applyIcons();
}

void DocumentWindow::applyIcons()
{
    const QColor line = palette().color(QPalette::ButtonText);
    const auto icon = [&line](const char *name) { return iconNamed(QLatin1String(name), line); };
    m_ui->actionSidePanel->setIcon(icon("side-panel"));
    m_ui->actionUndo->setIcon(icon("undo"));
    m_ui->actionRedo->setIcon(icon("redo"));
    m_ui->actionSave->setIcon(icon("save"));
    m_ui->actionOpen->setIcon(icon("open"));
    const auto setIcons = [&](const char *control, std::initializer_list<const char *> names) {
        auto *segments = findChild<SegmentedControl *>(QLatin1String(control));
        int segment = 0;
        for (const char *name : names)
            segments->setSegmentIcon(segment++, icon(name));
    };
    setIcons("toolSelectionControl", {"tool-select", "tool-signature", "tool-text"});
    setIcons("zoomOutControl", {"zoom-out"});
    setIcons("zoomControl", {"zoom-in", "zoom-actual", "fit-page", "fit-width"});
    setIcons("rotateControl", {"rotate-left", "rotate-right", "flip"});
    // The stamp toolbar is white in every theme.
    const QColor onWhite(0x3b, 0x3f, 0x45);
    for (const auto &[button, name] : {std::pair{"textEditButton", "text-edit"},
                                       {"textFontButton", "text-font"},
                                       {"textColorButton", "text-color"},
                                       {"textBGColorButton", "text-background"},
                                       {"rotateStampCCWButton", "stamp-rotate-left"},
                                       {"rotateStampCWButton", "stamp-rotate-right"}})
        findChild<QToolButton *>(QLatin1String(button))->setIcon(iconNamed(QLatin1String(name), onWhite));

    const QColor ground = mixed(palette().color(QPalette::Window), QColor(0x70, 0x74, 0x7a), groundMix);
    setGround(m_ui->pdfView->viewport(), QPalette::Base, ground);
    setGround(m_ui->pdfView, QPalette::Base, ground);
    setGround(m_ui->pdfThumbnailView, QPalette::Base, palette().color(QPalette::Window));
    setGround(m_outlineView, QPalette::Base, palette().color(QPalette::Window));
}

void registerDocumentWindowDescription()
{
    registerInterfaceDescription(QStringLiteral("PDFDocumentWindow"),
                                 []() -> std::unique_ptr<QWidget> { return std::make_unique<DocumentWindow>(); });
}

} // namespace inkory
