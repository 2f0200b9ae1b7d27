// The panel's placement rule: which screen holds the panel and its frame there.

#include "overlay/PanelPlacement.h"

#include <QTest>

using namespace corvane;

using Screens = QList<ScreenFrames>;
Q_DECLARE_METATYPE(Screens)
Q_DECLARE_METATYPE(std::optional<QRectF>)

class TestPanelPlacement : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void frame_data();
    void frame();
};

void TestPanelPlacement::frame_data()
{
    QTest::addColumn<Screens>("screens");
    QTest::addColumn<int>("mainScreen");
    QTest::addColumn<QPointF>("pointer");
    QTest::addColumn<std::optional<QRectF>>("expected");

    // A 1440 × 900 screen whose visible frame (without a 25-point top panel) is 1440 × 875.
    const ScreenFrames laptop{QRectF(0, 0, 1440, 900), QRectF(0, 25, 1440, 875)};
    const ScreenFrames small{QRectF(1440, 0, 1000, 700), QRectF(1440, 0, 1000, 700)};
    const ScreenFrames tiny{QRectF(0, 0, 400, 300), QRectF(0, 0, 400, 300)};

    QTest::newRow("1440 × 875 visible: 940 × 640, centred")
        << Screens{laptop} << 0 << QPointF(10, 10)
        << std::optional(QRectF(250, 25 + (875 - 640) / 2.0, 940, 640));
    QTest::newRow("1000 × 700: 740 × 546")
        << Screens{small} << 0 << QPointF(1500, 10) << std::optional(QRectF(1570, 77, 740, 546));
    QTest::newRow("pointer on the secondary screen: centred there")
        << Screens{laptop, small} << 0 << QPointF(2000, 300)
        << std::optional(QRectF(1570, 77, 740, 546));
    QTest::newRow("right edge of the left screen belongs to the right one")
        << Screens{laptop, small} << 0 << QPointF(1440, 300)
        << std::optional(QRectF(1570, 77, 740, 546));
    QTest::newRow("last column of the left screen is still the left one")
        << Screens{laptop, small} << 1 << QPointF(1439.5, 300)
        << std::optional(QRectF(250, 142.5, 940, 640));
    QTest::newRow("pointer on no screen: the main screen")
        << Screens{laptop, small} << 1 << QPointF(5000, 5000)
        << std::optional(QRectF(1570, 77, 740, 546));
    QTest::newRow("pointer on no screen and no main screen: the first")
        << Screens{laptop, small} << -1 << QPointF(-10, -10)
        << std::optional(QRectF(250, 142.5, 940, 640));
    QTest::newRow("no lower bound")
        << Screens{tiny} << 0 << QPointF(1, 1) << std::optional(QRectF(52, 33, 296, 234));
    QTest::newRow("no screens: no frame")
        << Screens{} << -1 << QPointF(0, 0) << std::optional<QRectF>();
}

void TestPanelPlacement::frame()
{
    QFETCH(Screens, screens);
    QFETCH(int, mainScreen);
    QFETCH(QPointF, pointer);
    QFETCH(std::optional<QRectF>, expected);
    QCOMPARE(panelFrame(screens, mainScreen, pointer), expected);
}

QTEST_GUILESS_MAIN(TestPanelPlacement)
#include "tst_panelplacement.moc"
