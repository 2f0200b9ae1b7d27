// The key-equivalent functions, and fromAccelerator for the GTK and Qt accelerator texts.

#include "shortcuts/ShortcutDisplay.h"

#include <QRandomGenerator>
#include <QTest>

using namespace corvane;
using namespace corvane::ShortcutDisplay;

namespace {
// What a crawler builds from key-equivalent attributes.
ShortcutKeys fromAttributes(std::optional<QString> ch, std::optional<qint64> vk,
                            std::optional<qint64> glyph, std::optional<qint64> modifiers)
{
    const auto key = keyLabel(ch, vk, glyph);
    if (!key || key->isEmpty())
        return ShortcutKeys::none;
    return ShortcutKeys{modifierSymbols(modifiers.value_or(0)), *key};
}
const QString cmd = QStringLiteral("\u2318");
} // namespace

class TestShortcutDisplay : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void modifierSymbolsOrder_data();
    void modifierSymbolsOrder();
    void commandCharacterWithModifiers();
    void spaceAndNoBreakSpace();
    void characterBeatsGlyph();
    void glyphZeroFallsToVirtualKey();
    void virtualKeyZeroHasNoEntry();
    void privateUseFunctionKeysAboveF20();
    void bareKeyWithModifiers8();
    void namedCharacters_data();
    void namedCharacters();
    void fullUpperCasing();
    void tables();
    void fromAccelerator_data();
    void fromAccelerator();
    void qtMnemonics();
    void arbitraryTextNeverCrashes();
};

void TestShortcutDisplay::modifierSymbolsOrder_data()
{
    QTest::addColumn<qint64>("mask");
    QTest::addColumn<QStringList>("symbols");
    QTest::newRow("0") << qint64(0) << QStringList{cmd};
    QTest::newRow("1") << qint64(1) << QStringList{"\u21E7", cmd};
    QTest::newRow("8") << qint64(8) << QStringList{};
    QTest::newRow("15") << qint64(15) << QStringList{"\u2303", "\u2325", "\u21E7"};
    QTest::newRow("6") << qint64(6) << QStringList{"\u2303", "\u2325", cmd};
    QTest::newRow("bits above 8 ignored") << qint64(0x30) << QStringList{cmd};
}

void TestShortcutDisplay::modifierSymbolsOrder()
{
    QFETCH(qint64, mask);
    QFETCH(QStringList, symbols);
    QCOMPARE(modifierSymbols(mask), symbols);
}

void TestShortcutDisplay::commandCharacterWithModifiers()
{
    QCOMPARE(fromAttributes("s", {}, {}, 0), (ShortcutKeys{{cmd}, "S"}));
    QCOMPARE(fromAttributes("s", {}, {}, std::nullopt), (ShortcutKeys{{cmd}, "S"}));
    QCOMPARE(fromAttributes("s", {}, {}, 1), (ShortcutKeys{{"\u21E7", cmd}, "S"}));
}

void TestShortcutDisplay::spaceAndNoBreakSpace()
{
    QCOMPARE(label(" "), QStringLiteral("Space"));
    QCOMPARE(fromAttributes(" ", {}, {}, std::nullopt), (ShortcutKeys{{cmd}, "Space"}));
    QVERIFY(!label("\u00A0").has_value());
    QCOMPARE(fromAttributes("\u00A0", {}, {}, 0), ShortcutKeys::none);
}

void TestShortcutDisplay::characterBeatsGlyph()
{
    QCOMPARE(keyLabel("x", {}, 111), QStringLiteral("X"));
    QCOMPARE(keyLabel(QString(QChar(0x1F)), {}, 111),
             QStringLiteral("F1")); // control char without a name
    QCOMPARE(keyLabel(QString(QChar(0x1F)), {}, 999), std::nullopt);
}

void TestShortcutDisplay::glyphZeroFallsToVirtualKey()
{
    QCOMPARE(keyLabel(std::nullopt, 122, 0), QStringLiteral("F1"));
    QCOMPARE(keyLabel(std::nullopt, 122, 1), QStringLiteral("F1")); // glyph 1 has no label
    QCOMPARE(keyLabel(std::nullopt, std::nullopt, 0), std::nullopt);
}

void TestShortcutDisplay::virtualKeyZeroHasNoEntry()
{
    QCOMPARE(keyLabel(std::nullopt, 0, std::nullopt), std::nullopt);
    QCOMPARE(keyLabel(std::nullopt, -1, std::nullopt), std::nullopt);
}

void TestShortcutDisplay::privateUseFunctionKeysAboveF20()
{
    for (char32_t c : {char32_t(0xF718), char32_t(0xF726), char32_t(0xF72A)}) {
        const QString s = QString::fromUcs4(&c, 1);
        QCOMPARE(label(s), s);
    }
    QCOMPARE(label(QString(QChar(0xF704))), QStringLiteral("F1"));
    QCOMPARE(label(QString(QChar(0xF717))), QStringLiteral("F20"));
}

void TestShortcutDisplay::bareKeyWithModifiers8()
{
    const ShortcutKeys keys = fromAttributes(std::nullopt, 0x35, std::nullopt, 8);
    QCOMPARE(keys, (ShortcutKeys{{}, "\u238B"}));
}

void TestShortcutDisplay::namedCharacters_data()
{
    QTest::addColumn<QString>("ch");
    QTest::addColumn<QString>("expected");
    const auto c = [](char16_t u) { return QString(QChar(u)); };
    QTest::newRow("enter") << c(3) << "\u21A9";
    QTest::newRow("cr") << c(13) << "\u21A9";
    QTest::newRow("bs") << c(8) << "\u232B";
    QTest::newRow("del") << c(127) << "\u232B";
    QTest::newRow("tab") << c(9) << "\u21E5";
    QTest::newRow("esc") << c(27) << "\u238B";
    QTest::newRow("up") << c(0xF700) << "\u2191";
    QTest::newRow("down") << c(0xF701) << "\u2193";
    QTest::newRow("left") << c(0xF702) << "\u2190";
    QTest::newRow("right") << c(0xF703) << "\u2192";
    QTest::newRow("F5") << c(0xF708) << "F5";
    QTest::newRow("fwd delete") << c(0xF728) << "\u2326";
    QTest::newRow("home") << c(0xF729) << "\u2196";
    QTest::newRow("end") << c(0xF72B) << "\u2198";
    QTest::newRow("pgup") << c(0xF72C) << "\u21DE";
    QTest::newRow("pgdn") << c(0xF72D) << "\u21DF";
    QTest::newRow("control char") << c(1) << "";
    QTest::newRow("empty") << QString() << "";
    QTest::newRow("first cluster only") << QStringLiteral("ab") << "A";
    QTest::newRow("combining cluster") << QStringLiteral("e\u0301x") << "E\u0301";
    QTest::newRow("emoji") << QStringLiteral("👩‍💻") << "👩‍💻";
}

void TestShortcutDisplay::namedCharacters()
{
    QFETCH(QString, ch);
    QFETCH(QString, expected);
    QCOMPARE(label(ch).value_or(QString()), expected);
}

void TestShortcutDisplay::fullUpperCasing()
{
    QCOMPARE(label("ß"), QStringLiteral("SS"));
    QCOMPARE(label("ǆ"), QStringLiteral("Ǆ"));
    QCOMPARE(label("é"), QStringLiteral("É"));
}

void TestShortcutDisplay::tables()
{
    int glyphs = 0, keys = 0;
    for (qint64 g = 0; g < 200; ++g)
        glyphs += glyphLabel(g).has_value();
    for (qint64 k = 0; k < 200; ++k)
        keys += virtualKeyLabel(k).has_value();
    QCOMPARE(glyphs, 45);
    QCOMPARE(keys, 41);
    QCOMPARE(glyphLabel(111), QStringLiteral("F1"));
    QCOMPARE(glyphLabel(122), QStringLiteral("F12"));
    QCOMPARE(glyphLabel(146), QStringLiteral("F19"));
    QVERIFY(!glyphLabel(5).has_value()); // modifier glyphs are absent on purpose
    QCOMPARE(virtualKeyLabel(0x5A), QStringLiteral("F20"));
}

void TestShortcutDisplay::fromAccelerator_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("modifiers");
    QTest::addColumn<QString>("key");
    // GTK
    QTest::newRow("gtk primary shift")
        << "<Primary><Shift>o" << QStringList{"Ctrl", "Shift"} << "O";
    QTest::newRow("gtk control F5") << "<Control>F5" << QStringList{"Ctrl"} << "F5";
    QTest::newRow("gtk alt left") << "<Alt>Left" << QStringList{"Alt"} << "\u2190";
    QTest::newRow("gtk order") << "<Shift><Super><Alt><Primary>Page_Down"
                               << QStringList{"Ctrl", "Alt", "Shift", "Super"} << "PgDn";
    QTest::newRow("gtk bare") << "F1" << QStringList{} << "F1";
    QTest::newRow("gtk escape") << "Escape" << QStringList{} << "Esc";
    QTest::newRow("gtk return") << "<Primary>Return" << QStringList{"Ctrl"} << "Enter";
    QTest::newRow("gtk plus") << "<Primary>plus" << QStringList{"Ctrl"} << "+";
    QTest::newRow("gtk minus") << "<Primary>minus" << QStringList{"Ctrl"} << "-";
    QTest::newRow("gtk comma") << "<Primary>comma" << QStringList{"Ctrl"} << ",";
    QTest::newRow("gtk kp add") << "<Primary>KP_Add" << QStringList{"Ctrl"} << "Num +";
    QTest::newRow("gtk kp subtract") << "KP_Subtract" << QStringList{} << "Num \u2212";
    QTest::newRow("gtk kp 5") << "<Alt>KP_5" << QStringList{"Alt"} << "Num 5";
    QTest::newRow("gtk kp enter") << "KP_Enter" << QStringList{} << "Num Enter";
    QTest::newRow("gtk delete") << "<Shift>Delete" << QStringList{"Shift"} << "Del";
    QTest::newRow("gtk insert") << "Insert" << QStringList{} << "Ins";
    QTest::newRow("gtk backspace") << "<Primary>BackSpace" << QStringList{"Ctrl"} << "Backspace";
    QTest::newRow("gtk space") << "<Primary>space" << QStringList{"Ctrl"} << "Space";
    QTest::newRow("gtk tab") << "<Primary>Tab" << QStringList{"Ctrl"} << "Tab";
    QTest::newRow("gtk home end") << "<Primary>End" << QStringList{"Ctrl"} << "End";
    QTest::newRow("gtk prior") << "Prior" << QStringList{} << "PgUp";
    QTest::newRow("gtk digit") << "<Primary>1" << QStringList{"Ctrl"} << "1";
    QTest::newRow("gtk F35") << "F35" << QStringList{} << "F35";
    QTest::newRow("gtk ctrl alias") << "<Ctrl><Shft>z" << QStringList{"Ctrl", "Shift"} << "Z";
    QTest::newRow("gtk unknown modifier") << "<Bogus>a" << QStringList{} << "";
    QTest::newRow("gtk unterminated") << "<Primary" << QStringList{} << "";
    QTest::newRow("gtk no key") << "<Primary>" << QStringList{} << "";
    QTest::newRow("gtk unknown key") << "<Primary>XF86AudioPlay" << QStringList{} << "";
    // Qt portable text
    QTest::newRow("qt ctrl shift s") << "Ctrl+Shift+S" << QStringList{"Ctrl", "Shift"} << "S";
    QTest::newRow("qt F1") << "F1" << QStringList{} << "F1";
    QTest::newRow("qt alt left") << "Alt+Left" << QStringList{"Alt"} << "\u2190";
    QTest::newRow("qt meta") << "Meta+E" << QStringList{"Super"} << "E";
    QTest::newRow("qt list first counts") << "Ctrl+Z, Ctrl+Y" << QStringList{"Ctrl"} << "Z";
    QTest::newRow("qt chord first counts") << "Ctrl+K, Ctrl+C" << QStringList{"Ctrl"} << "K";
    QTest::newRow("qt plus key") << "Ctrl++" << QStringList{"Ctrl"} << "+";
    QTest::newRow("qt comma key") << "Ctrl+," << QStringList{"Ctrl"} << ",";
    QTest::newRow("qt comma key in list") << "Ctrl+,, Ctrl+P" << QStringList{"Ctrl"} << ",";
    QTest::newRow("qt del") << "Del" << QStringList{} << "Del";
    QTest::newRow("qt pgdown") << "Shift+PgDown" << QStringList{"Shift"} << "PgDn";
    QTest::newRow("qt esc") << "Esc" << QStringList{} << "Esc";
    QTest::newRow("qt return") << "Return" << QStringList{} << "Enter";
    QTest::newRow("qt keypad digit") << "Num+5" << QStringList{} << "Num 5";
    QTest::newRow("qt keypad minus") << "Ctrl+Num+-" << QStringList{"Ctrl"} << "Num \u2212";
    QTest::newRow("qt keypad enter") << "Num+Enter" << QStringList{} << "Num Enter";
    QTest::newRow("qt lower letter") << "Ctrl+q" << QStringList{"Ctrl"} << "Q";
    QTest::newRow("qt space") << "Ctrl+Space" << QStringList{"Ctrl"} << "Space";
    QTest::newRow("qt backspace") << "Alt+Backspace" << QStringList{"Alt"} << "Backspace";
    QTest::newRow("qt non-ascii") << "Ctrl+é" << QStringList{"Ctrl"} << "É";
    QTest::newRow("empty") << "" << QStringList{} << "";
    QTest::newRow("spaces") << "   " << QStringList{} << "";
    QTest::newRow("qt unknown name") << "Ctrl+LaunchMail" << QStringList{} << "";
    QTest::newRow("qt modifier only") << "Ctrl+" << QStringList{} << "";
}

void TestShortcutDisplay::fromAccelerator()
{
    QFETCH(QString, text);
    QFETCH(QStringList, modifiers);
    QFETCH(QString, key);
    const ShortcutKeys keys = ShortcutDisplay::fromAccelerator(text);
    if (key.isEmpty()) {
        QCOMPARE(keys, ShortcutKeys::none);
        return;
    }
    QCOMPARE(keys.key, key);
    QCOMPARE(keys.modifiers, modifiers);
}

void TestShortcutDisplay::qtMnemonics()
{
    QVERIFY(isQtMnemonic(ShortcutDisplay::fromAccelerator("Alt+F"), "&File"));
    QVERIFY(isQtMnemonic(ShortcutDisplay::fromAccelerator("Alt+o"), "Open"));
    QVERIFY(!isQtMnemonic(ShortcutDisplay::fromAccelerator("Alt+X"), "Open"));
    QVERIFY(!isQtMnemonic(ShortcutDisplay::fromAccelerator("Ctrl+O"), "Open"));
    QVERIFY(!isQtMnemonic(ShortcutDisplay::fromAccelerator("Alt+Left"), "Left"));
}

void TestShortcutDisplay::arbitraryTextNeverCrashes()
{
    QRandomGenerator random(41);
    const QStringList pieces{"<",    ">",   "Primary", "Ctrl+", "+",      ",",
                             "Num+", "KP_", "Shift",   " ",     "\u0301", "\xF0\x9F\x98\x80",
                             "F",    "9",   "\t",      "<<",    ">>",     "Meta+",
                             "\x00", "é"};
    for (int round = 0; round < 5000; ++round) {
        QString text;
        for (int i = 0, n = random.bounded(8); i < n; ++i)
            text += random.bounded(4) ? pieces[random.bounded(pieces.size())]
                                      : QString(QChar(char16_t(random.bounded(0x10000))));
        const ShortcutKeys keys = ShortcutDisplay::fromAccelerator(text);
        QVERIFY(!keys.key.isEmpty() || keys.modifiers.isEmpty()); // no modifiers without a key
        const auto l = label(text);
        QVERIFY(!l || !l->isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestShortcutDisplay)
#include "tst_shortcutdisplay.moc"
