#include "SymbolImageProvider.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
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

namespace {

// The icon in the freedesktop fallback theme, where every application installs one: used when the
// desktop's own theme is not installed (a KDE session without Breeze), which Qt does not fall back
// from. The largest bitmap, or the drawing.
QIcon hicolorIcon(const QString& name)
{
    if (name.contains(u'/'))
        return {};
    const auto locate = [](const QString& file) {
        return QStandardPaths::locate(QStandardPaths::GenericDataLocation, file);
    };
    QString found = locate(QStringLiteral("icons/hicolor/scalable/apps/%1.svg").arg(name));
    for (const int side : {256, 128, 96, 64, 48, 32, 24, 22, 16}) {
        if (found.isEmpty())
            found = locate(QStringLiteral("icons/hicolor/%1x%1/apps/%2.png").arg(side).arg(name));
    }
    if (found.isEmpty())
        found = locate(QStringLiteral("pixmaps/%1.png").arg(name));
    return found.isEmpty() ? QIcon() : QIcon(found);
}

// No icon anywhere: the name's initial on a grey rounded square, so that the row keeps its shape.
QPixmap monogram(const QString& name, const QSize& side)
{
    QPixmap pixmap(side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(128, 128, 128));
    const QRectF square(QPointF(0, 0), side);
    painter.drawRoundedRect(square, side.width() * 0.22, side.height() * 0.22);
    QFont font = painter.font();
    font.setPixelSize(qMax(1, side.height() * 11 / 20));
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    const QString base = QFileInfo(name).baseName().section(u'.', -1);
    painter.drawText(square, Qt::AlignCenter, base.left(1).toUpper());
    return pixmap;
}

} // namespace

QPixmap AppIconImageProvider::requestPixmap(const QString& id, QSize* size,
                                            const QSize& requestedSize)
{
    const QSize side = requestedSize.isValid() ? requestedSize : QSize(64, 64);
    QIcon icon = QDir::isAbsolutePath(id) ? QIcon(id) : QIcon::fromTheme(id);
    if (icon.isNull())
        icon = hicolorIcon(id);
    QPixmap pixmap = icon.pixmap(side);
    if (pixmap.isNull())
        pixmap = monogram(id, side);
    if (size)
        *size = pixmap.size();
    return pixmap;
}

} // namespace corvane
