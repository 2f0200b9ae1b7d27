#include "LoopingPlayer.h"

#include <QAudioOutput>
#include <QMediaPlayer>
#include <QPainter>
#include <QQuickWindow>
#include <QVideoFrame>
#include <QVideoSink>

namespace corvane {

LoopingPlayer::LoopingPlayer(QQuickItem* parent)
    : QQuickPaintedItem(parent), m_player(std::make_unique<QMediaPlayer>()),
      m_audio(std::make_unique<QAudioOutput>()), m_sink(std::make_unique<QVideoSink>())
{
    m_audio->setMuted(true);
    m_player->setAudioOutput(m_audio.get());
    m_player->setVideoSink(m_sink.get());
    m_player->setLoops(QMediaPlayer::Infinite);
    connect(m_sink.get(), &QVideoSink::videoFrameChanged, this, &LoopingPlayer::showFrame);
    // Over and over: Qt 6.4's FFmpeg backend stops at the end whatever the loop count says, so the
    // end starts the clip again.
    connect(m_player.get(), &QMediaPlayer::mediaStatusChanged, this,
            [this](QMediaPlayer::MediaStatus status) {
                if (status != QMediaPlayer::EndOfMedia || !m_looping)
                    return;
                m_player->setPosition(0);
                m_player->play();
            });
    connect(m_player.get(), &QMediaPlayer::playbackStateChanged, this,
            &LoopingPlayer::playingChanged);
}

LoopingPlayer::~LoopingPlayer()
{
    // Dismantled: the clip stops here.
    pause();
}

void LoopingPlayer::setSource(const QUrl& source)
{
    if (source == m_source)
        return;
    m_source = source;
    m_player->setSource(source);
    m_looping = !source.isEmpty();
    if (m_looping)
        m_player->play();
    Q_EMIT sourceChanged();
}

bool LoopingPlayer::playing() const
{
    return m_player->playbackState() == QMediaPlayer::PlayingState;
}

bool LoopingPlayer::muted() const
{
    return m_audio->isMuted();
}

int LoopingPlayer::loops() const
{
    return m_player->loops();
}

void LoopingPlayer::pause()
{
    m_looping = false;
    m_player->pause();
}

void LoopingPlayer::showFrame(const QVideoFrame& frame)
{
    const QImage image = frame.toImage();
    if (image.isNull())
        return;
    m_frame = image;
    ++m_framesShown;
    update();
    Q_EMIT frameShown();
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
        // The window closes: the clip pauses, so that a closed window decodes nothing. By name: the
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
