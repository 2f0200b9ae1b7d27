#include "MenuCatalogJson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace corvane::MenuCatalogJson {

namespace {

QJsonObject toJson(const MenuCommand& command)
{
    QJsonArray path;
    for (const PathStep& step : command.path)
        path.append(QJsonObject{{"title", step.title}, {"occurrence", step.occurrence}});
    return QJsonObject{
        {"id", command.id()},
        {"path", path},
        {"shortcut",
         QJsonObject{{"modifiers", QJsonArray::fromStringList(command.shortcut.modifiers)},
                     {"key", command.shortcut.key}}},
        {"enabled", command.enabled},
        {"isChecked", command.isChecked},
    };
}

// Reads one JSON tree into records, remembering the first problem with its location.
class Reader {
public:
    QString error;

    std::optional<MenuCatalog> catalog(const QJsonValue& value)
    {
        if (!value.isObject())
            return fail(QStringLiteral("the top level"), QStringLiteral("an object"));
        const QJsonObject object = value.toObject();
        MenuCatalog result;
        if (!text(object, "bundleID", QStringLiteral("bundleID"), result.bundleID))
            return std::nullopt;
        if (!text(object, "appName", QStringLiteral("appName"), result.appName))
            return std::nullopt;
        const QJsonValue sections = object.value("sections");
        if (!sections.isArray())
            return fail(QStringLiteral("sections"), QStringLiteral("an array"));
        const QJsonArray array = sections.toArray();
        for (qsizetype i = 0; i < array.size(); ++i) {
            auto section = this->section(array[i], QStringLiteral("sections[%1]").arg(i));
            if (!section)
                return std::nullopt;
            result.sections.append(*section);
        }
        return result;
    }

private:
    std::nullopt_t fail(const QString& where, const QString& expected)
    {
        error = QStringLiteral("%1: expected %2").arg(where, expected);
        return std::nullopt;
    }

    bool text(const QJsonObject& object, const char* name, const QString& where, QString& out)
    {
        const QJsonValue value = object.value(QLatin1String(name));
        if (!value.isString()) {
            fail(where, QStringLiteral("a string"));
            return false;
        }
        out = value.toString();
        return true;
    }

    bool flag(const QJsonObject& object, const char* name, const QString& where, bool fallback,
              bool& out)
    {
        const QJsonValue value = object.value(QLatin1String(name));
        if (value.isUndefined()) {
            out = fallback;
            return true;
        }
        if (!value.isBool()) {
            fail(where, QStringLiteral("true or false"));
            return false;
        }
        out = value.toBool();
        return true;
    }

    std::optional<MenuSection> section(const QJsonValue& value, const QString& where)
    {
        if (!value.isObject())
            return fail(where, QStringLiteral("an object"));
        const QJsonObject object = value.toObject();
        MenuSection result;
        if (!text(object, "title", where + QStringLiteral(".title"), result.title))
            return std::nullopt;
        const QJsonValue commands = object.value("commands");
        if (!commands.isArray())
            return fail(where + QStringLiteral(".commands"), QStringLiteral("an array"));
        const QJsonArray array = commands.toArray();
        for (qsizetype i = 0; i < array.size(); ++i) {
            auto command = this->command(array[i], where + QStringLiteral(".commands[%1]").arg(i));
            if (!command)
                return std::nullopt;
            result.commands.append(*command);
        }
        return result;
    }

    std::optional<MenuCommand> command(const QJsonValue& value, const QString& where)
    {
        if (!value.isObject())
            return fail(where, QStringLiteral("an object"));
        const QJsonObject object = value.toObject();
        MenuCommand result;
        const QJsonValue path = object.value("path");
        if (!path.isArray() || path.toArray().isEmpty())
            return fail(where + QStringLiteral(".path"), QStringLiteral("a non-empty array"));
        const QJsonArray steps = path.toArray();
        for (qsizetype i = 0; i < steps.size(); ++i) {
            const QString stepWhere = where + QStringLiteral(".path[%1]").arg(i);
            if (!steps[i].isObject())
                return fail(stepWhere, QStringLiteral("an object"));
            const QJsonObject step = steps[i].toObject();
            PathStep parsed;
            if (!text(step, "title", stepWhere + QStringLiteral(".title"), parsed.title))
                return std::nullopt;
            if (parsed.title.isEmpty())
                return fail(stepWhere + QStringLiteral(".title"),
                            QStringLiteral("a non-empty string"));
            const QJsonValue occurrence = step.value("occurrence");
            const double number = occurrence.toDouble(-1);
            if (!occurrence.isUndefined() &&
                (!occurrence.isDouble() || number < 0 || number > 1e6 || number != int(number)))
                return fail(stepWhere + QStringLiteral(".occurrence"),
                            QStringLiteral("a whole number from 0 to 1000000"));
            parsed.occurrence = occurrence.isUndefined() ? 0 : int(number);
            result.path.append(parsed);
        }
        const QJsonValue shortcut = object.value("shortcut");
        if (!shortcut.isUndefined() && !shortcut.isNull()) {
            const QString shortcutWhere = where + QStringLiteral(".shortcut");
            if (!shortcut.isObject())
                return fail(shortcutWhere, QStringLiteral("an object"));
            const QJsonObject keys = shortcut.toObject();
            if (!text(keys, "key", shortcutWhere + QStringLiteral(".key"), result.shortcut.key))
                return std::nullopt;
            const QJsonValue modifiers = keys.value("modifiers");
            if (!modifiers.isArray())
                return fail(shortcutWhere + QStringLiteral(".modifiers"),
                            QStringLiteral("an array"));
            for (const QJsonValue& modifier : modifiers.toArray()) {
                if (!modifier.isString())
                    return fail(shortcutWhere + QStringLiteral(".modifiers"),
                                QStringLiteral("an array of strings"));
                result.shortcut.modifiers.append(modifier.toString());
            }
        }
        if (!flag(object, "enabled", where + QStringLiteral(".enabled"), true, result.enabled))
            return std::nullopt;
        if (!flag(object, "isChecked", where + QStringLiteral(".isChecked"), false,
                  result.isChecked))
            return std::nullopt;
        return result;
    }
};

} // namespace

QByteArray write(const MenuCatalog& catalog, bool indented)
{
    QJsonArray sections;
    for (const MenuSection& section : catalog.sections) {
        QJsonArray commands;
        for (const MenuCommand& command : section.commands)
            commands.append(toJson(command));
        sections.append(QJsonObject{{"title", section.title}, {"commands", commands}});
    }
    const QJsonObject root{
        {"bundleID", catalog.bundleID}, {"appName", catalog.appName}, {"sections", sections}};
    return QJsonDocument(root).toJson(indented ? QJsonDocument::Indented : QJsonDocument::Compact);
}

ReadResult read(const QByteArray& json)
{
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return {std::nullopt, QStringLiteral("not valid JSON at offset %1: %2")
                                  .arg(parseError.offset)
                                  .arg(parseError.errorString())};
    Reader reader;
    auto catalog =
        reader.catalog(doc.isObject() ? QJsonValue(doc.object()) : QJsonValue(doc.array()));
    return {catalog, reader.error};
}

} // namespace corvane::MenuCatalogJson
