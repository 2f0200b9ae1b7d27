#pragma once

// The views' symbols: the project's monochrome SVGs under the symbols' names, tinted by the view.
// QML asks for "image://symbol/NAME?COLOR".

#include <QQuickImageProvider>

namespace corvane {

class SymbolImageProvider : public QQuickImageProvider {
public:
    SymbolImageProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

    static QStringList names(); // every symbol the resource holds
};

// "image://appicon/NAME": an application's icon from the icon theme, or from a file when NAME
// is an absolute path (desktop entries may give either).
class AppIconImageProvider : public QQuickImageProvider {
public:
    AppIconImageProvider();
    QPixmap requestPixmap(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace corvane
