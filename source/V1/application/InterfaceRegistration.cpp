#include "V1/application/InterfaceRegistration.h"

#include "V1/application/DocumentWindow.h"
#include "V1/capture/CaptureInterfaceDescriptions.h"
#include "V1/library/LibraryInterfaceDescriptions.h"
#include "platform/widgets/InterfaceDescriptions.h"

#include "ui_WelcomeWindow.h"

namespace inkory
{

void registerApplicationInterfaceDescriptions()
{
    registerLibraryInterfaceDescriptions();
    registerCaptureInterfaceDescriptions();
    registerDocumentWindowDescription();
    registerInterfaceDescription(QStringLiteral("WelcomeWindow"), []() -> std::unique_ptr<QWidget> {
        auto window = std::make_unique<QWidget>();
        Ui::WelcomeWindow().setupUi(window.get());
        return window;
    });
}

} // namespace inkory
