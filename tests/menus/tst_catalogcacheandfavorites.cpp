// The catalog cache (under its lock, from two threads) and the favourites store.

#include "menus/FavoritesStore.h"
#include "menus/MenuCatalogCache.h"
#include "platform/UserDefaults.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace corvane;

namespace {
MenuCatalog catalog(const QString& bundle, const QStringList& sections)
{
    MenuCatalog c{bundle, bundle, {}};
    for (const QString& s : sections)
        c.sections.append(
            MenuSection{s, {MenuCommand{{{s, 0}, {"Item", 0}}, ShortcutKeys::none, true, false}}});
    return c;
}
} // namespace

class TestCatalogCacheAndFavorites : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_defaults =
            std::make_unique<UserDefaults>(m_dir.filePath(QStringLiteral("%1.conf").arg(++m_n)));
    }
    void toggleTwiceRemovesTheEntry();
    void toggleOrder();
    void duplicateStoredIdLosesFirstCopyOnly();
    void wronglyTypedEntryReadsEmpty();
    void storeReplacesWholeCatalog();
    void unknownBundleYieldsNothing();
    void cacheIsSafeAcrossThreads();

private:
    QTemporaryDir m_dir;
    int m_n = 0;
    std::unique_ptr<UserDefaults> m_defaults;
};

void TestCatalogCacheAndFavorites::toggleTwiceRemovesTheEntry()
{
    FavoritesStore store(*m_defaults);
    QVERIFY(store.toggle("a", "app"));
    QVERIFY(m_defaults->contains("favorites.app"));
    QVERIFY(!store.toggle("a", "app"));
    QVERIFY(!m_defaults->contains("favorites.app")); // no entry at all, not an empty array
    QVERIFY(store.ids("app").isEmpty());
    QFile f(m_defaults->filePath());
    QVERIFY(f.open(QIODevice::ReadOnly));
    QVERIFY(!f.readAll().contains("favorites.app"));
}

void TestCatalogCacheAndFavorites::toggleOrder()
{
    FavoritesStore store(*m_defaults);
    store.toggle("a", "app");
    store.toggle("b", "app");
    store.toggle("c", "app");
    store.toggle("b", "app");
    QCOMPARE(store.ids("app"), (QStringList{"a", "c"}));
    QVERIFY(store.toggle("b", "app"));
    QCOMPARE(store.ids("app"), (QStringList{"a", "c", "b"}));
    QVERIFY(store.ids("other").isEmpty());
}

void TestCatalogCacheAndFavorites::duplicateStoredIdLosesFirstCopyOnly()
{
    m_defaults->setStringList("favorites.app", {"x", "a", "y", "a"});
    FavoritesStore store(*m_defaults);
    QCOMPARE(store.toggle("a", "app"), false);
    QCOMPARE(store.ids("app"), (QStringList{"x", "y", "a"}));
}

void TestCatalogCacheAndFavorites::wronglyTypedEntryReadsEmpty()
{
    m_defaults->setString("favorites.app", "not a list");
    FavoritesStore store(*m_defaults);
    QVERIFY(store.ids("app").isEmpty());
    QVERIFY(store.toggle("a", "app"));
    QCOMPARE(store.ids("app"), QStringList{"a"});
}

void TestCatalogCacheAndFavorites::storeReplacesWholeCatalog()
{
    MenuCatalogCache cache;
    cache.store(catalog("a", {"File", "Edit", "View"}));
    cache.store(catalog("b", {"Help"}));
    cache.store(catalog("a", {"File"}));
    QCOMPARE(cache.catalog("a")->sections.size(), 1);
    QCOMPARE(cache.catalog("a")->sections[0].title, QStringLiteral("File"));
    QVERIFY(*cache.catalog("b") == catalog("b", {"Help"}));
}

void TestCatalogCacheAndFavorites::unknownBundleYieldsNothing()
{
    MenuCatalogCache cache;
    QVERIFY(!cache.catalog("never").has_value());
}

void TestCatalogCacheAndFavorites::cacheIsSafeAcrossThreads()
{
    MenuCatalogCache cache;
    std::unique_ptr<QThread> writer(QThread::create([&cache] {
        for (int i = 0; i < 2000; ++i)
            cache.store(
                catalog(QStringLiteral("app%1").arg(i % 7), {QStringLiteral("M%1").arg(i)}));
    }));
    writer->start();
    // Every read sees a whole catalog (one section, its own item), never a torn one.
    while (!writer->isFinished()) {
        for (int k = 0; k < 7; ++k) {
            if (const auto c = cache.catalog(QStringLiteral("app%1").arg(k))) {
                QCOMPARE(c->sections.size(), 1);
                QCOMPARE(c->sections[0].commands[0].path[0].title, c->sections[0].title);
            }
        }
    }
    writer->wait();
    QCOMPARE(cache.catalog("app0")->sections[0].title, QStringLiteral("M1995"));
}

QTEST_GUILESS_MAIN(TestCatalogCacheAndFavorites)
#include "tst_catalogcacheandfavorites.moc"
