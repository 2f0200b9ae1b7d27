#pragma once

// Helpers for tests of Corvane's real windows: finding QML items by object name and waiting for
// the frame that shows the latest change.

#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>

namespace corvane::test {

// Every item under `from` (itself included) that `keep` accepts, depth first, in visual order,
// visible or not.
template <typename Predicate>
inline QList<QQuickItem*> itemsWhere(QQuickItem* from, const Predicate& keep)
{
    QList<QQuickItem*> found;
    if (from && keep(from))
        found.append(from);
    for (QQuickItem* child : from ? from->childItems() : QList<QQuickItem*>())
        found += itemsWhere(child, keep);
    return found;
}

// The first item named `name` under `from`, visible or not.
inline QQuickItem* item(QQuickItem* from, const QString& name)
{
    return itemsWhere(from, [&name](QQuickItem* item) { return item->objectName() == name; })
        .value(0);
}

// The items named `name` under `from` that are shown: visible, and across the window's width.
// (The overlay keeps the section grid visible while a search is shown and moves it aside.)
inline QList<QQuickItem*> visibleItems(QQuickItem* from, const QString& name)
{
    return itemsWhere(from, [&name](QQuickItem* item) {
        const QRectF rect = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        return item->objectName() == name && item->isVisible() &&
               (!item->window() || (rect.right() > 0 && rect.left() < item->window()->width()));
    });
}

// Waits for the next frame of `window` (layouts are polished before it); false after 3 s.
inline bool nextFrame(QQuickWindow* window)
{
    QSignalSpy swapped(window, &QQuickWindow::frameSwapped);
    window->update();
    return swapped.wait(3000);
}

} // namespace corvane::test
