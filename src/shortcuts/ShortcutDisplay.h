#pragma once

// Turns a menu item's key-equivalent description into displayable ShortcutKeys.
// `fromAccelerator` reads the GTK and Qt accelerator texts that AT-SPI reports; the three
// functions over a character, a virtual key code and a glyph number read the key-equivalent
// attributes of a platform that describes menu shortcuts that way (pure, for a future backend).

#include "menus/MenuCatalog.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace corvane::ShortcutDisplay {

QStringList modifierSymbols(qint64 axModifiers);
std::optional<QString> keyLabel(const std::optional<QString>& cmdChar,
                                std::optional<qint64> virtualKey, std::optional<qint64> glyph);
std::optional<QString> label(const QString& forChar);

std::optional<QString> glyphLabel(qint64 glyph);
std::optional<QString> virtualKeyLabel(qint64 virtualKey);

// A GTK accelerator ("<Primary><Shift>o", "<Control>F5") or Qt portable text ("Ctrl+Shift+S",
// "Alt+Left"; of a comma-separated list the first sequence counts) to keys in the Linux desktop
// order Ctrl, Alt, Shift, Super. Empty or unparsable text gives ShortcutKeys::none.
ShortcutKeys fromAccelerator(const QString& text);

// A menu title without its mnemonic marks: `mark` ("_" in a DBusMenu label, "&" in a Qt action's
// text) before a character goes, and a doubled one stays as one.
QString withoutMnemonicMarks(const QString& title, QChar mark);

// Qt reports an item's mnemonic as its key binding when it has no shortcut: Alt plus one letter or
// digit that occurs in the item's title is a mnemonic, not a shortcut.
bool isQtMnemonic(const ShortcutKeys& keys, const QString& title);

} // namespace corvane::ShortcutDisplay
