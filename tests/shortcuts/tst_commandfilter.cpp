// The command filter: its edge cases, the shared query normalisation, and CommandFilter against the
// plain reference implementation on random catalogs and queries.

#include "CatalogGenerator.h"
#include "ReferenceCommandFilter.h"
#include "shortcuts/CommandFilter.h"
#include "shortcuts/TextFolding.h"

#include <QTest>

using namespace corvane;

namespace {
MenuCommand cmd(const QStringList& titles, bool enabled = true)
{
    MenuCommand c{{}, ShortcutKeys::none, enabled, false};
    for (const QString& t : titles)
        c.path.append(PathStep{t, 0});
    return c;
}
std::optional<int> scoreOf(const MenuCommand& c, const QString& query)
{
    return CommandFilter::score(c, TextFolding::fold(query));
}
QStringList leaves(const QList<MenuCommand>& commands)
{
    QStringList out;
    for (const MenuCommand& c : commands)
        out << c.id();
    return out;
}
} // namespace

class TestCommandFilter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void folding_data();
    void folding();
    void searchActive();
    void graphemeLengths();
    void spacesOnlyQueryKeepsEverything();
    void prefixScore();
    void wordStartScore();
    void subsequenceScore();
    void pathMatchHalves();
    void foldedMatchAndNoBrevityForLongTitles();
    void favoriteAndDisabledAdjustments();
    void disabledLowPathMatchListedLast();
    void equalScoresKeepInputOrder();
    void longQueryMatchesOnlyPath();
    void subsequenceFloorAndGreedySpan();
    void substringAndCanonicalEquivalence();
    void clusterBoundariesRespected();
    void sameOrderAsReferenceOnRandomCatalogs();
    void indexAgreesWithRank();
};

void TestCommandFilter::folding_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("folded");
    QTest::newRow("case") << "Copy"
                          << "copy";
    QTest::newRow("diacritics precomposed") << "Éditer"
                                            << "editer";
    QTest::newRow("diacritics decomposed") << "E\u0301diter"
                                           << "editer";
    QTest::newRow("umlaut") << "Öffnen"
                            << "offnen";
    QTest::newRow("trim spaces and tabs") << " \t a b \u00A0\u2003"
                                          << "a b";
    QTest::newRow("newline kept") << "\na\n"
                                  << "\na\n";
    QTest::newRow("sharp s") << "Straße"
                             << "strasse";
    QTest::newRow("greek") << "ΣΊΣΥΦΟΣ"
                           << "σισυφοσ";
    QTest::newRow("cjk unchanged") << "開く"
                                   << "開く";
    QTest::newRow("hangul composed back") << "편집"
                                          << "편집";
}

void TestCommandFilter::folding()
{
    QFETCH(QString, input);
    QFETCH(QString, folded);
    QCOMPARE(TextFolding::fold(input), folded.normalized(QString::NormalizationForm_C));
}

void TestCommandFilter::searchActive()
{
    QVERIFY(!TextFolding::isSearchActive(""));
    QVERIFY(!TextFolding::isSearchActive("   "));
    QVERIFY(!TextFolding::isSearchActive(" \t\u3000"));
    QVERIFY(TextFolding::isSearchActive(" x "));
    QVERIFY(TextFolding::isSearchActive("\n")); // line breaks are not trimmed
}

void TestCommandFilter::graphemeLengths()
{
    QCOMPARE(TextFolding::graphemeCount("Copy"), 4);
    QCOMPARE(TextFolding::graphemeCount("E\u0301diter"), 6);
    QCOMPARE(TextFolding::graphemeCount("👩‍💻 Dev"), 5);
    QCOMPARE(TextFolding::graphemeCount("🇫🇷🇩🇪"), 2);
    QCOMPARE(TextFolding::graphemeCount("\r\n"), 1);
}

void TestCommandFilter::spacesOnlyQueryKeepsEverything()
{
    const QList<MenuCommand> commands{cmd({"File", "Zzz"}), cmd({"Edit", "Copy"}),
                                      cmd({"View", "Qqq"}, false)};
    QCOMPARE(leaves(CommandFilter::rank(commands, "   ", {})), leaves(commands));
    QCOMPARE(leaves(CommandFilter::rank(commands, "", {})), leaves(commands));
}

void TestCommandFilter::prefixScore()
{
    QCOMPARE(scoreOf(cmd({"Edit", "Copy"}), "co"), 1036);
}

void TestCommandFilter::wordStartScore()
{
    QCOMPARE(scoreOf(cmd({"Edit", "Paste and Match Style"}), "ma"), 819);
}

void TestCommandFilter::subsequenceScore()
{
    QCOMPARE(scoreOf(cmd({"Edit", "Copy"}), "cpy"), 326);
}

void TestCommandFilter::pathMatchHalves()
{
    QCOMPARE(scoreOf(cmd({"File", "Save"}), "file"), 500);
}

void TestCommandFilter::foldedMatchAndNoBrevityForLongTitles()
{
    QCOMPARE(scoreOf(cmd({"Edit", "Éditer"}), "É"), scoreOf(cmd({"Edit", "editer"}), "É"));
    QCOMPARE(scoreOf(cmd({"Edit", "Éditer"}), "É"), 1000 + 34);
    const QString long45 = QStringLiteral("Export the current document as a PDF file now");
    QCOMPARE(TextFolding::graphemeCount(long45), 45);
    QCOMPARE(scoreOf(cmd({"File", long45}), "export"), 1000);
}

void TestCommandFilter::favoriteAndDisabledAdjustments()
{
    const MenuCommand disabledFavorite = cmd({"Edit", "Copy"}, false);
    const MenuCommand plain = cmd({"Edit", "Cope"});
    const auto ranked =
        CommandFilter::rank({plain, disabledFavorite}, "co", {disabledFavorite.id()});
    // 1036 + 150 − 200 = 986 < 1036
    QCOMPARE(leaves(ranked), leaves({plain, disabledFavorite}));
    const auto favored =
        CommandFilter::rank({plain, cmd({"Edit", "Copy"})}, "co", {cmd({"Edit", "Copy"}).id()});
    QCOMPARE(favored.first().path.last().title, QStringLiteral("Copy"));
}

void TestCommandFilter::disabledLowPathMatchListedLast()
{
    const MenuCommand low =
        cmd({"Zebra", "Zzz", "Qqq"}, false); // path subsequence, halved, then −200
    const QList<MenuCommand> commands{low, cmd({"Edit", "Zap"}), cmd({"Edit", "Other z"})};
    const auto ranked = CommandFilter::rank(commands, "zq", {});
    QCOMPARE(ranked.size(), 1);
    const auto s = scoreOf(low, "zq");
    QVERIFY(s.has_value());
    QVERIFY(*s - 200 < 0); // negative score, still listed
    const auto ranked2 = CommandFilter::rank({low, cmd({"Edit", "Zq"})}, "zq", {});
    QCOMPARE(ranked2.size(), 2);
    QCOMPARE(ranked2.last().id(), low.id());
}

void TestCommandFilter::equalScoresKeepInputOrder()
{
    const QList<MenuCommand> commands{cmd({"A", "Copy"}), cmd({"B", "Copy"}), cmd({"C", "Copy"})};
    QCOMPARE(leaves(CommandFilter::rank(commands, "copy", {})), leaves(commands));
}

void TestCommandFilter::longQueryMatchesOnlyPath()
{
    const MenuCommand c = cmd({"Format", "Go"});
    QCOMPARE(scoreOf(c, "fmtgo"), (300 - 10 * (9 - 5)) / 2); // "format go": f..o span 9
}

void TestCommandFilter::subsequenceFloorAndGreedySpan()
{
    // "ax" in "a" + 25 letters + "x": span 27, gap 25 → floor 100, plus brevity 40 − 27 = 13.
    const QString title = QStringLiteral("abcdefghijklmnopqrstuvwyzx");
    QCOMPARE(scoreOf(cmd({"M", title}), "ax"), 100 + (40 - 26));
    // Greedy from the first "a": "ab" then "a": in "a_b_ab" the span starts at 0.
    QCOMPARE(scoreOf(cmd({"M", "aqqqbzab"}), "abz"), 300 - 10 * (6 - 3) + 32);
}

void TestCommandFilter::substringAndCanonicalEquivalence()
{
    QCOMPARE(scoreOf(cmd({"M", "Recopy"}), "cop"), 600 + 34);
    QCOMPARE(scoreOf(cmd({"M", "Cafe\u0301 Menu"}), "CAFÉ"), 1000 + 31); // 9 characters
    QCOMPARE(scoreOf(cmd({"M", "Café Menu"}), "cafe\u0301"), 1000 + 31);
}

void TestCommandFilter::clusterBoundariesRespected()
{
    // The query "🇩" (one regional indicator) does not match inside the flag pair "🇫🇷🇩🇪".
    QVERIFY(!scoreOf(cmd({"M", "🇫🇷🇩🇪"}), "🇷🇩").has_value() ||
            *scoreOf(cmd({"M", "🇫🇷🇩🇪"}), "🇷🇩") < 600);
    QCOMPARE(scoreOf(cmd({"M", "🇫🇷🇩🇪"}), "🇩🇪"), 600 + 38);
    // Hangul syllables stay whole clusters.
    QCOMPARE(scoreOf(cmd({"M", "편집 보기"}), "보"), 800 + 35);
}

void TestCommandFilter::sameOrderAsReferenceOnRandomCatalogs()
{
    QRandomGenerator random(1123);
    int compared = 0;
    for (quint32 seed = 1; seed <= 12; ++seed) {
        const MenuCatalog catalog =
            CatalogGenerator::generate(seed, {int(100 + random.bounded(400)), seed % 3 != 0});
        const QList<MenuCommand> commands = CatalogGenerator::allCommands(catalog);
        const CommandFilter::Index index(commands);
        for (int q = 0; q < 40; ++q) {
            const QString query = CatalogGenerator::randomQuery(random, commands);
            QSet<QString> favorites;
            for (int f = 0; f < 5; ++f) {
                const QString id = commands[random.bounded(commands.size())].id();
                favorites.insert(f % 2 ? id : id.normalized(QString::NormalizationForm_D));
            }
            const QStringList expected =
                leaves(ReferenceCommandFilter::rank(commands, query, favorites));
            QCOMPARE(leaves(CommandFilter::rank(commands, query, favorites)), expected);
            QCOMPARE(leaves(index.rank(query, favorites)), expected);
            ++compared;
        }
    }
    QCOMPARE(compared, 12 * 40);
}

void TestCommandFilter::indexAgreesWithRank()
{
    const QList<MenuCommand> commands =
        CatalogGenerator::allCommands(CatalogGenerator::generate(3, {300, true}));
    const CommandFilter::Index index(commands);
    for (const QString& q : QStringList{"co", "É", "file", "📄", "ss", "x\u0301", "open doc"}) {
        const auto positions = index.rankPositions(q, {});
        const auto ranked = CommandFilter::rank(commands, q, {});
        QCOMPARE(positions.size(), ranked.size());
        for (qsizetype i = 0; i < positions.size(); ++i)
            QCOMPARE(commands[positions[i]].id(), ranked[i].id());
        for (const MenuCommand& c : ranked)
            QCOMPARE(scoreOf(c, q), ReferenceCommandFilter::score(c, TextFolding::fold(q)));
    }
}

QTEST_GUILESS_MAIN(TestCommandFilter)
#include "tst_commandfilter.moc"
