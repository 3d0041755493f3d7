#include "V1/capture/CaptureInterfaceDescriptions.h"

#include "platform/widgets/InterfaceDescriptions.h"

#include "ui_SignatureWindow.h"

namespace inkory
{

void registerCaptureInterfaceDescriptions()
{
    registerInterfaceDescription(QStringLiteral("SignatureWindow"), []() -> std::unique_ptr<QWidget> {
        auto dialog = std::make_unique<QDialog>();
        Ui::SignatureWindow().setupUi(dialog.get());
        return dialog;
    });
}

} // namespace inkory
