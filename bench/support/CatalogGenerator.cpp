#include "CatalogGenerator.h"

#include "shortcuts/TextFolding.h"

namespace corvane::CatalogGenerator {

namespace {

const QStringList menus{"File",     "Edit",   "View",    "Insert", "Format", "Tools",
                        "Document", "Search", "Project", "Build",  "Window", "Help"};
const QStringList verbs{"Open",   "Save",   "Close",  "Export",    "Import",  "Print",  "Copy",
                        "Paste",  "Cut",    "Find",   "Replace",   "Show",    "Hide",   "Toggle",
                        "Select", "Insert", "Delete", "Duplicate", "Move",    "Rename", "Reload",
                        "Zoom",   "Sort",   "Go to",  "Run",       "Comment", "Indent", "Convert",
                        "Merge",  "Split",  "Fold",   "Unfold"};
const QStringList nouns{"Document", "File",      "Selection", "Line",     "Word",   "Tab",
                        "Window",   "Sidebar",   "Toolbar",   "Bookmark", "Symbol", "Project",
                        "Session",  "Paragraph", "Table",     "Image",    "Link",   "Comment",
                        "Page",     "Column",    "Block",     "Encoding", "Macro",  "Terminal",
                        "Panel",    "Style",     "Template",  "Snippet"};
const QStringList tails{"",
                        "",
                        "",
                        "…",
                        " as PDF…",
                        " All",
                        " Next",
                        " Previous",
                        " to Clipboard",
                        " in New Window",
                        " and Match Style",
                        " (Advanced)",
                        " Again"};
const QStringList international{"Éditer",
                                "E\u0301diter",
                                "Öffnen",
                                "Schließen",
                                "Übersicht",
                                "Français",
                                "Настройки",
                                "Сохранить",
                                "開く",
                                "保存",
                                "ファイル",
                                "편집",
                                "Ελληνικά",
                                "ﬁle ligature",
                                "Ａｂｃ",
                                "📄 New",
                                "👩\u200D💻 Develop",
                                "🇫🇷 Flag",
                                "Café",
                                "Cafe\u0301",
                                "naïve",
                                "İstanbul",
                                "ǅemal",
                                "ﬀ",
                                "Straße",
                                "ऩ नमस्ते",
                                "x\u0301\u0327y",
                                "Ⅻ Roman"};
const QStringList keys{"A",   "B",   "C",     "D", "E",  "F",   "N", "O", "P",
                       "Q",   "S",   "W",     "Z", "F5", "F11", "←", "→", "Enter",
                       "Del", "Tab", "Space", "1", "2",  "+",   "-"};
const QStringList modifierSets[]{{"Ctrl"}, {"Ctrl", "Shift"}, {"Alt"}, {"Ctrl", "Alt"},
                                 {},       {"Shift"}};

QString title(QRandomGenerator& random, bool intl)
{
    if (intl && random.bounded(3) == 0)
        return international[random.bounded(international.size())];
    return verbs[random.bounded(verbs.size())] + u' ' + nouns[random.bounded(nouns.size())] +
           tails[random.bounded(tails.size())];
}

} // namespace

MenuCatalog generate(quint32 seed, const Options& options)
{
    QRandomGenerator random(seed);
    MenuCatalog catalog{QStringLiteral("org.example.Generated"), QStringLiteral("Generated"), {}};
    for (const QString& menu : menus)
        catalog.sections.append(MenuSection{menu, {}});

    for (int n = 0; n < options.commandCount; ++n) {
        MenuSection& section = catalog.sections[random.bounded(catalog.sections.size())];
        QList<PathStep> path{{section.title, 0}};
        const int depth = 1 + int(random.bounded(3)); // 1 to 3 levels below the menu
        for (int level = 0; level < depth; ++level)
            path.append(PathStep{title(random, options.international), 0});
        // Number equal titles at each level as the crawler does.
        int occurrence = 0;
        for (const MenuCommand& other : section.commands)
            if (other.path.size() == path.size() &&
                other.titles() == MenuCommand{path, {}, true, false}.titles())
                ++occurrence;
        path.last().occurrence = occurrence;
        ShortcutKeys shortcut = ShortcutKeys::none;
        if (random.bounded(3) != 0)
            shortcut =
                ShortcutKeys{modifierSets[random.bounded(6)], keys[random.bounded(keys.size())]};
        section.commands.append(
            MenuCommand{path, shortcut, random.bounded(6) != 0, random.bounded(8) == 0});
    }
    QList<MenuSection> nonEmpty;
    for (const MenuSection& section : std::as_const(catalog.sections))
        if (!section.commands.isEmpty())
            nonEmpty.append(section);
    catalog.sections = nonEmpty;
    return catalog;
}

QList<MenuCommand> allCommands(const MenuCatalog& catalog)
{
    QList<MenuCommand> commands;
    for (const MenuSection& section : catalog.sections)
        commands.append(section.commands);
    return commands;
}

QString randomQuery(QRandomGenerator& random, const QList<MenuCommand>& commands)
{
    static const QStringList extras{"é", "e\u0301", "É", "ß",      "ss",      "ö", "o\u0308", "開",
                                    "📄", "👩",       "💻", "\u200D", "🇫",       " ", "\t",      "x",
                                    "q", "z",       "ﬁ", "İ",      "i\u0307", "ñ"};
    const MenuCommand& command = commands[random.bounded(commands.size())];
    const QStringList titles = command.titles();
    const QString source = titles[random.bounded(titles.size())];
    const QStringList chars = TextFolding::graphemes(source);
    QString query;
    switch (random.bounded(6)) {
    case 0: { // a slice
        if (chars.isEmpty())
            break;
        const int start = random.bounded(chars.size());
        const int length = 1 + random.bounded(std::min<int>(5, chars.size() - start));
        query = chars.mid(start, length).join(QString());
        break;
    }
    case 1: // scattered characters in order
        for (const QString& c : chars)
            if (random.bounded(3) == 0)
                query += c;
        break;
    case 2: // random letters
        for (int i = 0, n = 1 + random.bounded(4); i < n; ++i)
            query += QChar(u'a' + random.bounded(26));
        break;
    case 3: // extras
        for (int i = 0, n = 1 + random.bounded(3); i < n; ++i)
            query += extras[random.bounded(extras.size())];
        break;
    case 4: // a prefix, upper-cased or decomposed
        query = chars.mid(0, 1 + random.bounded(std::max<int>(1, std::min<int>(4, chars.size()))))
                    .join(QString());
        query =
            random.bounded(2) ? query.toUpper() : query.normalized(QString::NormalizationForm_D);
        break;
    default: // a menu title and a word
        query = titles.first().left(3) + u' ' + chars.mid(0, 2).join(QString());
        break;
    }
    if (random.bounded(5) == 0)
        query = QStringLiteral("  ") + query + u'\t';
    return query;
}

} // namespace corvane::CatalogGenerator
