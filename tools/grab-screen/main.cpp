// grab-screen FILE.png: saves what the X screen shows (the root window, every window on it) as a
// PNG. Used by `make demo` to record each step; the X server is the one DISPLAY names.

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QTextStream>

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        QTextStream(stderr) << "usage: grab-screen FILE.png\n";
        return 2;
    }
    const QPixmap shot = QGuiApplication::primaryScreen()->grabWindow(0);
    if (shot.isNull() || !shot.save(QString::fromLocal8Bit(argv[1]), "PNG")) {
        QTextStream(stderr) << "grab-screen: could not save " << argv[1] << "\n";
        return 1;
    }
    return 0;
}
