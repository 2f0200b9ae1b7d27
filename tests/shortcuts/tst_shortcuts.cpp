// Shortcuts and search: accelerator texts and key-equivalent attributes to key caps, the query
// folding, the scores and the ranking.

#include "shortcuts/CommandFilter.h"
#include "shortcuts/ShortcutDisplay.h"
#include "shortcuts/TextFolding.h"

#include <QTest>

using namespace corvane;

namespace {

QString caps(const ShortcutKeys& keys)
{
    return keys.key.isEmpty() ? QString() : (keys.modifiers + QStringList{keys.key}).join(u'+');
}

// "Edit/Copy" → a command; a leading '!' makes it disabled, '_' stands for a space.
MenuCommand command(QString titles)
{
    titles.replace(u'_', u' ');
    const bool disabled = titles.startsWith(u'!');
    return MenuCommand{pathFromTitles(titles.remove(0, disabled).split(u'/')), ShortcutKeys::none,
                       !disabled, false};
}

} // namespace

class TestShortcuts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fromAccelerator_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("keys");
        const QList<std::pair<const char*, const char*>> rows{
            // GTK
            {"<Primary><Shift>o", "Ctrl+Shift+O"},
            {"<Alt>Left", "Alt+←"},
            {"<Shift><Super><Alt><Primary>Page_Down", "Ctrl+Alt+Shift+Super+PgDn"},
            {"<Ctrl><Shft>z", "Ctrl+Shift+Z"},
            {"<Primary>Return", "Ctrl+Enter"},
            {"<Primary>KP_Add", "Ctrl+Num +"},
            {"<Alt>KP_5", "Alt+Num 5"},
            {"F35", "F35"},
            {"<Bogus>a", ""},
            {"<Primary", ""},
            {"<Primary>XF86AudioPlay", ""},
            // Qt's portable text
            {"Ctrl+Shift+S", "Ctrl+Shift+S"},
            {"Meta+E", "Super+E"},
            {"Ctrl+Z, Ctrl+Y", "Ctrl+Z"},
            {"Ctrl++", "Ctrl++"},
            {"Ctrl+,, Ctrl+P", "Ctrl+,"},
            {"Shift+PgDown", "Shift+PgDn"},
            {"Num+5", "Num 5"},
            {"Ctrl+Num+-", "Ctrl+Num −"},
            {"Ctrl+é", "Ctrl+É"},
            {"Ctrl+LaunchMail", ""},
            {"Ctrl+", ""},
        };
        for (const auto& [text, keys] : rows)
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(keys);
    }

    void fromAccelerator()
    {
        QFETCH(QString, text);
        QFETCH(QString, keys);
        QCOMPARE(caps(ShortcutDisplay::fromAccelerator(text)), keys);
    }

    void qtMnemonics()
    {
        // Qt reports an item's mnemonic as its key binding when it has no shortcut.
        const auto mnemonic = [](const char* binding, const char* title) {
            return ShortcutDisplay::isQtMnemonic(ShortcutDisplay::fromAccelerator(binding), title);
        };
        QVERIFY(mnemonic("Alt+F", "&File"));
        QVERIFY(mnemonic("Alt+o", "Open"));
        QVERIFY(!mnemonic("Alt+X", "Open"));
        QVERIFY(!mnemonic("Ctrl+O", "Open"));
        QVERIFY(!mnemonic("Alt+Left", "Left"));
    }

    // The key-equivalent attributes (a character, a virtual key, a glyph and a modifier mask)
    // that another platform describes menu shortcuts with; -1 and "" stand for absent.
    void keyEquivalents_data()
    {
        QTest::addColumn<QString>("character");
        QTest::addColumn<qint64>("virtualKey");
        QTest::addColumn<qint64>("glyph");
        QTest::addColumn<qint64>("modifierMask");
        QTest::addColumn<QString>("keys");
        const QList<std::tuple<const char*, const char*, qint64, qint64, qint64, const char*>> rows{
            {"character", "s", -1, -1, 0, "⌘+S"},
            {"shift", "s", -1, -1, 1, "⇧+⌘+S"},
            {"all four, no command", "s", -1, -1, 15, "⌃+⌥+⇧+S"},
            {"character beats glyph", "x", -1, 111, 0, "⌘+X"},
            {"control character falls to glyph", "\x1f", -1, 111, 0, "⌘+F1"},
            {"glyph 0 falls to the virtual key", "", 122, 0, 0, "⌘+F1"},
            {"bare escape", "", 0x35, -1, 8, "⎋"},
            {"full upper-casing", "ß", -1, -1, 0, "⌘+SS"},
            {"first cluster", "e\u0301x", -1, -1, 0, "⌘+E\u0301"},
        };
        for (const auto& [name, character, virtualKey, glyph, mask, keys] : rows)
            QTest::newRow(name) << QString::fromUtf8(character) << virtualKey << glyph << mask
                                << QString::fromUtf8(keys);
    }

    void keyEquivalents()
    {
        QFETCH(QString, character);
        QFETCH(qint64, virtualKey);
        QFETCH(qint64, glyph);
        QFETCH(qint64, modifierMask);
        QFETCH(QString, keys);
        const auto key =
            ShortcutDisplay::keyLabel(character.isEmpty() ? std::nullopt : std::optional(character),
                                      virtualKey < 0 ? std::nullopt : std::optional(virtualKey),
                                      glyph < 0 ? std::nullopt : std::optional(glyph));
        const ShortcutKeys shortcut =
            key ? ShortcutKeys{ShortcutDisplay::modifierSymbols(modifierMask), *key}
                : ShortcutKeys::none;
        QCOMPARE(caps(shortcut), keys);
    }

    void folding_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("folded");
        const QList<std::tuple<const char*, const char*, const char*>> rows{
            {"case and precomposed marks", "Éditer", "editer"},
            {"decomposed marks", "E\u0301diter", "editer"},
            {"spaces and tabs trimmed, line breaks kept", " \t\na \u00A0", "\na"},
            {"sharp s", "Straße", "strasse"},
            {"greek final sigma", "ΣΊΣΥΦΟΣ", "σισυφοσ"},
            {"hangul composed back", "편집", "편집"},
            {"only spaces: no search", " \t\u3000", ""},
        };
        for (const auto& [name, text, folded] : rows)
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(folded);
    }

    void folding()
    {
        QFETCH(QString, text);
        QFETCH(QString, folded);
        QCOMPARE(TextFolding::fold(text), folded.normalized(QString::NormalizationForm_C));
        QCOMPARE(TextFolding::isSearchActive(text), !folded.isEmpty());
    }

    void score_data()
    {
        QTest::addColumn<QString>("titles");
        QTest::addColumn<QString>("query");
        QTest::addColumn<int>("expected"); // -1: no match
        const QList<std::tuple<const char*, const char*, const char*, int>> rows{
            {"prefix, with the brevity bonus", "Edit/Copy", "co", 1036},
            {"word start", "Edit/Paste and Match Style", "ma", 819},
            {"substring", "M/Recopy", "cop", 634},
            {"subsequence", "Edit/Copy", "cpy", 326},
            {"greedy span from the first match", "M/aqqqbzab", "abz", 302},
            {"subsequence floor", "M/abcdefghijklmnopqrstuvwyzx", "ax", 114},
            {"the path only, halved", "File/Save", "file", 500},
            {"a long query across the path", "Format/Go", "fmtgo", 130},
            {"no brevity bonus past 40 characters",
             "File/Export the current document as a PDF file now", "export", 1000},
            {"folded, canonically equivalent", "M/Cafe\u0301 Menu", "CAFÉ", 1031},
            {"length in user-perceived characters", "M/👩‍💻 Dev", "👩‍💻", 1035},
            {"whole clusters only", "M/🇫🇷🇩🇪", "🇩🇪", 638},
            {"no match", "Edit/Copy", "xyz", -1},
        };
        for (const auto& [name, titles, query, expected] : rows)
            QTest::newRow(name) << QString::fromUtf8(titles) << QString::fromUtf8(query)
                                << expected;
    }

    void score()
    {
        QFETCH(QString, titles);
        QFETCH(QString, query);
        QFETCH(int, expected);
        QCOMPARE(CommandFilter::score(command(titles), TextFolding::fold(query)).value_or(-1),
                 expected);
    }

    void ranking_data()
    {
        QTest::addColumn<QString>("commands"); // space-separated, in menu order
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("favorites");
        QTest::addColumn<QString>("history"); // "Edit/Copy=3": a command's history weight
        QTest::addColumn<QString>("ranked");
        const QList<std::tuple<const char*, const char*, const char*, const char*, const char*,
                               const char*>>
            rows{
                {"no search keeps the menu order, disabled included",
                 "File/Zzz Edit/Copy !View/Qqq", "   ", "", "", "File/Zzz Edit/Copy !View/Qqq"},
                {"equal scores keep the menu order", "A/Copy B/Copy C/Copy", "copy", "", "",
                 "A/Copy B/Copy C/Copy"},
                {"a favourite rises", "Edit/Cope Edit/Copy", "co", "Edit/Copy", "",
                 "Edit/Copy Edit/Cope"},
                {"a disabled favourite still sinks", "Edit/Cope !Edit/Copy", "co", "Edit/Copy", "",
                 "Edit/Cope !Edit/Copy"},
                {"a disabled path match below zero is still listed, last",
                 "!Zebra/Zzz/Qqq Edit/Zq Edit/Other", "zq", "", "", "Edit/Zq !Zebra/Zzz/Qqq"},
                {"use orders equal matches", "A/Copy B/Copy C/Copy", "copy", "",
                 "C/Copy=1 B/Copy=0.01", "C/Copy A/Copy B/Copy"},
                {"more use rises higher", "A/Copy B/Copy", "copy", "", "A/Copy=1 B/Copy=6",
                 "B/Copy A/Copy"},
                {"heavy use never lifts a word start above a prefix",
                 "Edit/Paste Edit/Special_Copy Edit/Copy", "copy", "", "Edit/Special_Copy=1000",
                 "Edit/Copy Edit/Special_Copy"},
                {"nor a substring above a word start", "Edit/Xcopy Edit/Special_Copy", "copy", "",
                 "Edit/Xcopy=1000", "Edit/Special_Copy Edit/Xcopy"},
            };
        for (const auto& [name, commands, query, favorites, history, ranked] : rows)
            QTest::newRow(name) << commands << query << favorites << history << ranked;
    }

    void ranking()
    {
        QFETCH(QString, commands);
        QFETCH(QString, query);
        QFETCH(QString, favorites);
        QFETCH(QString, history);
        QFETCH(QString, ranked);
        QList<MenuCommand> list;
        for (const QString& c : commands.split(u' '))
            list << command(c);
        QSet<QString> favored;
        for (const QString& f : favorites.split(u' ', Qt::SkipEmptyParts))
            favored << command(f).id().normalized(QString::NormalizationForm_D); // any normal form
        CommandFilter::HistoryWeights weights;
        for (const QString& w : history.split(u' ', Qt::SkipEmptyParts))
            weights.insert(command(w.section(u'=', 0, 0)).id(), w.section(u'=', 1).toDouble());
        QStringList order;
        for (const MenuCommand& c : CommandFilter::rank(list, query, favored, weights))
            order << (c.enabled ? "" : "!") + c.titles().join(u'/').replace(u' ', u'_');
        QCOMPARE(order.join(u' '), ranked);
    }
};

QTEST_GUILESS_MAIN(TestShortcuts)
#include "tst_shortcuts.moc"
