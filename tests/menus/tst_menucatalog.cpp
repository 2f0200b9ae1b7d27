// Identity, titles, breadcrumb and equality of the menu records; the JSON form.

#include "menus/MenuCatalog.h"
#include "menus/MenuCatalogJson.h"

#include <QRandomGenerator>
#include <QTest>

using namespace corvane;

namespace {
MenuCommand command(QList<PathStep> path)
{
    return MenuCommand{std::move(path), ShortcutKeys::none, true, false};
}
const QString sep = QString(QChar(0x1F));
} // namespace

class TestMenuCatalog : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void idWithoutOccurrences();
    void idOccurrencesInDecimal();
    void specialCharactersAreNotEscaped();
    void shortcutNoneEquality();
    void breadcrumbs();
    void titles();
    void equalityIsMemberwiseAndCanonical();
    void jsonRoundTrip();
    void jsonErrorsAreClear_data();
    void jsonErrorsAreClear();
    void jsonArbitraryBytes();
};

void TestMenuCatalog::idWithoutOccurrences()
{
    const MenuCommand c = command({{"File", 0}, {"Share", 0}, {"Export…", 0}});
    QCOMPARE(c.id(), "File" + sep + "Share" + sep + "Export…");
    QVERIFY(!c.id().contains('#'));
    QCOMPARE(command({}).id(), QString());
}

void TestMenuCatalog::idOccurrencesInDecimal()
{
    QCOMPARE(command({{"File", 0}, {"Share", 0}, {"Export…", 1}}).id(),
             "File" + sep + "Share" + sep + "Export…#1");
    QCOMPARE(command({{"Edit", 2}, {"Item", 12}}).id(), "Edit#2" + sep + "Item#12");
}

void TestMenuCatalog::specialCharactersAreNotEscaped()
{
    const MenuCommand c = command({{"A#1", 0}, {"B ▸ C", 0}, {"D", 0}});
    QCOMPARE(c.id(), "A#1" + sep + "B ▸ C" + sep + "D");
    QCOMPARE(c.breadcrumb(), QStringLiteral("B ▸ C"));
}

void TestMenuCatalog::shortcutNoneEquality()
{
    QVERIFY(ShortcutKeys::none == (ShortcutKeys{{}, QString()}));
    QVERIFY(ShortcutKeys::none == (ShortcutKeys{QStringList(), ""}));
    QVERIFY(!(ShortcutKeys::none == (ShortcutKeys{{"Ctrl"}, ""})));
}

void TestMenuCatalog::breadcrumbs()
{
    QCOMPARE(command({{"File", 0}, {"Open Recent", 0}, {"notes.txt", 0}}).breadcrumb(),
             QStringLiteral("Open Recent"));
    QCOMPARE(command({{"View", 0}, {"Sort By", 0}, {"Kind", 0}, {"Ascending", 0}}).breadcrumb(),
             QStringLiteral("Sort By ▸ Kind"));
    QCOMPARE(command({{"File", 0}, {"Save", 0}}).breadcrumb(), QString());
    QCOMPARE(command({{"File", 0}}).breadcrumb(), QString());
    QCOMPARE(command({}).breadcrumb(), QString());
}

void TestMenuCatalog::titles()
{
    QCOMPARE(command({{"File", 0}, {"Open", 3}}).titles(), (QStringList{"File", "Open"}));
}

void TestMenuCatalog::equalityIsMemberwiseAndCanonical()
{
    const MenuCommand a = command({{"File", 0}, {"Café", 0}});
    MenuCommand b = command({{"File", 0}, {"Cafe\u0301", 0}});
    QVERIFY(a == b); // canonically equivalent titles
    b.enabled = false;
    QVERIFY(!(a == b));
    MenuCommand c = a;
    c.isChecked = true;
    QVERIFY(!(a == c));
    MenuCommand d = command({{"File", 0}, {"Café", 1}});
    QVERIFY(!(a == d));
    MenuCatalog x{"app", "App", {{"File", {a}}}};
    MenuCatalog y{"app", "App", {{"File", {a}}}};
    QVERIFY(x == y);
    y.sections[0].commands.append(d);
    QVERIFY(!(x == y));
}

void TestMenuCatalog::jsonRoundTrip()
{
    MenuCatalog catalog{"org.geany.Geany", "Geany", {}};
    catalog.sections.append(MenuSection{
        "File",
        {MenuCommand{{{"File", 0}, {"Open…", 0}}, ShortcutKeys{{"Ctrl"}, "O"}, true, false},
         MenuCommand{
             {{"File", 0}, {"Recent", 0}, {"a#b ▸ c", 1}}, ShortcutKeys::none, false, true}}});
    const QByteArray json = MenuCatalogJson::write(catalog);
    QVERIFY(json.contains("\"bundleID\""));
    QVERIFY(json.contains("\"occurrence\": 1"));
    QVERIFY(json.contains("\"modifiers\""));
    const auto read = MenuCatalogJson::read(json);
    QVERIFY2(read.catalog.has_value(), qPrintable(read.error));
    QVERIFY(*read.catalog == catalog);
}

void TestMenuCatalog::jsonErrorsAreClear_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    QTest::newRow("not json") << QByteArray("{nope") << "not valid JSON";
    QTest::newRow("array") << QByteArray("[]") << "the top level: expected an object";
    QTest::newRow("no bundle") << QByteArray(R"({"appName":"A","sections":[]})")
                               << "bundleID: expected a string";
    QTest::newRow("sections") << QByteArray(R"({"bundleID":"a","appName":"A","sections":{}})")
                              << "sections: expected an array";
    QTest::newRow("empty path")
        << QByteArray(
               R"({"bundleID":"a","appName":"A","sections":[{"title":"F","commands":[{"path":[]}]}]})")
        << "sections[0].commands[0].path: expected a non-empty array";
    QTest::newRow("occurrence")
        << QByteArray(
               R"({"bundleID":"a","appName":"A","sections":[{"title":"F","commands":[{"path":[{"title":"F","occurrence":-1}]}]}]})")
        << "sections[0].commands[0].path[0].occurrence";
    QTest::newRow("enabled")
        << QByteArray(
               R"({"bundleID":"a","appName":"A","sections":[{"title":"F","commands":[{"path":[{"title":"F"}],"enabled":"yes"}]}]})")
        << "sections[0].commands[0].enabled: expected true or false";
    QTest::newRow("modifiers")
        << QByteArray(
               R"({"bundleID":"a","appName":"A","sections":[{"title":"F","commands":[{"path":[{"title":"F"}],"shortcut":{"key":"S","modifiers":[1]}}]}]})")
        << "sections[0].commands[0].shortcut.modifiers: expected an array of strings";
}

void TestMenuCatalog::jsonErrorsAreClear()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    const auto read = MenuCatalogJson::read(json);
    QVERIFY(!read.catalog);
    QVERIFY2(read.error.contains(error), qPrintable(read.error));
    QVERIFY(!read.error.contains('\n'));
}

void TestMenuCatalog::jsonArbitraryBytes()
{
    const QByteArray valid = MenuCatalogJson::write(MenuCatalog{
        "a",
        "A",
        {{"File",
          {MenuCommand{{{"File", 0}, {"Open", 0}}, ShortcutKeys{{"Ctrl"}, "O"}, true, false}}}}});
    QRandomGenerator random(7);
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = valid;
        for (int i = 0, n = 1 + random.bounded(6); i < n; ++i) {
            const int at = random.bounded(bytes.size());
            switch (random.bounded(3)) {
            case 0:
                bytes[at] = char(random.bounded(256));
                break;
            case 1:
                bytes.remove(at, 1 + random.bounded(8));
                break;
            default:
                bytes.insert(at, "[{\"\":1e999}]");
                break;
            }
        }
        const auto read = MenuCatalogJson::read(bytes);
        // Either a catalog or a one-line reason, never both and never neither.
        QVERIFY(read.catalog.has_value() == read.error.isEmpty());
        QVERIFY(!read.error.contains('\n'));
    }
}

QTEST_GUILESS_MAIN(TestMenuCatalog)
#include "tst_menucatalog.moc"
