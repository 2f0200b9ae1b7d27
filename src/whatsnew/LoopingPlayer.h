#pragma once

// A Qt Multimedia player, muted, looping for ever, without controls, whose frames fill and crop the
// item. Frames are painted by the item itself, because Qt 6.4's VideoOutput draws nothing on the
// software scene graph Corvane uses. The clip pauses when its window closes and when the item goes.

#include <QImage>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QUrl>
#include <memory>

class QAudioOutput;
class QMediaPlayer;
class QVideoFrame;
class QVideoSink;

namespace corvane {

class LoopingPlayer : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged)
    // For tests and diagnostics: what the player is doing.
    Q_PROPERTY(bool playing READ playing NOTIFY playingChanged)
    Q_PROPERTY(bool muted READ muted CONSTANT)
    Q_PROPERTY(int loops READ loops CONSTANT)
    Q_PROPERTY(int framesShown READ framesShown NOTIFY frameShown)

public:
    explicit LoopingPlayer(QQuickItem* parent = nullptr);
    ~LoopingPlayer() override;

    QUrl source() const { return m_source; }
    void setSource(const QUrl& source);

    bool playing() const;
    bool muted() const;
    int loops() const;
    int framesShown() const { return m_framesShown; }
    QMediaPlayer* player() const { return m_player.get(); }

    void paint(QPainter* painter) override;

public Q_SLOTS:
    void pause();

Q_SIGNALS:
    void sourceChanged();
    void playingChanged();
    void frameShown();

protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    void showFrame(const QVideoFrame& frame);

    QUrl m_source;
    std::unique_ptr<QMediaPlayer> m_player;
    std::unique_ptr<QAudioOutput> m_audio;
    std::unique_ptr<QVideoSink> m_sink;
    QImage m_frame;
    int m_framesShown = 0;
    bool m_looping = false; // starts again at the end until paused
    QPointer<QQuickWindow> m_window;
};

} // namespace corvane
