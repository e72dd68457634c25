// Stage.h: shows one document in a window that nobody sees, and sends its pixels to the client.
//
// The process has no display: the offscreen platform of Qt paints into memory, so a form can
// neither cover the screen nor take its mouse. Pop-ups of the form (lists of combo boxes, menus,
// tool tips) are windows here; they are kept within the view and painted over it.
#ifndef ORVO_APPS_FORMVIEW_STAGE_H
#define ORVO_APPS_FORMVIEW_STAGE_H

#include "apps/formview/Channel.h"
#include "apps/language/Language.h"

#include <QElapsedTimer>
#include <QImage>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

namespace orvo::formview {

class Stage : public QObject {
    Q_OBJECT
public:
    explicit Stage(Channel& channel);
    ~Stage() override;

protected:
    /// Watches the application: what is painted is to be sent, what pops up is to be placed.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void take(Message message, const QByteArray& body);
    void show(const Document& document);
    void resize(const QSize& size);
    void mouse(const QByteArray& body);
    void wheel(const QByteArray& body);
    void key(const QByteArray& body);
    void placePopup(QWidget* popup) const;
    void sendFrame();
    QImage compose() const;

    Channel& m_channel;
    std::optional<language::Speaker> m_speaker; ///< none before show
    std::unique_ptr<QWidget> m_window;          ///< null before show
    QElapsedTimer m_clock;                      ///< tells double clicks
    QTimer m_frame;                             ///< several paints are one frame
    QImage m_sent;                              ///< what the client shows
    int m_cursor = -1;
};

} // namespace orvo::formview

#endif
