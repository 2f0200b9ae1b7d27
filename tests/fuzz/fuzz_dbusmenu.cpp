// A DBusMenu item's "shortcut" and "label" as any exporter may send them (lines are key
// sequences, tabs separate key names): never crashes; a shortcut is none or a key with known
// modifiers, and a label loses only mnemonic marks.

#include "FuzzInput.h"
#include "platform/linux/DBusMenu.h"
#include "shortcuts/ShortcutDisplay.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corvane;
    const QString text = fuzz::text(data, size);
    QList<QStringList> sequences;
    for (const QString& line : text.split(u'\n'))
        sequences.append(line.split(u'\t'));
    const ShortcutKeys keys = dbusmenu::shortcutFrom(sequences);
    fuzz::require(!keys.key.isEmpty() || keys.modifiers.isEmpty(), "no key, no modifiers");
    for (const QString& modifier : keys.modifiers)
        fuzz::require(QStringList({"Ctrl", "Alt", "Shift", "Super"}).contains(modifier),
                      "known modifiers");
    const QString label = ShortcutDisplay::withoutMnemonicMarks(text, u'_');
    fuzz::require(label.size() <= text.size() && label.size() >= (text.size() + 1) / 2,
                  "a label loses at most every other character");
    fuzz::require(!text.contains(u'_') ? label == text : true, "a label without marks stays");
    return 0;
}
