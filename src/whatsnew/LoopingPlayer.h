#pragma once

// A clip played muted, looping for ever, without controls, its frames filling and cropping the
// item. The decoding runs in a helper process (corvane-clip, beside the program) that sends the
// frames through a pipe: Corvane itself never loads Qt Multimedia or FFmpeg, which would stay
// resident for good once loaded. The clip stops when its window closes and when the item goes.

#include <QImage>
#include <QPointer>
#include <QProcess>
#include <QQuickPaintedItem>
#include <QUrl>

namespace corvane {

class LoopingPlayer : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged)
    // For tests and diagnostics: what the player is doing.
    Q_PROPERTY(bool playing READ playing NOTIFY playingChanged)
    Q_PROPERTY(bool muted READ muted CONSTANT)
    Q_PROPERTY(int framesShown READ framesShown NOTIFY frameShown)
    Q_PROPERTY(int restarts READ restarts NOTIFY frameShown) // times the clip started over

public:
    explicit LoopingPlayer(QQuickItem* parent = nullptr);
    ~LoopingPlayer() override;

    QUrl source() const { return m_source; }
    void setSource(const QUrl& source);

    bool playing() const { return m_decoder.state() != QProcess::NotRunning; }
    bool muted() const { return true; }
    int framesShown() const { return m_framesShown; }
    int restarts() const { return m_restarts; }

    void paint(QPainter* painter) override;

    // The helper program: beside this one (the build folder), or in ../libexec/corvane.
    static QString decoderProgram();

public Q_SLOTS:
    void pause();

Q_SIGNALS:
    void sourceChanged();
    void playingChanged();
    void frameShown();

protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    // Starts the helper once there is a clip and a size to decode it for.
    void startWhenSized();
    void readFrames();

    QUrl m_source;
    QProcess m_decoder;
    QByteArray m_pending; // bytes of a frame not complete yet
    QImage m_frame;
    int m_framesShown = 0;
    int m_restarts = 0;
    bool m_stopped = false; // paused: resizing does not start it again
    QPointer<QQuickWindow> m_window;
};

} // namespace corvane
