// The floor of a start: a bare window of the same size with one line of text; once it was painted, the drawing library
// alone draws the first page of the file at the scale of the program's window. Both one after the other, in one fresh
// process.

#include <poppler-qt6.h>

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include <cstdlib>
#include <memory>

namespace
{

class BareWindow : public QMainWindow
{
protected:
    void paintEvent(QPaintEvent *event) override
    {
        QMainWindow::paintEvent(event);
        QTimer::singleShot(0, this, &BareWindow::drawPage);
    }

private:
    void drawPage()
    {
        constexpr double dotsPerInch = 72 * 1.45;
        const QStringList arguments = QApplication::arguments();
        const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(arguments.value(1));
        document->setRenderHint(Poppler::Document::Antialiasing);
        document->setRenderHint(Poppler::Document::TextAntialiasing);
        const QImage image = document->page(0)->renderToImage(dotsPerInch, dotsPerInch);
        std::quick_exit(image.width() > 1 ? 0 : 1);
    }
};

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    BareWindow window;
    window.setCentralWidget(new QLabel(QStringLiteral("One line of text")));
    window.resize(1080, 860);
    window.show();
    return QApplication::exec();
}
