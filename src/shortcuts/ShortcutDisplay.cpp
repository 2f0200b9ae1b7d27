#include "ShortcutDisplay.h"

#include "TextFolding.h"

#include <QHash>

namespace corvane::ShortcutDisplay {

namespace {

const QHash<qint64, QString>& glyphLabels()
{
    static const QHash<qint64, QString> table = [] {
        QHash<qint64, QString> t{
            {2, QStringLiteral("\u21E5")},   {3, QStringLiteral("\u21E4")},
            {4, QStringLiteral("\u2324")},   {9, QStringLiteral("Space")},
            {10, QStringLiteral("\u2326")},  {11, QStringLiteral("\u21A9")},
            {12, QStringLiteral("\u21A9")},  {13, QStringLiteral("\u21A9")},
            {17, QStringLiteral("\u2318")},  {23, QStringLiteral("\u232B")},
            {24, QStringLiteral("\u2190")},  {25, QStringLiteral("\u2191")},
            {26, QStringLiteral("\u2192")},  {27, QStringLiteral("\u238B")},
            {28, QStringLiteral("\u2327")},  {98, QStringLiteral("\u21DE")},
            {100, QStringLiteral("\u2190")}, {101, QStringLiteral("\u2192")},
            {102, QStringLiteral("\u2196")}, {103, QStringLiteral("?")},
            {104, QStringLiteral("\u2191")}, {105, QStringLiteral("\u2198")},
            {106, QStringLiteral("\u2193")}, {107, QStringLiteral("\u21DF")},
            {110, QStringLiteral("\u23FB")}, {140, QStringLiteral("\u23CF")},
        };
        for (int n = 1; n <= 12; ++n)
            t.insert(110 + n, QStringLiteral("F%1").arg(n));
        t.insert(135, QStringLiteral("F13"));
        t.insert(136, QStringLiteral("F14"));
        t.insert(137, QStringLiteral("F15"));
        for (int n = 16; n <= 19; ++n)
            t.insert(143 + (n - 16), QStringLiteral("F%1").arg(n));
        return t;
    }();
    return table;
}

const QHash<qint64, QString>& virtualKeyLabels()
{
    static const QHash<qint64, QString> table{
        {0x24, QStringLiteral("\u21A9")}, {0x30, QStringLiteral("\u21E5")},
        {0x31, QStringLiteral("Space")},  {0x33, QStringLiteral("\u232B")},
        {0x35, QStringLiteral("\u238B")}, {0x4C, QStringLiteral("\u2324")},
        {0x47, QStringLiteral("\u2327")}, {0x51, QStringLiteral("=")},
        {0x4B, QStringLiteral("/")},      {0x43, QStringLiteral("*")},
        {0x45, QStringLiteral("+")},      {0x4E, QStringLiteral("-")},
        {0x73, QStringLiteral("\u2196")}, {0x74, QStringLiteral("\u21DE")},
        {0x75, QStringLiteral("\u2326")}, {0x77, QStringLiteral("\u2198")},
        {0x79, QStringLiteral("\u21DF")}, {0x7B, QStringLiteral("\u2190")},
        {0x7C, QStringLiteral("\u2192")}, {0x7D, QStringLiteral("\u2193")},
        {0x7E, QStringLiteral("\u2191")}, {0x7A, QStringLiteral("F1")},
        {0x78, QStringLiteral("F2")},     {0x63, QStringLiteral("F3")},
        {0x76, QStringLiteral("F4")},     {0x60, QStringLiteral("F5")},
        {0x61, QStringLiteral("F6")},     {0x62, QStringLiteral("F7")},
        {0x64, QStringLiteral("F8")},     {0x65, QStringLiteral("F9")},
        {0x6D, QStringLiteral("F10")},    {0x67, QStringLiteral("F11")},
        {0x6F, QStringLiteral("F12")},    {0x69, QStringLiteral("F13")},
        {0x6B, QStringLiteral("F14")},    {0x71, QStringLiteral("F15")},
        {0x6A, QStringLiteral("F16")},    {0x40, QStringLiteral("F17")},
        {0x4F, QStringLiteral("F18")},    {0x50, QStringLiteral("F19")},
        {0x5A, QStringLiteral("F20")},
    };
    return table;
}

// Key names of GTK (GDK keysym names) and of Qt's portable text, lower-cased, to labels.
const QHash<QString, QString>& namedKeys()
{
    static const QHash<QString, QString> table = [] {
        QHash<QString, QString> t{
            {"return", "Enter"},
            {"enter", "Enter"},
            {"kp_enter", "Num Enter"},
            {"escape", "Esc"},
            {"esc", "Esc"},
            {"tab", "Tab"},
            {"backtab", "Tab"},
            {"iso_left_tab", "Tab"},
            {"space", "Space"},
            {"backspace", "Backspace"},
            {"delete", "Del"},
            {"del", "Del"},
            {"insert", "Ins"},
            {"ins", "Ins"},
            {"home", "Home"},
            {"end", "End"},
            {"page_up", "PgUp"},
            {"prior", "PgUp"},
            {"pgup", "PgUp"},
            {"page_down", "PgDn"},
            {"next", "PgDn"},
            {"pgdown", "PgDn"},
            {"pgdn", "PgDn"},
            {"left", "\u2190"},
            {"right", "\u2192"},
            {"up", "\u2191"},
            {"down", "\u2193"},
            {"kp_add", "Num +"},
            {"kp_subtract", "Num \u2212"},
            {"kp_multiply", "Num *"},
            {"kp_divide", "Num /"},
            {"print", "Print"},
            {"pause", "Pause"},
            {"menu", "Menu"},
            {"help", "Help"},
            // X keysym names of the printable ASCII punctuation.
            {"exclam", "!"},
            {"quotedbl", "\""},
            {"numbersign", "#"},
            {"dollar", "$"},
            {"percent", "%"},
            {"ampersand", "&"},
            {"apostrophe", "'"},
            {"quoteright", "'"},
            {"parenleft", "("},
            {"parenright", ")"},
            {"asterisk", "*"},
            {"plus", "+"},
            {"comma", ","},
            {"minus", "-"},
            {"period", "."},
            {"slash", "/"},
            {"colon", ":"},
            {"semicolon", ";"},
            {"less", "<"},
            {"equal", "="},
            {"greater", ">"},
            {"question", "?"},
            {"at", "@"},
            {"bracketleft", "["},
            {"backslash", "\\"},
            {"bracketright", "]"},
            {"asciicircum", "^"},
            {"underscore", "_"},
            {"grave", "`"},
            {"quoteleft", "`"},
            {"braceleft", "{"},
            {"bar", "|"},
            {"braceright", "}"},
            {"asciitilde", "~"},
        };
        for (int n = 1; n <= 35; ++n)
            t.insert(QStringLiteral("f%1").arg(n), QStringLiteral("F%1").arg(n));
        for (int n = 0; n <= 9; ++n)
            t.insert(QStringLiteral("kp_%1").arg(n), QStringLiteral("Num %1").arg(n));
        return t;
    }();
    return table;
}

enum Modifier { ctrl = 1, alt = 2, shift = 4, super = 8 };

QStringList modifierNames(int set)
{
    QStringList names;
    if (set & ctrl)
        names << QStringLiteral("Ctrl");
    if (set & alt)
        names << QStringLiteral("Alt");
    if (set & shift)
        names << QStringLiteral("Shift");
    if (set & super)
        names << QStringLiteral("Super");
    return names;
}

// A key name to its label: a named key, or one user-perceived character upper-cased.
std::optional<QString> keyNameLabel(const QString& name, bool keypad)
{
    if (name.isEmpty())
        return std::nullopt;
    if (keypad) {
        static const QHash<QString, QString> keypadKeys{
            {"+", "Num +"}, {"-", "Num \u2212"},    {"*", "Num *"},
            {"/", "Num /"}, {"enter", "Num Enter"}, {"return", "Num Enter"}};
        const QString lower = name.toLower();
        if (name.size() == 1 && name[0].isDigit())
            return QStringLiteral("Num ") + name;
        if (const auto it = keypadKeys.constFind(lower); it != keypadKeys.constEnd())
            return *it;
    }
    if (const auto it = namedKeys().constFind(name.toLower()); it != namedKeys().constEnd())
        return *it;
    const QString first = TextFolding::firstGrapheme(name);
    if (first.size() != name.size())
        return std::nullopt; // an unknown multi-character name
    if (first.at(0).unicode() < 0x20 || TextFolding::trimmed(first).isEmpty())
        return std::nullopt;
    return first.toUpper();
}

ShortcutKeys fromGtk(const QString& text)
{
    int modifiers = 0;
    qsizetype pos = 0;
    while (pos < text.size() && text[pos] == u'<') {
        const qsizetype close = text.indexOf(u'>', pos);
        if (close == -1)
            return ShortcutKeys::none;
        const QString name = text.mid(pos + 1, close - pos - 1).toLower();
        if (name == u"primary" || name == u"control" || name == u"ctrl" || name == u"ctl")
            modifiers |= ctrl;
        else if (name == u"shift" || name == u"shft")
            modifiers |= shift;
        else if (name == u"alt" || name == u"mod1" || name == u"meta")
            modifiers |= alt;
        else if (name == u"super" || name == u"mod4" || name == u"hyper")
            modifiers |= super;
        else if (name != u"release")
            return ShortcutKeys::none;
        pos = close + 1;
    }
    // Keypad keys have names of their own in GTK ("KP_Add"), found in namedKeys().
    const auto key = keyNameLabel(text.mid(pos).trimmed(), false);
    if (!key)
        return ShortcutKeys::none;
    return ShortcutKeys{modifierNames(modifiers), *key};
}

ShortcutKeys fromQt(const QString& text)
{
    struct Name {
        QLatin1String text;
        int modifier; // 0: the keypad marker "Num+"
    };
    static const Name names[] = {{QLatin1String("ctrl+"), ctrl},
                                 {QLatin1String("shift+"), shift},
                                 {QLatin1String("alt+"), alt},
                                 {QLatin1String("meta+"), super},
                                 {QLatin1String("num+"), 0}};
    int modifiers = 0;
    bool keypad = false;
    qsizetype pos = 0;
    for (bool found = true; found;) {
        found = false;
        for (const Name& name : names) {
            const QStringView rest = QStringView(text).mid(pos);
            if (rest.size() > name.text.size() && rest.startsWith(name.text, Qt::CaseInsensitive)) {
                if (name.modifier == 0)
                    keypad = true;
                modifiers |= name.modifier;
                pos += name.text.size();
                found = true;
            }
        }
    }
    // The key runs to the separator of the next sequence; a lone "," or "+" is itself the key.
    QStringView rest = QStringView(text).mid(pos);
    QString keyName;
    if (rest.size() >= 1 && (rest.size() == 1 || rest[1] == u','))
        keyName = rest.left(1).toString();
    else
        keyName = rest.left(rest.indexOf(u',') == -1 ? rest.size() : rest.indexOf(u','))
                      .toString()
                      .trimmed();
    const auto key = keyNameLabel(keyName, keypad);
    if (!key)
        return ShortcutKeys::none;
    return ShortcutKeys{modifierNames(modifiers), *key};
}

} // namespace

QStringList modifierSymbols(qint64 axModifiers)
{
    QStringList symbols;
    if (axModifiers & 4)
        symbols << QStringLiteral("\u2303");
    if (axModifiers & 2)
        symbols << QStringLiteral("\u2325");
    if (axModifiers & 1)
        symbols << QStringLiteral("\u21E7");
    if (!(axModifiers & 8))
        symbols << QStringLiteral("\u2318");
    return symbols;
}

std::optional<QString> glyphLabel(qint64 glyph)
{
    const auto it = glyphLabels().constFind(glyph);
    return it == glyphLabels().constEnd() ? std::nullopt : std::optional<QString>(*it);
}

std::optional<QString> virtualKeyLabel(qint64 virtualKey)
{
    const auto it = virtualKeyLabels().constFind(virtualKey);
    return it == virtualKeyLabels().constEnd() ? std::nullopt : std::optional<QString>(*it);
}

std::optional<QString> keyLabel(const std::optional<QString>& cmdChar,
                                std::optional<qint64> virtualKey, std::optional<qint64> glyph)
{
    if (cmdChar)
        if (auto result = label(*cmdChar))
            return result;
    if (glyph && *glyph >= 1)
        if (auto result = glyphLabel(*glyph))
            return result;
    if (virtualKey && *virtualKey >= 0)
        return virtualKeyLabel(*virtualKey);
    return std::nullopt;
}

std::optional<QString> label(const QString& forChar)
{
    if (forChar.isEmpty())
        return std::nullopt;
    char32_t c = forChar[0].unicode();
    if (forChar[0].isHighSurrogate() && forChar.size() > 1 && forChar[1].isLowSurrogate())
        c = QChar::surrogateToUcs4(forChar[0], forChar[1]);

    switch (c) {
    case 3:
    case 13:
        return QStringLiteral("\u21A9");
    case 8:
    case 127:
        return QStringLiteral("\u232B");
    case 9:
        return QStringLiteral("\u21E5");
    case 27:
        return QStringLiteral("\u238B");
    case 32:
        return QStringLiteral("Space");
    case 0xF700:
        return QStringLiteral("\u2191");
    case 0xF701:
        return QStringLiteral("\u2193");
    case 0xF702:
        return QStringLiteral("\u2190");
    case 0xF703:
        return QStringLiteral("\u2192");
    case 0xF728:
        return QStringLiteral("\u2326");
    case 0xF729:
        return QStringLiteral("\u2196");
    case 0xF72B:
        return QStringLiteral("\u2198");
    case 0xF72C:
        return QStringLiteral("\u21DE");
    case 0xF72D:
        return QStringLiteral("\u21DF");
    default:
        break;
    }
    if (c >= 0xF704 && c <= 0xF717)
        return QStringLiteral("F%1").arg(int(c - 0xF703));
    if (c < 32)
        return std::nullopt;

    const QString upper = TextFolding::firstGrapheme(forChar).toUpper();
    if (TextFolding::trimmed(upper).isEmpty())
        return std::nullopt;
    return upper;
}

ShortcutKeys fromAccelerator(const QString& text)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        return ShortcutKeys::none;
    if (t.startsWith(u'<') && t.size() > 1)
        return fromGtk(t);
    return fromQt(t);
}

bool isQtMnemonic(const ShortcutKeys& keys, const QString& title)
{
    if (keys.modifiers != QStringList{QStringLiteral("Alt")} || keys.key.size() != 1 ||
        !keys.key[0].isLetterOrNumber())
        return false;
    return title.contains(keys.key, Qt::CaseInsensitive);
}

QString withoutMnemonicMarks(const QString& title, QChar mark)
{
    QString plain;
    plain.reserve(title.size());
    for (qsizetype i = 0; i < title.size(); ++i) {
        if (title[i] == mark && i + 1 < title.size())
            ++i; // the marked character, or the second of a doubled mark
        plain += title[i];
    }
    return plain;
}

} // namespace corvane::ShortcutDisplay
