#pragma once

// Menu trees built in memory from a short description, for the walk rules and the shell's unit
// tests (the real applications are in the session tests), and catalogs written back in the same
// notation for comparisons.
//
// Items are separated by ',', a submenu follows its title in braces ("File{New,Open}"; "Recent{}"
// is an empty one) and '-' is a separator. After a title: '!' disabled, '*' checked, '?t' or
// '?e' a press that times out or fails, '~' a menu whose children time out, '^' a menu whose
// children take 60 ms, and last '=ACCEL' a shortcut ("Save=Ctrl+S").

#include "menus/MenuTree.h"
#include "shortcuts/ShortcutDisplay.h"

#include <QHash>
#include <QThread>

namespace corvane::test {

class FakeNode : public MenuNode, public std::enable_shared_from_this<FakeNode> {
public:
    std::optional<QString> name;
    QList<std::shared_ptr<FakeNode>> kids;
    bool isMenu = false; // has a submenu (itself, GTK style), possibly empty
    bool isEnabled = true;
    bool isChecked = false;
    ShortcutKeys keys;
    PressResult answer{PressResult::Status::pressed, 0};
    QString id; // the command id a crawl gives it, with '/' between the titles
    std::shared_ptr<QStringList> pressed; // presses append the item's id
    WalkBudget* budget = nullptr;
    bool timesOut = false;
    bool slow = false;

    QList<std::shared_ptr<MenuNode>> children() override
    {
        if (timesOut && budget) {
            budget->noteTimeout();
            return {};
        }
        if (slow)
            QThread::msleep(60);
        return {kids.begin(), kids.end()};
    }
    std::optional<QString> title() override { return name; }
    std::shared_ptr<MenuNode> submenu() override { return isMenu ? shared_from_this() : nullptr; }
    bool enabled() override { return isEnabled; }
    bool checked() override { return isChecked; }
    ShortcutKeys shortcut() override { return keys; }
    PressResult press() override
    {
        if (pressed)
            pressed->append(id);
        return answer;
    }
};

class MenuDescription {
public:
    MenuDescription(const QString& text, std::shared_ptr<QStringList> pressed, WalkBudget* budget)
        : m_text(text), m_pressed(std::move(pressed)), m_budget(budget)
    {}

    QList<std::shared_ptr<FakeNode>> items(const QString& parentId)
    {
        QList<std::shared_ptr<FakeNode>> result;
        QHash<QString, int> seen;
        while (m_at < m_text.size() && m_text[m_at] != u'}') {
            auto node = std::make_shared<FakeNode>();
            node->pressed = m_pressed;
            node->budget = m_budget;
            if (m_text[m_at] == u'-') {
                node->name = QString();
                ++m_at;
            } else {
                QString title;
                while (m_at < m_text.size() && !QStringLiteral(",{}!*?~^=").contains(m_text[m_at]))
                    title += m_text[m_at++];
                node->name = title;
                const int occurrence = seen[title]++;
                node->id = (parentId.isEmpty() ? QString() : parentId + u'/') + title +
                           (occurrence ? QStringLiteral("#%1").arg(occurrence) : QString());
                flags(*node);
                if (m_at < m_text.size() && m_text[m_at] == u'{') {
                    ++m_at;
                    node->isMenu = true;
                    node->kids = items(node->id);
                    ++m_at; // '}'
                }
            }
            result.append(node);
            if (m_at < m_text.size() && m_text[m_at] == u',')
                ++m_at;
        }
        return result;
    }

private:
    void flags(FakeNode& node)
    {
        for (; m_at < m_text.size(); ++m_at) {
            const QChar c = m_text[m_at];
            if (c == u'!')
                node.isEnabled = false;
            else if (c == u'*')
                node.isChecked = true;
            else if (c == u'~')
                node.timesOut = true;
            else if (c == u'^')
                node.slow = true;
            else if (c == u'?')
                node.answer =
                    m_text[++m_at] == u't'
                        ? MenuNode::PressResult{MenuNode::PressResult::Status::timedOut, 0}
                        : MenuNode::PressResult{MenuNode::PressResult::Status::error, 3};
            else if (c == u'=') {
                QString accel;
                while (++m_at < m_text.size() && !QStringLiteral(",{}").contains(m_text[m_at]))
                    accel += m_text[m_at];
                node.keys = ShortcutDisplay::fromAccelerator(accel);
                return;
            } else
                return;
        }
    }

    QString m_text;
    qsizetype m_at = 0;
    std::shared_ptr<QStringList> m_pressed;
    WalkBudget* m_budget;
};

// The menu bar `text` describes.
inline std::shared_ptr<FakeNode> menuBar(const QString& text,
                                         std::shared_ptr<QStringList> pressed = {},
                                         WalkBudget* budget = nullptr)
{
    auto bar = std::make_shared<FakeNode>();
    bar->kids = MenuDescription(text, std::move(pressed), budget).items({});
    return bar;
}

// Sections' commands in the notation above, as "File/Open#1!*=Ctrl+S" (the id with '/' between
// the titles), separated by spaces; more than `whole` commands as "first … last (count)".
inline QString describe(const QList<MenuSection>& sections, int whole = 100)
{
    QStringList out;
    for (const MenuSection& section : sections)
        for (const MenuCommand& c : section.commands)
            out << c.id().replace(idSeparator, u'/') + (c.enabled ? "" : "!") +
                       (c.isChecked ? "*" : "") +
                       (c.shortcut.key.isEmpty()
                            ? QString()
                            : u'=' +
                                  (c.shortcut.modifiers + QStringList{c.shortcut.key}).join(u'+'));
    if (out.size() > whole)
        return QStringLiteral("%1 … %2 (%3)").arg(out.first(), out.last()).arg(out.size());
    return out.join(u' ');
}

// A catalog's commands as above; "none" without a catalog.
inline QString describe(const std::optional<MenuCatalog>& catalog, int whole = 100)
{
    return catalog ? describe(catalog->sections, whole) : QStringLiteral("none");
}

} // namespace corvane::test
