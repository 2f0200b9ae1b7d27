#pragma once

// Helpers for tests and benchmarks of the overlay's real window: finding QML items by object
// name and waiting for the frame that shows the latest change.

#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>

namespace corvane::test {

// Every item under `from` (itself included) that `keep` accepts, depth first, in visual order,
// visible or not.
template <typename Predicate>
inline void findItemsWhere(QQuickItem* from, const Predicate& keep, QList<QQuickItem*>& into)
{
    if (!from)
        return;
    if (keep(from))
        into.append(from);
    const QList<QQuickItem*> children = from->childItems();
    for (QQuickItem* child : children)
        findItemsWhere(child, keep, into);
}
template <typename Predicate>
inline QList<QQuickItem*> itemsWhere(QQuickItem* from, const Predicate& keep)
{
    QList<QQuickItem*> found;
    findItemsWhere(from, keep, found);
    return found;
}

// Every item named `name` under `from` (depth first, in visual order), visible or not.
inline void findItems(QQuickItem* from, const QString& name, QList<QQuickItem*>& into)
{
    findItemsWhere(
        from, [&name](QQuickItem* item) { return item->objectName() == name; }, into);
}
inline QList<QQuickItem*> items(QQuickItem* from, const QString& name)
{
    QList<QQuickItem*> found;
    findItems(from, name, found);
    return found;
}
inline QQuickItem* item(QQuickItem* from, const QString& name)
{
    const QList<QQuickItem*> found = items(from, name);
    return found.isEmpty() ? nullptr : found.first();
}

// Waits for the next frame of `window` (layouts are polished before it); false after 3 s.
inline bool nextFrame(QQuickWindow* window)
{
    QSignalSpy swapped(window, &QQuickWindow::frameSwapped);
    window->update();
    return swapped.wait(3000);
}

// An item's rectangle in the window's coordinates.
inline QRectF windowRect(const QQuickItem* item)
{
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

// Whether the item is shown: visible, and across the window's width. The overlay keeps the
// section grid visible while a search is shown and moves it aside instead (a hidden grid's
// items would all be visited to show it again); lists scroll only up and down.
inline bool shown(const QQuickItem* item)
{
    if (!item->isVisible())
        return false;
    const QQuickWindow* window = item->window();
    const QRectF rect = windowRect(item);
    return !window || (rect.right() > 0 && rect.left() < window->width());
}
// The shown items named `name` under `from`, in visual order.
inline QList<QQuickItem*> visibleItems(QQuickItem* from, const QString& name)
{
    QList<QQuickItem*> found;
    for (QQuickItem* item : items(from, name))
        if (shown(item))
            found.append(item);
    return found;
}

} // namespace corvane::test
