#include "LoopingPlayer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPainter>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QtEndian>

namespace corvane {

namespace {
constexpr qsizetype headerSize = 12;  // width, height, restarts: little-endian 32-bit each
constexpr quint32 largestSide = 4096; // anything larger is not a frame of ours
} // namespace

LoopingPlayer::LoopingPlayer(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    m_decoder.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_decoder, &QProcess::readyReadStandardOutput, this, &LoopingPlayer::readFrames);
    connect(&m_decoder, &QProcess::stateChanged, this, &LoopingPlayer::playingChanged);
    connect(&m_decoder, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            qWarning("What's New: the clip player %s does not start; the clip stays blank",
                     qPrintable(m_decoder.program()));
    });
}

LoopingPlayer::~LoopingPlayer()
{
    pause();
}

QString LoopingPlayer::decoderProgram()
{
    const QString here = QCoreApplication::applicationDirPath();
    for (const QString& candidate : {here + QStringLiteral("/corvane-clip"),
                                     here + QStringLiteral("/../libexec/corvane/corvane-clip")})
        if (QFileInfo(candidate).isExecutable())
            return candidate;
    return QStandardPaths::findExecutable(QStringLiteral("corvane-clip"));
}

void LoopingPlayer::setSource(const QUrl& source)
{
    if (source == m_source)
        return;
    m_source = source;
    pause();
    m_stopped = false;
    startWhenSized();
    Q_EMIT sourceChanged();
}

void LoopingPlayer::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    startWhenSized();
}

void LoopingPlayer::startWhenSized()
{
    if (m_source.isEmpty() || width() <= 0 || height() <= 0 || playing() || m_stopped)
        return;
    // Frames at the size shown, for the screen's pixel density: nothing larger crosses the pipe.
    const qreal ratio = window() ? window()->devicePixelRatio() : 1.0;
    const QSize size = (QSizeF(width(), height()) * ratio).toSize();
    m_pending.clear();
    m_decoder.start(
        decoderProgram(),
        {m_source.toString(), QStringLiteral("%1x%2").arg(size.width()).arg(size.height())});
}

void LoopingPlayer::pause()
{
    m_stopped = !m_source.isEmpty(); // until the next source
    if (m_decoder.state() == QProcess::NotRunning)
        return;
    // Its standard input closed, the helper ends by itself (its temporary copy of the clip
    // goes with it); one that does not is stopped.
    m_decoder.closeWriteChannel();
    if (!m_decoder.waitForFinished(1000))
        m_decoder.kill();
    m_decoder.waitForFinished(1000);
}

void LoopingPlayer::readFrames()
{
    m_pending += m_decoder.readAllStandardOutput();
    // Only the newest complete frame is drawn; older ones waiting in the pipe are skipped.
    while (m_pending.size() >= headerSize) {
        const auto* header = reinterpret_cast<const uchar*>(m_pending.constData());
        const quint32 width = qFromLittleEndian<quint32>(header);
        const quint32 height = qFromLittleEndian<quint32>(header + 4);
        if (width == 0 || height == 0 || width > largestSide || height > largestSide) {
            qWarning("What's New: the clip player sent a %ux%u frame; the clip stops", width,
                     height);
            pause();
            return;
        }
        const qsizetype bytes = qsizetype(width) * height * 4;
        if (m_pending.size() < headerSize + bytes)
            return;
        m_restarts = int(qFromLittleEndian<quint32>(header + 8));
        m_frame = QImage(int(width), int(height), QImage::Format_ARGB32_Premultiplied);
        for (quint32 y = 0; y < height; ++y)
            std::memcpy(m_frame.scanLine(int(y)),
                        m_pending.constData() + headerSize + y * width * 4, size_t(width) * 4);
        m_pending.remove(0, headerSize + bytes);
        ++m_framesShown;
        update();
        Q_EMIT frameShown();
    }
}

void LoopingPlayer::paint(QPainter* painter)
{
    if (m_frame.isNull() || width() <= 0 || height() <= 0)
        return;
    // Aspect fill: the frame covers the item and its overflow is cropped evenly.
    const QSizeF frameSize = m_frame.size();
    const qreal scale = std::max(width() / frameSize.width(), height() / frameSize.height());
    const QSizeF shown(width() / scale, height() / scale);
    const QRectF source((frameSize.width() - shown.width()) / 2,
                        (frameSize.height() - shown.height()) / 2, shown.width(), shown.height());
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(QRectF(0, 0, width(), height()), m_frame, source);
}

void LoopingPlayer::itemChange(ItemChange change, const ItemChangeData& value)
{
    if (change == ItemSceneChange) {
        // The window closes: the clip stops, so that a closed window decodes nothing. By name: the
        // signal's event type is private to Qt Quick.
        if (m_window)
            disconnect(m_window, SIGNAL(closing(QQuickCloseEvent*)), this, SLOT(pause()));
        m_window = value.window;
        if (m_window)
            connect(m_window, SIGNAL(closing(QQuickCloseEvent*)), this, SLOT(pause()));
    }
    QQuickPaintedItem::itemChange(change, value);
}

} // namespace corvane
