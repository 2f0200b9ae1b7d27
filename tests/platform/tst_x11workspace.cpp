// The workspace service on a real X server with openbox (session tier): the frontmost
// application and the activations of two real applications, and of this process's own window.

#include "SessionTools.h"
#include "platform/linux/X11Compositing.h"
#include "platform/linux/X11Workspace.h"

#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>
#include <X11/Xlib.h>

using namespace corvane;
using corvane::test::xdotool;

class TestX11Workspace : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void activationsInOrder();
    void ownWindowIsNotAnotherApplication();
    void compositorIsTheCmSelectionOwner();
    void blurBehindHintOnTheWindow();

private:
    qint64 startFixture(const QString& program);
    test::Programs m_programs;
    qint64 m_gtk = 0, m_qt = 0;
};

qint64 TestX11Workspace::startFixture(const QString& program)
{
    return m_programs.startWithWindow(program, {}, QStringLiteral("fixture"));
}

void TestX11Workspace::initTestCase()
{
    QVERIFY2(qEnvironmentVariableIsSet("CORVANE_SESSION"), "run under tools/test-session.sh");
    m_gtk = startFixture(QStringLiteral(FIXTURE_GTK));
    m_qt = startFixture(QStringLiteral(FIXTURE_QT));
}

void TestX11Workspace::cleanupTestCase()
{
    m_programs.stopAll();
}

void TestX11Workspace::activationsInOrder()
{
    X11Workspace workspace;
    QVERIFY(workspace.isAvailable());
    QSignalSpy spy(&workspace, &X11Workspace::otherApplicationActivated);
    const auto activate = [](qint64 pid) {
        const QString window = xdotool({"search", "--all", "--onlyvisible", "--pid",
                                        QString::number(pid), "--name", "fixture"},
                                       false)
                                   .split('\n')
                                   .last();
        xdotool({"windowactivate", "--sync", window});
    };
    // Let the fixtures' own start-up activations settle first: a window that maps late takes
    // the focus once more.
    activate(m_qt);
    QTest::qWait(1000);
    spy.clear();
    activate(m_gtk);
    QTRY_COMPARE(spy.size(), 1);
    activate(m_qt);
    QTRY_COMPARE(spy.size(), 2);
    activate(m_gtk);
    QTRY_COMPARE(spy.size(), 3);
    const auto app = [&spy](int i) { return spy.at(i).at(0).value<RunningApp>(); };
    QCOMPARE(app(0).pid, m_gtk);
    QCOMPARE(app(1).pid, m_qt);
    QCOMPARE(app(2).pid, m_gtk);
    QCOMPARE(app(1).appId, QStringLiteral("corvane-fixture-qt"));
    QVERIFY(app(0).appId.has_value());
    QCOMPARE(workspace.frontmostApplication()->pid, m_gtk);
    // Re-activating the same application reports nothing new.
    activate(m_gtk);
    QTest::qWait(300);
    QCOMPARE(spy.size(), 3);
}

void TestX11Workspace::ownWindowIsNotAnotherApplication()
{
    X11Workspace workspace;
    QSignalSpy others(&workspace, &X11Workspace::otherApplicationActivated);
    QSignalSpy all(&workspace, &X11Workspace::applicationActivated);
    QWindow own;
    own.setTitle(QStringLiteral("own window"));
    own.setGeometry(50, 50, 200, 150);
    own.show();
    QVERIFY(QTest::qWaitForWindowExposed(&own));
    xdotool({"windowactivate", "--sync", QString::number(own.winId())});
    QTRY_COMPARE(all.size(), 1);
    QCOMPARE(all.at(0).at(0).value<RunningApp>().pid, X11Workspace::thisProcessId());
    QCOMPARE(others.size(), 0);
    QCOMPARE(workspace.frontmostApplication()->pid, QCoreApplication::applicationPid());
}

void TestX11Workspace::compositorIsTheCmSelectionOwner()
{
    // Xvfb and openbox composite nothing.
    QVERIFY(!X11Compositing::isActive());
    // A compositing manager announces itself by owning _NET_WM_CM_S0; here the test does, on an
    // X connection of its own.
    Display* x = XOpenDisplay(nullptr);
    QVERIFY(x);
    const Window owner = XCreateSimpleWindow(x, DefaultRootWindow(x), 0, 0, 1, 1, 0, 0, 0);
    const Atom selection = XInternAtom(x, "_NET_WM_CM_S0", False);
    XSetSelectionOwner(x, selection, owner, CurrentTime);
    XSync(x, False);
    QVERIFY(X11Compositing::isActive());
    XSetSelectionOwner(x, selection, None, CurrentTime);
    XSync(x, False);
    QVERIFY(!X11Compositing::isActive());
    XCloseDisplay(x);
}

void TestX11Workspace::blurBehindHintOnTheWindow()
{
    QWindow window;
    window.create();
    X11Compositing::requestBlurBehind(window);
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window.winId()),
                                          QStringLiteral("_KDE_NET_WM_BLUR_BEHIND_REGION")});
    QVERIFY(xprop.waitForFinished(5000));
    QCOMPARE(QString::fromUtf8(xprop.readAllStandardOutput()).trimmed(),
             QStringLiteral("_KDE_NET_WM_BLUR_BEHIND_REGION(CARDINAL) ="));
}

QTEST_MAIN(TestX11Workspace)
#include "tst_x11workspace.moc"
