// FormView.h: a stored file in a tab, shown by another process.
#ifndef ORVO_APPS_CLIENT_FORMVIEW_H
#define ORVO_APPS_CLIENT_FORMVIEW_H

#include "apps/client/FormProcess.h"

#include <QImage>
#include <QWidget>

class QLabel;
class QPushButton;

namespace orvo::app {

/// What the process paints, and the way of mouse and keys to it.
class FormCanvas : public QWidget {
    Q_OBJECT
public:
    explicit FormCanvas(QWidget* parent);
    /// Not owned; null: nobody paints any more.
    void setChannel(formview::Channel* channel);
    /// False if the message is none that a process may send.
    bool setFrame(const QByteArray& body);
    const QImage& image() const { return m_image; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override { sendMouse(event); }
    void mouseReleaseEvent(QMouseEvent* event) override { sendMouse(event); }
    void mouseMoveEvent(QMouseEvent* event) override { sendMouse(event); }
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void sendMouse(QMouseEvent* event);
    void sendKey(QKeyEvent* event);

    formview::Channel* m_channel = nullptr;
    QImage m_image;
};

/// A notice above, if there is one, and below it the file or, when the process has ended, why, with
/// a button to try again. The process is started when the view is shown for the first time.
class FormView : public QWidget {
    Q_OBJECT
public:
    /// `document` without the look of the client. Its directory outlives the view.
    FormView(QString program, formview::Document document, const ProcessLimits& limits,
             QWidget* parent = nullptr);
    ~FormView() override;

    enum class State { Waiting, Shown, Failed };
    State state() const { return m_state; }
    const FormCanvas* canvas() const { return m_canvas; }
    /// Of the process; 0 if there is none.
    qint64 processId() const { return m_process ? m_process->processId() : 0; }
    QSize sizeHint() const override { return m_hint; }

signals:
    /// The document is on the screen, of a size that suits it.
    void shown();
    /// The file is damaged, or cannot be shown; one line in Russian.
    void problem(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void start();
    void received(formview::Message message, const QByteArray& body);
    void fail(const QString& why);

    const QString m_program;
    formview::Document m_document;
    const ProcessLimits m_limits;
    State m_state = State::Waiting;
    QSize m_hint;
    QLabel* m_notice; // these: children
    QLabel* m_failure;
    QPushButton* m_again;
    FormCanvas* m_canvas;
    std::unique_ptr<FormProcess> m_process;
};

} // namespace orvo::app

#endif
