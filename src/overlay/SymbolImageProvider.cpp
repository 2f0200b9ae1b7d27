#include "SymbolImageProvider.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QPainter>
#include <QStandardPaths>
#include <QSvgRenderer>

namespace corvane {

namespace {
const QString symbolFolder = QStringLiteral(":/corvane/symbols/");
constexpr int defaultSide = 24;
} // namespace

SymbolImageProvider::SymbolImageProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

QStringList SymbolImageProvider::names()
{
    QStringList result;
    for (const QString& file : QDir(symbolFolder).entryList({QStringLiteral("*.svg")}))
        result << file.chopped(4);
    return result;
}

QImage SymbolImageProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const qsizetype mark = id.indexOf(u'?');
    const QString name = id.left(mark);
    const QColor color(mark < 0 ? QStringLiteral("black") : id.mid(mark + 1));
    const QSize side(requestedSize.width() > 0 ? requestedSize.width() : defaultSide,
                     requestedSize.height() > 0 ? requestedSize.height() : defaultSide);
    if (size)
        *size = side;

    QImage image(side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QFile file(symbolFolder + name + QStringLiteral(".svg"));
    if (name.contains(u'/') || !file.open(QIODevice::ReadOnly)) {
        qWarning("overlay: no symbol named \"%s\"", qPrintable(name));
        return image;
    }
    // The drawing's own colour is "currentColor"; the alpha goes through the painter because
    // SVG colours have none.
    QByteArray svg = file.readAll();
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    QPainter painter(&image);
    painter.setOpacity(color.isValid() ? color.alphaF() : 1.0);
    renderer.render(&painter);
    return image;
}

AppIconImageProvider::AppIconImageProvider() : QQuickImageProvider(QQuickImageProvider::Pixmap)
{
    // Without a desktop's platform theme Qt knows no icon theme and no icon folders; the
    // freedesktop fallback theme in the XDG data folders is then still there.
    if (QIcon::themeName().isEmpty()) {
        QStringList paths = QIcon::themeSearchPaths();
        paths << QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                           QStringLiteral("icons"),
                                           QStandardPaths::LocateDirectory);
        QIcon::setThemeSearchPaths(paths);
        QIcon::setThemeName(QStringLiteral("hicolor"));
    }
}

QPixmap AppIconImageProvider::requestPixmap(const QString& id, QSize* size,
                                            const QSize& requestedSize)
{
    const QSize side = requestedSize.isValid() ? requestedSize : QSize(64, 64);
    const QIcon icon = QDir::isAbsolutePath(id) ? QIcon(id) : QIcon::fromTheme(id);
    const QPixmap pixmap = icon.pixmap(side);
    if (size)
        *size = pixmap.size();
    return pixmap;
}

} // namespace corvane
