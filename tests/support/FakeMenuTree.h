#pragma once

// Menu trees built in memory for the walk rules and the shell's unit tests (the real
// applications are in the session tests).

#include "menus/MenuTree.h"

namespace corvane::test {

// A built menu element: a title, children, and optionally a submenu (GTK style: an item with
// children is its own submenu).
class FakeNode : public MenuNode, public std::enable_shared_from_this<FakeNode> {
public:
    std::optional<QString> name;
    QList<std::shared_ptr<FakeNode>> kids;
    bool isMenu = false; // has a submenu (itself), possibly empty
    bool isEnabled = true;
    bool isChecked = false;
    ShortcutKeys keys;
    PressResult answer{PressResult::Status::pressed, 0};
    int* pressedCounter = nullptr;
    WalkBudget* budget = nullptr;
    bool timesOut = false; // reading its children times out

    QList<std::shared_ptr<MenuNode>> children() override
    {
        if (timesOut && budget) {
            budget->noteTimeout();
            return {};
        }
        return {kids.begin(), kids.end()};
    }
    std::optional<QString> title() override { return name; }
    std::shared_ptr<MenuNode> submenu() override { return isMenu ? shared_from_this() : nullptr; }
    bool enabled() override { return isEnabled; }
    bool checked() override { return isChecked; }
    ShortcutKeys shortcut() override { return keys; }
    PressResult press() override
    {
        if (pressedCounter)
            ++*pressedCounter;
        return answer;
    }
};

using Node = std::shared_ptr<FakeNode>;

Node item(const QString& title, ShortcutKeys keys = ShortcutKeys::none)
{
    auto n = std::make_shared<FakeNode>();
    n->name = title;
    n->keys = keys;
    return n;
}
Node separator()
{
    auto n = std::make_shared<FakeNode>();
    n->name = QString();
    return n;
}
Node menu(const QString& title, QList<Node> kids)
{
    auto n = item(title);
    n->isMenu = true;
    n->kids = std::move(kids);
    return n;
}
Node bar(QList<Node> menus)
{
    auto n = std::make_shared<FakeNode>();
    n->kids = std::move(menus);
    return n;
}

} // namespace corvane::test
