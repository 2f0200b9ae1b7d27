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
    void fromAccelerator_data();
    void fromAccelerator();
    void qtMnemonics();
    void keyEquivalents_data();
    void keyEquivalents();
    void folding_data();
    void folding();
    void score_data();
    void score();
    void ranking_data();
    void ranking();
};

void TestShortcuts::fromAccelerator_data()
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

void TestShortcuts::fromAccelerator()
{
    QFETCH(QString, text);
    QFETCH(QString, keys);
    QCOMPARE(caps(ShortcutDisplay::fromAccelerator(text)), keys);
}

void TestShortcuts::qtMnemonics()
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

// The key-equivalent attributes (a character, a virtual key, a glyph and a modifier mask) that
// another platform describes menu shortcuts with.
void TestShortcuts::keyEquivalents_data()
{
    QTest::addColumn<QString>("character"); // "" absent
    QTest::addColumn<qint64>("virtualKey"); // -1 absent
    QTest::addColumn<qint64>("glyph");      // -1 absent
    QTest::addColumn<qint64>("modifierMask");
    QTest::addColumn<QString>("keys");
    QTest::newRow("character") << "s" << -1LL << -1LL << 0LL << "⌘+S";
    QTest::newRow("shift") << "s" << -1LL << -1LL << 1LL << "⇧+⌘+S";
    QTest::newRow("all four, no command") << "s" << -1LL << -1LL << 15LL << "⌃+⌥+⇧+S";
    QTest::newRow("character beats glyph") << "x" << -1LL << 111LL << 0LL << "⌘+X";
    QTest::newRow("control character falls to glyph") << "\x1f" << -1LL << 111LL << 0LL << "⌘+F1";
    QTest::newRow("glyph 0 falls to the virtual key") << "" << 122LL << 0LL << 0LL << "⌘+F1";
    QTest::newRow("bare escape") << "" << 0x35LL << -1LL << 8LL << "⎋";
    QTest::newRow("full upper-casing") << "ß" << -1LL << -1LL << 0LL << "⌘+SS";
    QTest::newRow("first cluster") << "e\u0301x" << -1LL << -1LL << 0LL << "⌘+E\u0301";
}

void TestShortcuts::keyEquivalents()
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

void TestShortcuts::folding_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("folded");
    QTest::newRow("case and precomposed marks") << "Éditer"
                                                << "editer";
    QTest::newRow("decomposed marks") << "E\u0301diter"
                                      << "editer";
    QTest::newRow("spaces and tabs trimmed, line breaks kept") << " \t\na \u00A0"
                                                               << "\na";
    QTest::newRow("sharp s") << "Straße"
                             << "strasse";
    QTest::newRow("greek final sigma") << "ΣΊΣΥΦΟΣ"
                                       << "σισυφοσ";
    QTest::newRow("hangul composed back") << "편집"
                                          << "편집";
    QTest::newRow("only spaces: no search") << " \t\u3000"
                                            << "";
}

void TestShortcuts::folding()
{
    QFETCH(QString, text);
    QFETCH(QString, folded);
    QCOMPARE(TextFolding::fold(text), folded.normalized(QString::NormalizationForm_C));
    QCOMPARE(TextFolding::isSearchActive(text), !folded.isEmpty());
}

void TestShortcuts::score_data()
{
    QTest::addColumn<QString>("titles");
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("expected"); // -1: no match
    QTest::newRow("prefix, with the brevity bonus") << "Edit/Copy"
                                                    << "co" << 1036;
    QTest::newRow("word start") << "Edit/Paste and Match Style"
                                << "ma" << 819;
    QTest::newRow("substring") << "M/Recopy"
                               << "cop" << 634;
    QTest::newRow("subsequence") << "Edit/Copy"
                                 << "cpy" << 326;
    QTest::newRow("greedy span from the first match") << "M/aqqqbzab"
                                                      << "abz" << 302;
    QTest::newRow("subsequence floor") << "M/abcdefghijklmnopqrstuvwyzx"
                                       << "ax" << 114;
    QTest::newRow("the path only, halved") << "File/Save"
                                           << "file" << 500;
    QTest::newRow("a long query across the path") << "Format/Go"
                                                  << "fmtgo" << 130;
    QTest::newRow("no brevity bonus past 40 characters")
        << "File/Export the current document as a PDF file now"
        << "export" << 1000;
    QTest::newRow("folded, canonically equivalent") << "M/Cafe\u0301 Menu"
                                                    << "CAFÉ" << 1031;
    QTest::newRow("length in user-perceived characters") << "M/👩‍💻 Dev"
                                                         << "👩‍💻" << 1035;
    QTest::newRow("whole clusters only") << "M/🇫🇷🇩🇪"
                                         << "🇩🇪" << 638;
    QTest::newRow("no match") << "Edit/Copy"
                              << "xyz" << -1;
}

void TestShortcuts::score()
{
    QFETCH(QString, titles);
    QFETCH(QString, query);
    QFETCH(int, expected);
    QCOMPARE(CommandFilter::score(command(titles), TextFolding::fold(query)).value_or(-1),
             expected);
}

void TestShortcuts::ranking_data()
{
    QTest::addColumn<QString>("commands"); // space-separated, in menu order
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("favorites");
    QTest::addColumn<QString>("ranked");
    QTest::addColumn<QString>("history"); // "Edit/Copy=3": a command's history weight
    QTest::newRow("no search keeps the menu order, disabled included")
        << "File/Zzz Edit/Copy !View/Qqq"
        << "   "
        << ""
        << "File/Zzz Edit/Copy !View/Qqq"
        << "";
    QTest::newRow("equal scores keep the menu order") << "A/Copy B/Copy C/Copy"
                                                      << "copy"
                                                      << ""
                                                      << "A/Copy B/Copy C/Copy"
                                                      << "";
    QTest::newRow("a favourite rises") << "Edit/Cope Edit/Copy"
                                       << "co"
                                       << "Edit/Copy"
                                       << "Edit/Copy Edit/Cope"
                                       << "";
    QTest::newRow("a disabled favourite still sinks") << "Edit/Cope !Edit/Copy"
                                                      << "co"
                                                      << "Edit/Copy"
                                                      << "Edit/Cope !Edit/Copy"
                                                      << "";
    QTest::newRow("a disabled path match below zero is still listed, last")
        << "!Zebra/Zzz/Qqq Edit/Zq Edit/Other"
        << "zq"
        << ""
        << "Edit/Zq !Zebra/Zzz/Qqq"
        << "";
    QTest::newRow("use orders equal matches") << "A/Copy B/Copy C/Copy"
                                              << "copy"
                                              << ""
                                              << "C/Copy A/Copy B/Copy"
                                              << "C/Copy=1 B/Copy=0.01";
    QTest::newRow("more use rises higher") << "A/Copy B/Copy"
                                           << "copy"
                                           << ""
                                           << "B/Copy A/Copy"
                                           << "A/Copy=1 B/Copy=6";
    QTest::newRow("heavy use never lifts a word start above a prefix")
        << "Edit/Paste Edit/Special_Copy Edit/Copy"
        << "copy"
        << ""
        << "Edit/Copy Edit/Special_Copy"
        << "Edit/Special_Copy=1000";
    QTest::newRow("nor a substring above a word start") << "Edit/Xcopy Edit/Special_Copy"
                                                        << "copy"
                                                        << ""
                                                        << "Edit/Special_Copy Edit/Xcopy"
                                                        << "Edit/Xcopy=1000";
}

void TestShortcuts::ranking()
{
    QFETCH(QString, commands);
    QFETCH(QString, query);
    QFETCH(QString, favorites);
    QFETCH(QString, ranked);
    QFETCH(QString, history);
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

QTEST_GUILESS_MAIN(TestShortcuts)
#include "tst_shortcuts.moc"
