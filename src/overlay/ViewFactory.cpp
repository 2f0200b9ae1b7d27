#include "ViewFactory.h"

#include "SymbolImageProvider.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

namespace corvane {

std::unique_ptr<QQmlEngine> makeViewEngine()
{
    auto engine = std::make_unique<QQmlEngine>();
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine->addImageProvider(QStringLiteral("symbol"), new SymbolImageProvider);
    engine->addImageProvider(QStringLiteral("appicon"), new AppIconImageProvider);
    return engine;
}

QQuickItem* createViewIn(QQmlComponent& component, QQuickWindow& window,
                         const QVariantMap& properties)
{
    if (component.isError())
        qFatal("%s does not load: %s", qPrintable(component.url().toString()),
               qPrintable(component.errorString()));
    QQmlEngine* engine = component.engine();
    auto* item = qobject_cast<QQuickItem*>(component.beginCreate(engine->rootContext()));
    if (!item)
        qFatal("%s could not be made: %s", qPrintable(component.url().toString()),
               qPrintable(component.errorString()));
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    item->setParentItem(window.contentItem());
    component.setInitialProperties(item, properties);
    component.completeCreate();
    return item;
}

QStringList shownTexts(const QQuickItem* item)
{
    if (!item->isVisible())
        return {};
    QStringList texts;
    const QMetaObject* meta = item->metaObject();
    for (const char* property : {"text", "displayText"}) {
        if (meta->indexOfProperty(property) < 0)
            continue;
        const QString text = item->property(property).toString();
        if (!text.isEmpty())
            texts << text;
        break;
    }
    for (const QQuickItem* child : item->childItems())
        texts << shownTexts(child);
    return texts;
}

} // namespace corvane
