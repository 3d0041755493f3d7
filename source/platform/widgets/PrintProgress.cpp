#include "platform/widgets/PrintProgress.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace inkory
{

namespace
{

constexpr int dialogWidth = 360;

} // namespace

PrintProgress::PrintProgress(QWidget *parent)
    : QDialog(parent), m_label(new QLabel(tr("Printing…"), this)), m_bar(new QProgressBar(this))
{
    setWindowTitle(tr("Printing"));
    setWindowModality(Qt::WindowModal);
    m_bar->setRange(0, 0);
    m_bar->setTextVisible(false);
    m_bar->setAccessibleName(tr("Progress"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &PrintProgress::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    layout->addWidget(buttons);
    setFixedSize(dialogWidth, sizeHint().height());
}

void PrintProgress::showSheet(int sheet, int sheetCount, int page)
{
    m_bar->setRange(0, sheetCount == 1 ? 0 : sheetCount);
    m_bar->setValue(sheet - 1);
    m_label->setText(sheetCount == 1 ? tr("Printing page %1…").arg(page)
                                     : tr("Printing page %1 (%2 of %3)…").arg(page).arg(sheet).arg(sheetCount));
}

void PrintProgress::showSending()
{
    m_label->setText(tr("Sending the pages to the printer…"));
    m_bar->setRange(0, 0);
}

void PrintProgress::showSilence()
{
    m_label->setText(tr("The print system has not answered yet. You can wait, or cancel and check the printer."));
}

void PrintProgress::reject()
{
    Q_EMIT cancelled();
}

} // namespace inkory
