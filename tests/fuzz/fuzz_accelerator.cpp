// ShortcutDisplay::fromAccelerator on any text, as GTK or Qt would send it
// over AT-SPI: never crashes; a result is either none or a key with modifiers in the desktop
// order, each at most once.

#include "FuzzInput.h"
#include "shortcuts/ShortcutDisplay.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corvane;
    const ShortcutKeys keys = ShortcutDisplay::fromAccelerator(fuzz::text(data, size));
    if (keys.key.isEmpty()) {
        fuzz::require(keys.modifiers.isEmpty(), "no key, no modifiers");
        return 0;
    }
    const QStringList order{"Ctrl", "Alt", "Shift", "Super"};
    qsizetype last = -1;
    for (const QString& modifier : keys.modifiers) {
        const qsizetype at = order.indexOf(modifier);
        fuzz::require(at > last, "modifiers known, in order, once each");
        last = at;
    }
    return 0;
}
