// render-icon: draws an SVG icon as PNGs of the sizes asked for, for the icon theme's fixed-size
// folders (a build step: `render-icon ICON.svg OUT_DIR 16 32 …` writes OUT_DIR/NxN.png).

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4) {
        QTextStream(stderr) << "usage: render-icon ICON.svg OUT_DIR SIZE...\n";
        return 2;
    }
    QSvgRenderer renderer(arguments.at(1));
    if (!renderer.isValid()) {
        QTextStream(stderr) << "render-icon: " << arguments.at(1) << " is not a valid SVG\n";
        return 1;
    }
    for (const QString& text : arguments.mid(3)) {
        bool ok = false;
        const int size = text.toInt(&ok);
        if (!ok || size <= 0 || size > 1024) {
            QTextStream(stderr) << "render-icon: \"" << text << "\" is not a size\n";
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        const QString file = QStringLiteral("%1/%2x%2.png").arg(arguments.at(2)).arg(size);
        if (!image.save(file)) {
            QTextStream(stderr) << "render-icon: cannot write " << file << "\n";
            return 1;
        }
    }
    return 0;
}
