#pragma once

// How Corvane makes its QML views, the overlay's and the secondary windows' alike: an engine
// that finds the modules compiled into the program and the project's symbols, and a view's root
// item made inside its window.

#include <QStringList>
#include <QVariantMap>
#include <memory>

class QQmlComponent;
class QQmlEngine;
class QQuickItem;
class QQuickWindow;

namespace corvane {

// An engine with the resources' QML modules ("qrc:/qt/qml") and "image://symbol/…".
std::unique_ptr<QQmlEngine> makeViewEngine();

// Makes `component`'s root item inside `window`, with `properties` set before it completes (so
// that its images load for that window); owned by C++. A view that does not load is a fault of
// the build and stops the program.
QQuickItem* createViewIn(QQmlComponent& component, QQuickWindow& window,
                         const QVariantMap& properties);

// Every text shown under `item`, in item order: text items, labels, buttons, a picker's current
// choice. For the preview tools' --texts (the translation checks read it).
QStringList shownTexts(const QQuickItem* item);

} // namespace corvane
