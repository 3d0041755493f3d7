#include "V1/library/LibraryInterfaceDescriptions.h"

#include "platform/widgets/InterfaceDescriptions.h"

#include "ui_ImageStampSelection.h"

namespace inkory
{

void registerLibraryInterfaceDescriptions()
{
    registerInterfaceDescription(QStringLiteral("ImageStampSelection"), []() -> std::unique_ptr<QWidget> {
        auto dialog = std::make_unique<QDialog>();
        Ui::ImageStampSelection().setupUi(dialog.get());
        return dialog;
    });
}

} // namespace inkory
