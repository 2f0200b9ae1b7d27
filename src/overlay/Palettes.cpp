#include "Palettes.h"

namespace corvane {

QPalette previewPalette(bool dark)
{
    const QColor window = dark ? QColor(0x2b, 0x2b, 0x2e) : QColor(0xf4, 0xf4, 0xf5);
    const QColor text = dark ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x1d, 0x1d, 0x1f);
    const QColor base = dark ? QColor(0x1f, 0x1f, 0x22) : QColor(0xff, 0xff, 0xff);
    const QColor button = dark ? QColor(0x3a, 0x3a, 0x3e) : QColor(0xe9, 0xe9, 0xeb);
    const QColor highlight(0xd1, 0x82, 0x1a); // Theme.accentDeep
    QPalette p(button, window);
    for (auto group : {QPalette::Active, QPalette::Inactive}) {
        p.setColor(group, QPalette::Window, window);
        p.setColor(group, QPalette::WindowText, text);
        p.setColor(group, QPalette::Base, base);
        p.setColor(group, QPalette::AlternateBase, window);
        p.setColor(group, QPalette::Text, text);
        p.setColor(group, QPalette::Button, button);
        p.setColor(group, QPalette::ButtonText, text);
        p.setColor(group, QPalette::Highlight, highlight);
        p.setColor(group, QPalette::HighlightedText, Qt::white);
        p.setColor(group, QPalette::PlaceholderText,
                   dark ? QColor(0x8e, 0x8e, 0x93) : QColor(0x8e, 0x8e, 0x93));
        p.setColor(group, QPalette::ToolTipBase, base);
        p.setColor(group, QPalette::ToolTipText, text);
        p.setColor(group, QPalette::Light, button.lighter(dark ? 130 : 110));
        p.setColor(group, QPalette::Midlight, button.lighter(dark ? 115 : 105));
        p.setColor(group, QPalette::Mid, button.darker(dark ? 130 : 120));
        p.setColor(group, QPalette::Dark, button.darker(dark ? 160 : 150));
        p.setColor(group, QPalette::Shadow, Qt::black);
    }
    const QColor disabledText = dark ? QColor(0x76, 0x76, 0x7a) : QColor(0xa0, 0xa0, 0xa5);
    p.setColor(QPalette::Disabled, QPalette::Window, window);
    p.setColor(QPalette::Disabled, QPalette::WindowText, disabledText);
    p.setColor(QPalette::Disabled, QPalette::Base, window);
    p.setColor(QPalette::Disabled, QPalette::Text, disabledText);
    p.setColor(QPalette::Disabled, QPalette::Button, button);
    p.setColor(QPalette::Disabled, QPalette::ButtonText, disabledText);
    return p;
}

} // namespace corvane
