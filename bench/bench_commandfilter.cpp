// rank() over a 2500-command catalog with realistic titles, for queries of 1, 2 and 5
// characters, beside the plain reference implementation measured in the same run.
// Prints `bench <name> <value> <unit>` lines; exits non-zero if the results ever differ.

#include "CatalogGenerator.h"
#include "ReferenceCommandFilter.h"
#include "shortcuts/CommandFilter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>

using namespace corvane;

namespace {

struct Stats {
    double median;
    double p99;
};

Stats stats(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    const auto at = [&](double q) {
        return samples[std::min(samples.size() - 1, size_t(q * double(samples.size())))];
    };
    return {at(0.5), at(0.99)};
}

void print(const char* name, double value, const char* unit)
{
    std::printf("bench %s %.1f %s\n", name, value, unit);
}

QStringList ids(const QList<MenuCommand>& commands)
{
    QStringList out;
    for (const MenuCommand& c : commands)
        out << c.id();
    return out;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const MenuCatalog catalog = CatalogGenerator::generate(2500, {2500, false});
    const QList<MenuCommand> commands = CatalogGenerator::allCommands(catalog);
    const QSet<QString> favorites{commands[10].id(), commands[200].id(), commands[1234].id()};

    QElapsedTimer timer;
    timer.start();
    const CommandFilter::Index index(commands);
    print("rank_index_build_ms", double(timer.nsecsElapsed()) / 1e6, "ms");

    const QList<std::pair<int, QStringList>> queries{
        {1, {"s", "o", "c", "e", "p", "x", "t", "m"}},
        {2, {"co", "sa", "op", "fi", "ex", "to", "re", "wi"}},
        {5, {"expor", "selec", "close", "find ", "toggl", "dupli", "paste", "bookm"}},
    };
    bool identical = true;
    for (const auto& [length, texts] : queries) {
        // rank: what a keystroke costs in the overlay, which reads results by position in the
        // indexed list; rank_copying: the same ranking returned as copied MenuCommand values.
        std::vector<double> fast, copying, reference;
        const int samples = 200;
        for (int i = 0; i < samples; ++i) {
            const QString& q = texts[i % texts.size()];
            timer.restart();
            const QList<qsizetype> positions = index.rankPositions(q, favorites);
            fast.push_back(double(timer.nsecsElapsed()) / 1e3);
            timer.restart();
            const QList<MenuCommand> a = index.rank(q, favorites);
            copying.push_back(double(timer.nsecsElapsed()) / 1e3);
            if (i < 40) { // the reference is slow; 40 samples are plenty for its median and p99
                timer.restart();
                const QList<MenuCommand> b = ReferenceCommandFilter::rank(commands, q, favorites);
                reference.push_back(double(timer.nsecsElapsed()) / 1e3);
                QStringList fromPositions;
                for (qsizetype p : positions)
                    fromPositions << commands[p].id();
                identical = identical && ids(a) == ids(b) && fromPositions == ids(b);
            }
        }
        const Stats f = stats(fast);
        const Stats c = stats(copying);
        const Stats r = stats(reference);
        const QByteArray n = QByteArray::number(length);
        print(("rank_q" + n + "_median").constData(), f.median, "us");
        print(("rank_q" + n + "_p99").constData(), f.p99, "us");
        print(("rank_copying_q" + n + "_median").constData(), c.median, "us");
        print(("rank_copying_q" + n + "_p99").constData(), c.p99, "us");
        print(("reference_q" + n + "_median").constData(), r.median, "us");
        print(("reference_q" + n + "_p99").constData(), r.p99, "us");
        print(("rank_q" + n + "_speedup_median").constData(), r.median / f.median, "x");
    }
    // With a full history (200 commands run before, the most one application keeps), beside the
    // same ranking without it.
    CommandFilter::HistoryWeights history;
    for (int i = 0; i < 200; ++i)
        history.insert(commands[(i * 97) % commands.size()].id(), 1.0 + i % 7);
    for (const auto& [length, texts] : queries) {
        std::vector<double> with, without;
        for (int i = 0; i < 200; ++i) {
            const QString& q = texts[i % texts.size()];
            timer.restart();
            index.rankPositions(q, favorites, history);
            with.push_back(double(timer.nsecsElapsed()) / 1e3);
            timer.restart();
            index.rankPositions(q, favorites);
            without.push_back(double(timer.nsecsElapsed()) / 1e3);
        }
        const QByteArray n = QByteArray::number(length);
        print(("rank_history_q" + n + "_p99").constData(), stats(with).p99, "us");
        print(("rank_history_q" + n + "_cost_p99").constData(),
              stats(with).p99 / stats(without).p99, "x");
    }
    std::printf("bench rank_identical_to_reference %d bool\n", identical ? 1 : 0);
    return identical ? 0 : 1;
}
