// FormProcess.h: the process that shows one stored file, with its limits.
//
//   memory     `memory` bytes of its own, which it limits itself before it reads anything; a build
//              with sanitizers cannot, and what it has in use is looked at from here
//   time       an answer to a message within `answerMs`; 30 s of processor time between two answers
//   everything it ends with the client, has no display, and leaves no core dump
//
// Whatever it does, the client only gets messages that are checked, or `ended`.
#ifndef ORVO_APPS_CLIENT_FORMPROCESS_H
#define ORVO_APPS_CLIENT_FORMPROCESS_H

#include "apps/formview/Channel.h"
#include "frame/QtCompat.h"

#include <QElapsedTimer>
#include <QTimer>

#include <memory>

namespace orvo::app {

struct ProcessLimits {
    qint64 memory = qint64{768} << 20;
    int answerMs = 10000;
};

class FormProcess : public qt::SetUpProcess {
    Q_OBJECT
public:
    explicit FormProcess(const ProcessLimits& limits, QObject* parent = nullptr);
    /// Ends the process without waiting for what it does.
    ~FormProcess() override;

    /// Starts `program` and has it show the document. `ratio` of device pixels, `dpi` of fonts.
    /// Called once; what goes wrong comes as `ended`.
    void show(const QString& program, const formview::Document& document, qreal ratio, int dpi);
    /// Null before `show` and after `ended`. Messages to a process that does not take them are
    /// lost.
    formview::Channel* channel() const { return m_channel.get(); }

signals:
    /// The process is no more, with the reason in Russian. Comes once.
    void ended(const QString& why);

protected:
    void setUpChild() override;

private:
    void received(formview::Message message, const QByteArray& body);
    void look();
    void end(const QString& why);
    QString whyFinished() const;

    const ProcessLimits m_limits;
    int m_childSocket = -1; ///< open only while the process is started
    std::unique_ptr<formview::Channel> m_channel;
    QTimer m_look;
    QElapsedTimer m_answered;
    quint32 m_asked = 0;
    quint32 m_got = 0;
    bool m_hasEnded = false;
};

} // namespace orvo::app

#endif
