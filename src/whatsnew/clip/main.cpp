// corvane-clip: plays a What's New clip for Corvane in a process of its own, so that Corvane never
// maps Qt Multimedia, FFmpeg and the libraries they pull in (some 40 MB that would stay resident
// for the rest of the day once a clip had played).
//
//   corvane-clip URL WIDTHxHEIGHT
//
// Plays URL muted, over and over, and writes each frame to standard output: a header of three
// little-endian 32-bit numbers (width, height, times the clip started over) and the pixels (ARGB32
// premultiplied, rows top to bottom), scaled to cover WIDTHxHEIGHT. Ends, cleanly, when its
// standard input closes or ends. The clips compiled into Corvane are compiled in here too, so
// their qrc: addresses play as they are.

#include <QAudioOutput>
#include <QGuiApplication>
#include <QImage>
#include <QMediaPlayer>
#include <QSocketNotifier>
#include <QVideoFrame>
#include <QVideoSink>
#include <QtEndian>
#include <csignal>
#include <cstdio>
#include <unistd.h>

int main(int argc, char* argv[])
{
    // No window: nothing here needs a display. Debian's Qt 6.4 GStreamer backend lacks the
    // elements to play the clips; the FFmpeg one plays them.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    std::signal(SIGPIPE, SIG_IGN); // a write to a Corvane that went fails, and we end cleanly
    QGuiApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const QStringList size = arguments.value(2).split(u'x');
    const QSize target(size.value(0).toInt(), size.value(1).toInt());
    if (arguments.size() != 3 || target.isEmpty()) {
        std::fprintf(stderr, "usage: corvane-clip URL WIDTHxHEIGHT\n");
        return 2;
    }

    // Corvane closes our standard input to stop us (or ends, which closes it too).
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&input] {
        char byte;
        if (::read(STDIN_FILENO, &byte, 1) <= 0) {
            input.setEnabled(false);
            QCoreApplication::quit();
        }
    });

    QMediaPlayer player;
    QAudioOutput audio;
    audio.setMuted(true);
    player.setAudioOutput(&audio);
    QVideoSink sink;
    player.setVideoSink(&sink);
    quint32 restarts = 0;
    QObject::connect(&sink, &QVideoSink::videoFrameChanged, [&](const QVideoFrame& frame) {
        const QImage image =
            frame.toImage()
                .scaled(target, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation)
                .convertToFormat(QImage::Format_ARGB32_Premultiplied);
        if (image.isNull())
            return;
        quint32 header[3];
        qToLittleEndian<quint32>(quint32(image.width()), &header[0]);
        qToLittleEndian<quint32>(quint32(image.height()), &header[1]);
        qToLittleEndian<quint32>(restarts, &header[2]);
        const qsizetype row = qsizetype(image.width()) * 4;
        bool written = std::fwrite(header, sizeof header, 1, stdout) == 1;
        for (int y = 0; written && y < image.height(); ++y)
            written = std::fwrite(image.constScanLine(y), size_t(row), 1, stdout) == 1;
        if (!written || std::fflush(stdout) != 0)
            QCoreApplication::quit(); // nobody reads any more
    });
    // Over and over: Qt 6.4's FFmpeg backend stops at the end whatever the loop count says.
    QObject::connect(&player, &QMediaPlayer::mediaStatusChanged,
                     [&](QMediaPlayer::MediaStatus status) {
                         if (status != QMediaPlayer::EndOfMedia)
                             return;
                         ++restarts;
                         player.setPosition(0);
                         player.play();
                     });
    QObject::connect(&player, &QMediaPlayer::errorOccurred,
                     [](QMediaPlayer::Error, const QString& message) {
                         std::fprintf(stderr, "corvane-clip: %s\n", qPrintable(message));
                         QCoreApplication::exit(1);
                     });
    player.setLoops(QMediaPlayer::Infinite);
    player.setSource(QUrl(arguments.at(1)));
    player.play();
    return QCoreApplication::exec();
}
